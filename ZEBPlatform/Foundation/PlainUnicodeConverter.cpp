#include <ZEBPlatform/Foundation/UnicodeSequencesPrivate.h>

namespace zeb::detail {

namespace {

std::size_t decode(std::string_view utf8, char16_t* units) noexcept {
  return decodeSequences<Malformed::replaced>(utf8, utf8.size(), units).written;
}

TextProgress decodeWellFormed(std::string_view utf8, char16_t* units) noexcept {
  return decodeSequences<Malformed::stops>(utf8, utf8.size(), units);
}

TextProgress decodeUntilBackslash(std::string_view utf8, std::size_t, char16_t* units) noexcept {
  return decodeSequences<Malformed::replaced>(utf8.substr(0, utf8.find('\\')), utf8.size(), units);
}

std::size_t encodedLength(std::u16string_view units) noexcept {
  std::size_t length = 0;
  for (std::size_t index = 0; index < units.size();) {
    length += encodeUTF8(nextScalar(units, index)).length;
  }
  return length;
}

std::size_t encode(std::u16string_view units, char* utf8, std::size_t) noexcept {
  return encodeSequences(units, units.size(), utf8, [](char32_t) { return false; }).written;
}

TextProgress encodeUntilEscape(std::u16string_view units, char* utf8,
                               SlashEscapes slashes) noexcept {
  return encodeSequences(units, units.size(), utf8,
                         [slashes](char32_t scalar) { return isEscapedInJSON(scalar, slashes); });
}

}  // namespace

const UnicodeConverter plainUnicodeConverter = {
    decode, decodeWellFormed, decodeUntilBackslash, encodedLength, encode, encodeUntilEscape};

}  // namespace zeb::detail
