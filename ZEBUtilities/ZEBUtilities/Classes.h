#pragma once

// The module Classes: registration of the product's classes by name.

#include <ZEBUtilities/Classes/ZEBRegisterClasses.h>
