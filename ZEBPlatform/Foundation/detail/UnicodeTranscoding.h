#pragma once

#include <ZEBPlatform/Foundation/detail/StringHash.h>
#include <ZEBPlatform/Foundation/detail/UnicodeConverter.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace zeb::detail {

/// One decoded sequence of a UTF-8 text.
struct DecodedScalar {
  char32_t scalar;     ///< U+FFFD when malformed
  std::size_t length;  ///< bytes taken; of a malformed sequence the longest valid prefix
  bool wellFormed;
};

/// Decodes the scalar at the start of `utf8`, which must not be empty. `permitSurrogates` takes the
/// three-byte form of an unpaired surrogate as well-formed.
DecodedScalar decodeUTF8(std::string_view utf8, bool permitSurrogates = false) noexcept;

/// Appends UTF-16 units. Malformed sequences become U+FFFD; surrogates' three-byte forms become the
/// surrogates again.
void appendUTF16(std::u16string& units, std::string_view utf8);

/// The UTF-8 form of a scalar, or the three-byte form of an unpaired surrogate.
struct EncodedScalar {
  std::array<char, 4> bytes;
  std::size_t length;

  std::string_view view() const noexcept { return {bytes.data(), length}; }
};
constexpr EncodedScalar encodeUTF8(char32_t scalar) noexcept {
  const auto byte = [](char32_t value) { return static_cast<char>(value); };
  const auto continuation = [&](int shift) { return byte(0x80 | (scalar >> shift & 0x3F)); };
  if (scalar < 0x80) return {{byte(scalar)}, 1};
  if (scalar < 0x800) return {{byte(0xC0 | scalar >> 6), continuation(0)}, 2};
  if (scalar < 0x10000) {
    return {{byte(0xE0 | scalar >> 12), continuation(6), continuation(0)}, 3};
  }
  return {{byte(0xF0 | scalar >> 18), continuation(12), continuation(6), continuation(0)}, 4};
}

/// Appends the form that `encodeUTF8` gives.
void appendUTF8(std::string& utf8, char32_t scalar);

/// Appends UTF-8; unpaired surrogates in their three-byte form.
void appendUTF8(std::string& utf8, std::u16string_view units);

/// The offset of the first malformed sequence, or npos.
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

/// The first `count` units, and one more if they end inside a pair.
constexpr std::u16string_view wholePairs(std::u16string_view units, std::size_t count) noexcept {
  const bool splitsPair = count < units.size() && count > 0 && isHighSurrogate(units[count - 1]) &&
                          isLowSurrogate(units[count]);
  return units.substr(0, splitsPair ? count + 1 : count);
}

/// The length of the form that `appendUTF8` makes of the units.
inline std::size_t utf8Length(std::u16string_view units) noexcept {
  return unicodeConverter().encodedLength(units);
}

/// Calls `visit` with that form, without allocating memory for it, in little-endian words of eight
/// bytes, and answers the last, incomplete word.
template <class Visit>
std::uint64_t visitUTF8Words(std::u16string_view units, const Visit& visit) noexcept {
  constexpr std::size_t pieceLength = 64;
  constexpr std::size_t wordSize = 8;
  const UnicodeConverter& converter = unicodeConverter();
  char bytes[wordSize + 3 * (pieceLength + 1)];
  std::size_t filled = 0;
  while (!units.empty()) {
    const std::u16string_view piece = wholePairs(units, pieceLength);
    units.remove_prefix(piece.size());
    filled += converter.encode(piece, bytes + filled, sizeof bytes - filled);
    std::size_t visited = 0;
    for (; filled - visited >= wordSize; visited += wordSize) visit(loadWord(bytes + visited));
    filled -= visited;
    std::memmove(bytes, bytes + visited, filled);
  }
  return loadTail(bytes, filled);
}

}  // namespace zeb::detail
