#pragma once

// The module Ranges: active ranges of texts.

#include <ZEBUtilities/Ranges/ZEBActiveTextRange.h>
#include <ZEBUtilities/Ranges/ZEBFlavoredRange.h>
#include <ZEBUtilities/Ranges/ZEBHyperlinkFlavoredRange.h>
#include <ZEBUtilities/Ranges/ZEBPlistSerialization.h>
