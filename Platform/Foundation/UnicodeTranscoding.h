#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace zeb::detail {

/// What a decoder meets at some place of a UTF-8 text.
struct DecodedScalar {
  char32_t scalar;     ///< U+FFFD when malformed
  std::size_t length;  ///< bytes taken; of a malformed sequence its longest well-begun part
  bool wellFormed;
};

/// Decodes the scalar at the start of `utf8`, which must not be empty. `permitSurrogates` takes the
/// three-byte form of an unpaired surrogate as well-formed.
DecodedScalar decodeUTF8(std::string_view utf8, bool permitSurrogates = false) noexcept;

/// Appends UTF-16 units. Malformed sequences become U+FFFD; surrogates' three-byte forms become the
/// surrogates again.
void appendUTF16(std::u16string& units, std::string_view utf8);

/// Appends the UTF-8 form of a scalar or, in three bytes, of an unpaired surrogate.
void appendUTF8(std::string& utf8, char32_t scalar);

/// Appends UTF-8; unpaired surrogates in their three-byte form.
void appendUTF8(std::string& utf8, std::u16string_view units);

/// Where UTF-8 stops being well-formed: the offset of the first bad sequence, or npos.
std::size_t findMalformedUTF8(std::string_view utf8) noexcept;

bool isASCII(std::string_view bytes) noexcept;
bool isASCII(std::u16string_view units) noexcept;

constexpr bool isSurrogate(char16_t unit) noexcept { return (unit & 0xF800) == 0xD800; }
constexpr bool isHighSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }
constexpr char32_t scalarOfPair(char16_t high, char16_t low) noexcept {
  return 0x10000u + ((static_cast<char32_t>(high) & 0x3FFu) << 10) +
         (static_cast<char32_t>(low) & 0x3FFu);
}

/// The scalar at `index`, or the unpaired surrogate there; moves `index` past it.
constexpr char32_t nextScalar(std::u16string_view units, std::size_t& index) noexcept {
  const char16_t unit = units[index++];
  if (isHighSurrogate(unit) && index < units.size() && isLowSurrogate(units[index])) {
    return scalarOfPair(unit, units[index++]);
  }
  return unit;
}

}  // namespace zeb::detail
