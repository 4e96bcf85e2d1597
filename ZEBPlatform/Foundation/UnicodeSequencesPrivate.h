#pragma once

#include <ZEBPlatform/Foundation/detail/UnicodeConverter.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <cstring>

// The steps of the plain converter, one sequence at a time. The block converters use them for what
// their blocks leave over.

namespace zeb::detail {

enum class Malformed { replaced, stops };

/// Converts the sequences that begin in the first `end` bytes.
template <Malformed malformed>
TextProgress decodeSequences(std::string_view utf8, std::size_t end, char16_t* units) noexcept {
  char16_t* target = units;
  std::size_t read = 0;
  while (read < utf8.size() && read < end) {
    const DecodedScalar decoded = decodeUTF8(utf8.substr(read), malformed == Malformed::replaced);
    if (malformed == Malformed::stops && !decoded.wellFormed) break;
    read += decoded.length;
    if (decoded.scalar < 0x10000) {
      *target++ = static_cast<char16_t>(decoded.scalar);
    } else {
      *target++ = static_cast<char16_t>(0xD7C0 + (decoded.scalar >> 10));
      *target++ = static_cast<char16_t>(0xDC00 + (decoded.scalar & 0x3FF));
    }
  }
  return {read, static_cast<std::size_t>(target - units)};
}

inline bool isEscapedInJSON(char32_t scalar, SlashEscapes slashes) noexcept {
  return scalar < 0x20 || scalar == '"' || scalar == '\\' ||
         (scalar == '/' && slashes == SlashEscapes::yes) ||
         (scalar < 0x10000 && isSurrogate(static_cast<char16_t>(scalar)));
}

/// Converts the scalars that begin in the first `end` units, up to the first one for which `stops`
/// is true.
template <class Stops>
TextProgress encodeSequences(std::u16string_view units, std::size_t end, char* utf8,
                             const Stops& stops) noexcept {
  char* target = utf8;
  std::size_t read = 0;
  while (read < units.size() && read < end) {
    std::size_t next = read;
    const char32_t scalar = nextScalar(units, next);
    if (stops(scalar)) break;
    const EncodedScalar encoded = encodeUTF8(scalar);
    for (const char byte : encoded.view()) *target++ = byte;
    read = next;
  }
  return {read, static_cast<std::size_t>(target - utf8)};
}

}  // namespace zeb::detail
