#pragma once

// The module Foundation: values of every kind, errors and exceptions.

#include <ZEBPlatform/Foundation/Arena.h>
#include <ZEBPlatform/Foundation/CollectionLimit.h>
#include <ZEBPlatform/Foundation/DataBuilder.h>
#include <ZEBPlatform/Foundation/DataStorage.h>
#include <ZEBPlatform/Foundation/DictionaryEntry.h>
#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/HashTable.h>
#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/NullableText.h>
#include <ZEBPlatform/Foundation/NumberOrder.h>
#include <ZEBPlatform/Foundation/NumberText.h>
#include <ZEBPlatform/Foundation/StringBuilding.h>
#include <ZEBPlatform/Foundation/StringHash.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/TreeRebuild.h>
#include <ZEBPlatform/Foundation/TreeWalk.h>
#include <ZEBPlatform/Foundation/URLStorage.h>
#include <ZEBPlatform/Foundation/UnicodeTranscoding.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>
