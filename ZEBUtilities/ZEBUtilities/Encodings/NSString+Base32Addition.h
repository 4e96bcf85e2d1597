#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

// Base32 with two alphabets, so that these two do not undo each other: see `Base32Codec`.

/// The text's UTF-8 bytes as base32. Nil on nil, and if the text contains an unpaired surrogate,
/// which has no UTF-8 form.
[[nodiscard]] NSString base32String(const NSString& string);

/// The data that the text means, read as UTF-8; nil on nil and if it is not well-formed UTF-8.
[[nodiscard]] NSString stringWithBase32String(const NSString& string);

}  // namespace zeb
