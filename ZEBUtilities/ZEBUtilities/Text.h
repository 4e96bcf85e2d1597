#pragma once

// The module Text: what people write, in every script.

#include <ZEBUtilities/Text/NSString+HTTPSerialization.h>
#include <ZEBUtilities/Text/NSString+ZEBAdditions.h>
#include <ZEBUtilities/Text/NSString+ZEBEmoji.h>
#include <ZEBUtilities/Text/NSString+ZEBHTMLEntity.h>
#include <ZEBUtilities/Text/NSString+ZEBInternational.h>
#include <ZEBUtilities/Text/NSString+ZEBWordRange.h>
#include <ZEBUtilities/Text/ZEBCountryCodes.h>
#include <ZEBUtilities/Text/ZEBInternational.h>
