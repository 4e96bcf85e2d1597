#pragma once

// The module Foundation: values of every kind, errors and exceptions.

#include <ZEBPlatform/Foundation/ASCIICharacterSet.h>
#include <ZEBPlatform/Foundation/DictionaryEntry.h>
#include <ZEBPlatform/Foundation/DictionaryKey.h>
#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSIndexSet.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSOrderedSet.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/NullableText.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Foundation/ValueKind.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>
