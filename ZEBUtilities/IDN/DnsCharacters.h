#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb {

/// Letters, digits and hyphens of ASCII: what host names consist of.
constexpr bool valid_dns_character32(XcodeCodePoint codePoint) noexcept {
  const XcodeCodePoint lowered = codePoint | 0x20;
  return (lowered >= 'a' && lowered <= 'z') || (codePoint >= '0' && codePoint <= '9') ||
         codePoint == '-';
}
constexpr bool valid_dns_character16(XcodeUnit unit) noexcept {
  return valid_dns_character32(unit);
}
constexpr bool valid_dns_character8(XcodeOctet octet) noexcept {
  return valid_dns_character32(octet);
}

/// True of the ASCII characters that are *not* letters, digits or hyphens, which the STD3 rules of
/// RFC 3490 refuse; false outside ASCII. The name, which says the opposite, is kept deliberately.
constexpr bool is_ldh_character32(XcodeCodePoint codePoint) noexcept {
  return codePoint < 0x80 && !valid_dns_character32(codePoint);
}

}  // namespace zeb
