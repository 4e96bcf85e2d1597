#pragma once

#include <ZEBPlatform/Foundation/ASCIICharacterSet.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <string_view>

namespace zeb::detail {

/// The encoded text, in which U+FFFD stands for unpaired surrogates. Nil on nil.
NSString percentEncoded(const NSString& string, const ASCIICharacterSet& allowed);

/// The decoded text, or the text itself if it cannot be decoded. Nil on nil.
NSString percentDecodedOrSame(const NSString& string);

/// Whether the text consists of characters of the set and well-formed escapes.
bool isPercentEncoded(const NSString& string, const ASCIICharacterSet& allowed) noexcept;

}  // namespace zeb::detail
