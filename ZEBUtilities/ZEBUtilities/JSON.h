#pragma once

// The module JSON: JSON with guards.

#include <ZEBUtilities/JSON/NSData+ZEBJSONAdditions.h>
#include <ZEBUtilities/JSON/ZEBJSONSerialization.h>
