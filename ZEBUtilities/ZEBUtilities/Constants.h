#pragma once

// The module Constants: constants of the whole product.

#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
