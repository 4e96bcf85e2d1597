#pragma once

// The module Text: what people write, in every script.

#include <ZEBUtilities/Text/NSString+ZEBAdditions.h>
