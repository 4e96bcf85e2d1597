#pragma once

// The module Diagnostics: the images that stacks name.

#include <ZEBUtilities/Diagnostics/ZEBSymbolication.h>
