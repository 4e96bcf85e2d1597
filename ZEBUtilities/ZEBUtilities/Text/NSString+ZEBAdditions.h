#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

/// Cleaning and testing of what people type, of display names and of identifiers. A nil text counts
/// as empty. Indexes and lengths count UTF-16 code units unless a function says code points. Any
/// thread may call these functions, as long as a mutable text does not change meanwhile.
namespace zeb {

/// Whether all characters are decimal digits, of any script, and there is at least one.
bool zeb_containsOnlyNumbers(const NSString& string);
/// The same with the digits 0 to 9, a to f and A to F.
bool zeb_containsOnlyHexNumbers(const NSString& string);
/// The number that the hexadecimal digits at the beginning of the text mean, modulo 2^64; 0 if it
/// does not begin with one. There is no prefix: "0x1F" gives 0, and "1Fz9" gives 31.
std::uint64_t zeb_hexIntegerValue(const NSString& string);

}  // namespace zeb
