#pragma once

// The module Text: text and dates in all languages.

#include <ZEBPlatform/Text/CFStringTokenizer.h>
#include <ZEBPlatform/Text/NSCalendar.h>
#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBPlatform/Text/NSDateComponents.h>
#include <ZEBPlatform/Text/NSDateFormatter.h>
#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBPlatform/Text/NSRegularExpression.h>
#include <ZEBPlatform/Text/NSString+CaseMapping.h>
#include <ZEBPlatform/Text/NSString+ComposedCharacters.h>
#include <ZEBPlatform/Text/NSString+Normalization.h>
#include <ZEBPlatform/Text/NSString+Searching.h>
#include <ZEBPlatform/Text/NSString+Trimming.h>
#include <ZEBPlatform/Text/NSTimeZone.h>
#include <ZEBPlatform/Text/UnicodeProperties.h>
