#include <ZEBPlatform/Foundation/detail/DataBuilder.h>
#include <ZEBPlatform/Foundation/detail/StringBuilding.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBUtilities/Encodings/HexDigitsPrivate.h>
#include <ZEBUtilities/Encodings/NSData+ZEBAdditions.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace zeb {

namespace {

/// The bytes of as many digits; nil if a character is no digit.
NSData decodedDigits(std::string_view digits) {
  const std::size_t count = digits.size() / 2;
  detail::DataBuilder result(count);
  if (!detail::decodeHex(digits.data(),
                         std::as_writable_bytes(std::span(result.cursor(), count)))) {
    return nullptr;
  }
  result.setCursor(result.cursor() + count);
  return result.finish();
}

/// How many bytes at the end begin a UTF-8 sequence that continues after them.
std::size_t unfinishedBytes(std::string_view utf8) noexcept {
  constexpr std::size_t maxUnfinished = 3;
  for (std::size_t count = 1; count <= std::min(utf8.size(), maxUnfinished); ++count) {
    const auto byte = static_cast<unsigned char>(utf8[utf8.size() - count]);
    if ((byte & 0xC0) == 0x80) continue;
    const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
    return length > count ? count : 0;
  }
  return 0;
}

/// Collects text from ranges of UTF-8 that may end inside a sequence.
class UTF8Reader {
 public:
  /// False if the bytes are malformed.
  bool take(std::string_view range) {
    while (!split_.empty() && !range.empty()) {
      split_ += range.front();
      range.remove_prefix(1);
      if (unfinishedBytes(split_) == 0 && !append(std::exchange(split_, {}))) return false;
    }
    const std::size_t unfinished = unfinishedBytes(range);
    split_ += range.substr(range.size() - unfinished);
    return append(range.substr(0, range.size() - unfinished));
  }
  /// Nil if the bytes end inside a sequence.
  NSString finish() const { return split_.empty() ? NSString(units_) : NSString(); }

 private:
  bool append(std::string_view utf8) {
    const std::size_t start = units_.size();
    units_.resize(start + utf8.size());
    const detail::TextProgress progress =
        detail::unicodeConverter().decodeWellFormed(utf8, units_.data() + start);
    units_.resize(start + progress.written);
    return progress.read == utf8.size();
  }

  std::u16string units_;
  std::string split_;  ///< the beginning of a sequence that goes on in the next range
};

std::string_view textOf(std::span<const std::byte> bytes) noexcept {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

NSString zeb_hexStringValue(const NSData& data) {
  if (data.isNil()) return nullptr;
  if (data.isEmpty()) return NSString("");
  if (data.length() > std::numeric_limits<std::uint32_t>::max() / 2) return nullptr;
  detail::StringStorage* const text = detail::newStringStorage<char>(data.length() * 2);
  NSString result = detail::adoptString(text);
  data.enumerateByteRanges([&](std::span<const std::byte> range, NSRange place) {
    detail::encodeHex(range, detail::contentOf<char>(text) + 2 * place.location);
    return true;
  });
  return result;
}

NSData zeb_dataWithHexString(const NSString& text) {
  if (text.isNil()) return nullptr;
  if (text.empty()) return NSData::data();
  const std::size_t missingDigits = text.length() % 2;
  if (text.isASCII()) return missingDigits ? NSData() : decodedDigits(text.asciiView());
  const std::u16string_view units = text.utf16View();
  if (!detail::isASCII(units)) return nullptr;
  std::string digits(missingDigits, '0');
  digits.append(units.begin(), units.end());
  return decodedDigits(digits);
}

NSString zeb_UTF8String(const NSData& data) {
  NSString text;
  UTF8Reader reader;
  data.enumerateByteRanges([&](std::span<const std::byte> range, NSRange place) {
    if (range.size() == data.length()) {
      text = NSString::stringWithUTF8(textOf(range));
      return false;
    }
    if (!reader.take(textOf(range))) return false;
    if (place.location + place.length == data.length()) text = reader.finish();
    return true;
  });
  return text;
}

NSData zeb_prettyPrintedJSONData(const NSData& data) {
  const Value root = NSJSONSerialization::JSONObjectWithData(data, 0);
  if (root.isNil()) return nullptr;
  return NSJSONSerialization::dataWithJSONObject(root, NSJSONWritingPrettyPrinted);
}

NSString zeb_prettyPrintedJSONString(const NSData& data) {
  return zeb_UTF8String(zeb_prettyPrintedJSONData(data));
}

}  // namespace zeb
