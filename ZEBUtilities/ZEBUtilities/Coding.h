#pragma once

// The module Coding: encodable objects, the registry of decoders, archiver and unarchiver.

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
#include <ZEBUtilities/Coding/ZEBEncoderConversion.h>
#include <ZEBUtilities/Coding/ZEBRawValueEnumCodable.h>
#include <ZEBUtilities/Coding/ZEBUnarchiver.h>
#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>
