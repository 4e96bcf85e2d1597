#pragma once

// Everything that the library offers. Larger programs include the headers that they need.

#include <ZEBUtilities/Coding/AnyEquatable.h>
#include <ZEBUtilities/Coding/DecodingBuilder.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/Result.h>
#include <ZEBUtilities/Coding/ZEBArchiver.h>
#include <ZEBUtilities/Coding/ZEBDecodedValue.h>
#include <ZEBUtilities/Coding/ZEBDecoder.h>
#include <ZEBUtilities/Coding/ZEBEitherEncodable.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/Coding/ZEBEncoder.h>
#include <ZEBUtilities/Coding/ZEBRawValueEnumCodable.h>
#include <ZEBUtilities/Coding/ZEBUnarchiver.h>
#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>
#include <ZEBUtilities/Dictionary+ZEBAdditions.h>
#include <ZEBUtilities/NSArray+ZEBAdditions.h>
#include <ZEBUtilities/NSBundle+ZEBAdditions.h>
#include <ZEBUtilities/NSData+ZEBAdditions.h>
#include <ZEBUtilities/NSData+ZEBJSONAdditions.h>
#include <ZEBUtilities/NSDate+ZEBAdditions.h>
#include <ZEBUtilities/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/NSError+ZEBAdditions.h>
#include <ZEBUtilities/NSMutableDictionary+ZEBAdditions.h>
#include <ZEBUtilities/ZEBCircularFIFOBuffer.h>
#include <ZEBUtilities/ZEBFrameworkLoading.h>
#include <ZEBUtilities/ZEBGeometryDictionaries.h>
#include <ZEBUtilities/ZEBJSONSerialization.h>
#include <ZEBUtilities/ZEBLaunchTime.h>
#include <ZEBUtilities/ZEBProcessEnvironment.h>
#include <ZEBUtilities/ZEBStopwatch.h>
#include <ZEBUtilities/ZEBUtilitiesConstants.h>
