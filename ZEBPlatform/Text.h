#pragma once

// The module Text: text and dates in all languages.

#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBPlatform/Text/NSLocale.h>
