#pragma once

// The module Encodings: additions to data.

#include <ZEBUtilities/Encodings/NSData+ZEBAdditions.h>
