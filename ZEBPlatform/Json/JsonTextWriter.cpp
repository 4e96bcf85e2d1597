#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Json/JsonTextWriter.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace zeb::detail {

namespace {

/// How each ASCII character is escaped: 0 for not at all, 'u' for by number, else the letter after
/// the backslash.
constexpr std::array<char, 128> escapes = [] {
  std::array<char, 128> table{};
  for (std::size_t control = 0; control < 0x20; ++control) table[control] = 'u';
  table['\b'] = 'b';
  table['\f'] = 'f';
  table['\n'] = 'n';
  table['\r'] = 'r';
  table['\t'] = 't';
  table['"'] = '"';
  table['\\'] = '\\';
  table['/'] = '/';
  return table;
}();

char* writeNumberedEscape(char* target, char16_t unit) noexcept {
  constexpr char digits[] = "0123456789abcdef";
  *target++ = '\\';
  *target++ = 'u';
  for (int shift = 12; shift >= 0; shift -= 4) *target++ = digits[unit >> shift & 0xF];
  return target;
}

}  // namespace

char* JsonTextWriter::writeCharacters(char* target, const char* at,
                                      const char* end) const noexcept {
  for (; at != end; ++at) target = writeCharacter(target, *at);
  return target;
}

char* JsonTextWriter::writeCharacter(char* target, char character) const noexcept {
  const char escape = escapes[static_cast<unsigned char>(character)];
  if (!escape || (escape == '/' && !escapesSlashes_)) {
    *target++ = character;
    return target;
  }
  if (escape == 'u') return writeNumberedEscape(target, static_cast<char16_t>(character));
  *target++ = '\\';
  *target++ = escape;
  return target;
}

void JsonTextWriter::writeWide(std::u16string_view units) {
  for (std::size_t index = 0; index < units.size();) {
    const std::size_t pieceEnd = std::min(units.size(), index + json_text::pieceLength);
    output_.require((pieceEnd - index + 1) * json_text::maxEscapeLength);
    char* target = output_.cursor();
    while (index < pieceEnd) target = writeScalarValue(target, nextScalar(units, index));
    output_.setCursor(target);
  }
}

char* JsonTextWriter::writeScalarValue(char* target, char32_t scalar) const noexcept {
  const auto byte = [&](char32_t value) { *target++ = static_cast<char>(value); };
  if (scalar < 0x80) return writeCharacter(target, static_cast<char>(scalar));
  if (scalar < 0x800) {
    byte(0xC0 | scalar >> 6);
  } else if (scalar < 0x10000) {
    if (isSurrogate(static_cast<char16_t>(scalar))) {
      return writeNumberedEscape(target, static_cast<char16_t>(scalar));
    }
    byte(0xE0 | scalar >> 12);
    byte(0x80 | (scalar >> 6 & 0x3F));
  } else {
    byte(0xF0 | scalar >> 18);
    byte(0x80 | (scalar >> 12 & 0x3F));
    byte(0x80 | (scalar >> 6 & 0x3F));
  }
  byte(0x80 | (scalar & 0x3F));
  return target;
}

}  // namespace zeb::detail
