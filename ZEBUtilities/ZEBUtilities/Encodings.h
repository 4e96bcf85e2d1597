#pragma once

// The module Encodings: compression, text forms and digests of data.

#include <ZEBUtilities/Encodings/Base32Codec.h>
#include <ZEBUtilities/Encodings/NSData+Base32Addition.h>
#include <ZEBUtilities/Encodings/NSData+CommonDigest.h>
#include <ZEBUtilities/Encodings/NSData+ZEBAdditions.h>
#include <ZEBUtilities/Encodings/NSData+ZlibAdditions.h>
#include <ZEBUtilities/Encodings/NSString+Base32Addition.h>
