#pragma once

// The module Text: active ranges of texts.

#include <ZEBUtilities/Text/ZEBActiveTextRange.h>
#include <ZEBUtilities/Text/ZEBFlavoredRange.h>
#include <ZEBUtilities/Text/ZEBHyperlinkFlavoredRange.h>
#include <ZEBUtilities/Text/ZEBPlistSerialization.h>
