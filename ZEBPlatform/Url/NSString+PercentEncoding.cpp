#include <ZEBPlatform/Foundation/detail/StringBuilding.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Url/NSString+PercentEncoding.h>
#include <ZEBPlatform/Url/PercentEncodingPrivate.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace zeb {

namespace {

constexpr std::string_view hexDigits = "0123456789ABCDEF";

/// The value of each character as a hexadecimal digit, or -1.
constexpr std::array<std::int8_t, 256> digitValues = [] {
  std::array<std::int8_t, 256> values{};
  values.fill(-1);
  for (std::int8_t value = 0; value < 16; ++value) {
    const auto digit = static_cast<unsigned char>(hexDigits[static_cast<std::size_t>(value)]);
    values[digit] = value;
    if (value >= 10) values[digit | 0x20u] = value;
  }
  return values;
}();

int valueOf(char digit) noexcept { return digitValues[static_cast<unsigned char>(digit)]; }

/// The byte of the escape at the start of the text; negative if there is none.
int byteOfEscape(std::string_view text) noexcept {
  if (text.size() < 3 || text[0] != '%') return -1;
  // Negative if one of them is.
  return valueOf(text[1]) * 16 | valueOf(text[2]);
}

NSString encoded(std::string_view utf8, const ASCIICharacterSet& allowed) {
  const auto isAllowed = [&](char byte) {
    return allowed.contains(static_cast<unsigned char>(byte));
  };
  const auto kept = static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), isAllowed));
  const std::size_t length = kept + (utf8.size() - kept) * 3;
  detail::StringStorage* const storage = detail::newStringStorage<char>(length);
  char* to = detail::contentOf<char>(storage);
  for (const char byte : utf8) {
    if (isAllowed(byte)) {
      *to++ = byte;
      continue;
    }
    const auto bits = static_cast<unsigned char>(byte);
    *to++ = '%';
    *to++ = hexDigits[bits >> 4];
    *to++ = hexDigits[bits & 15];
  }
  return detail::adoptString(storage);
}

bool consistsOf(std::string_view text, const ASCIICharacterSet& allowed) noexcept {
  return std::all_of(text.begin(), text.end(), [&](char character) {
    return allowed.contains(static_cast<unsigned char>(character));
  });
}

/// Nil if an escape is malformed or the bytes are not UTF-8.
NSString decoded(std::string_view utf8) {
  std::string bytes(utf8.size(), ' ');
  char* to = bytes.data();
  while (!utf8.empty()) {
    if (utf8[0] != '%') {
      *to++ = utf8[0];
      utf8.remove_prefix(1);
      continue;
    }
    const int byte = byteOfEscape(utf8);
    if (byte < 0) return nullptr;
    *to++ = static_cast<char>(byte);
    utf8.remove_prefix(3);
  }
  return NSString::stringWithUTF8({bytes.data(), to});
}

}  // namespace

NSString stringByAddingPercentEncodingWithAllowedCharacters(const NSString& string,
                                                            const ASCIICharacterSet& allowed) {
  if (string.isNil() || !string.isWellFormed()) return nullptr;
  return detail::percentEncoded(string, allowed);
}

NSString stringByRemovingPercentEncoding(const NSString& string) {
  if (string.isNil() || !string.isWellFormed()) return nullptr;
  if (!string.isASCII()) {
    return string.utf16View().find(u'%') == std::u16string_view::npos ? string.copy()
                                                                      : decoded(string.utf8());
  }
  const std::string_view ascii = string.asciiView();
  return ascii.find('%') == std::string_view::npos ? string.copy() : decoded(ascii);
}

namespace detail {

NSString percentEncoded(const NSString& string, const ASCIICharacterSet& allowed) {
  if (string.isNil()) return nullptr;
  if (string.isASCII()) {
    const std::string_view ascii = string.asciiView();
    return consistsOf(ascii, allowed) ? string.copy() : encoded(ascii, allowed);
  }
  const std::u16string_view units = string.utf16View();
  std::string utf8;
  for (std::size_t index = 0; index < units.size();) {
    const char32_t scalar = nextScalar(units, index);
    const bool isUnpaired = scalar < 0x10000 && isSurrogate(static_cast<char16_t>(scalar));
    appendUTF8(utf8, isUnpaired ? U'\uFFFD' : scalar);
  }
  return encoded(utf8, allowed);
}

NSString percentDecodedOrSame(const NSString& string) {
  const NSString decodedString = stringByRemovingPercentEncoding(string);
  return decodedString.isNil() ? string : decodedString;
}

bool isPercentEncoded(const NSString& string, const ASCIICharacterSet& allowed) noexcept {
  if (!string.isASCII()) return false;
  std::string_view rest = string.asciiView();
  while (!rest.empty()) {
    const bool isEscape = byteOfEscape(rest) >= 0;
    if (!isEscape && !allowed.contains(static_cast<unsigned char>(rest[0]))) return false;
    rest.remove_prefix(isEscape ? 3 : 1);
  }
  return true;
}

}  // namespace detail

}  // namespace zeb
