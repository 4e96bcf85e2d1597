#include <ZEBPlatform/Foundation/detail/Arena.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Json/JsonTextWriter.h>

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

static_assert(2 * sizeof(ByteBlock) <= Arena::slack, "documents are copied in such blocks");

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

char* JsonTextWriter::writeWidePiece(char* target, std::u16string_view piece) const noexcept {
  const SlashEscapes slashes = escapesSlashes_ ? SlashEscapes::yes : SlashEscapes::no;
  for (;;) {
    const TextProgress progress = converter_.encodeUntilEscape(piece, target, slashes);
    target += progress.written;
    piece.remove_prefix(progress.read);
    if (piece.empty()) return target;
    const char16_t unit = piece.front();
    piece.remove_prefix(1);
    target = unit < 0x80 ? writeCharacter(target, static_cast<char>(unit))
                         : writeNumberedEscape(target, unit);
  }
}

void JsonTextWriter::writeWide(std::u16string_view units) {
  while (!units.empty()) {
    const std::u16string_view piece = wholePairs(units, json_text::pieceLength);
    units.remove_prefix(piece.size());
    output_.require(piece.size() * json_text::maxEscapeLength + UnicodeConverter::slack);
    output_.setCursor(writeWidePiece(output_.cursor(), piece));
  }
}

}  // namespace zeb::detail
