#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

// Base32 with two alphabets, so that these two do not undo each other: see `Base32Codec`.

/// The data as base32. Nil on nil.
[[nodiscard]] NSString base32String(const NSData& data);

/// The data that the text means. Nil on nil; ignores characters that mean nothing.
[[nodiscard]] NSData dataWithBase32String(const NSString& string);

}  // namespace zeb
