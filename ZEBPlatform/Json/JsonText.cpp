#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Json/JsonTextPrivate.h>

#include <algorithm>

namespace zeb::detail {

namespace {

struct Detected {
  JsonEncoding encoding;
  std::size_t markLength;
};

Detected detect(std::string_view bytes) noexcept {
  using enum JsonEncoding;
  using namespace std::string_view_literals;
  // UTF-32's little-endian mark begins with UTF-16's, so that the longer one is tested first.
  if (bytes.starts_with("\xFF\xFE\0\0"sv)) return {utf32LittleEndian, 4};
  if (bytes.starts_with("\0\0\xFE\xFF"sv)) return {utf32BigEndian, 4};
  if (bytes.starts_with("\xFF\xFE"sv)) return {utf16LittleEndian, 2};
  if (bytes.starts_with("\xFE\xFF"sv)) return {utf16BigEndian, 2};
  if (bytes.starts_with("\xEF\xBB\xBF"sv)) return {utf8, 3};
  const auto zero = [&](std::size_t index) { return index < bytes.size() && bytes[index] == 0; };
  if (bytes.size() >= 4 && zero(0) && zero(1) && zero(2)) return {utf32BigEndian, 0};
  if (bytes.size() >= 4 && zero(1) && zero(2) && zero(3)) return {utf32LittleEndian, 0};
  if (bytes.size() >= 2 && zero(0) && !zero(1)) return {utf16BigEndian, 0};
  if (bytes.size() >= 2 && !zero(0) && zero(1)) return {utf16LittleEndian, 0};
  return {utf8, 0};
}

std::size_t unitSize(JsonEncoding encoding) noexcept {
  switch (encoding) {
    case JsonEncoding::utf8:
      return 1;
    case JsonEncoding::utf16LittleEndian:
    case JsonEncoding::utf16BigEndian:
      return 2;
    default:
      return 4;
  }
}

bool isBigEndian(JsonEncoding encoding) noexcept {
  return encoding == JsonEncoding::utf16BigEndian || encoding == JsonEncoding::utf32BigEndian;
}

}  // namespace

JsonText::JsonText(std::string_view bytes) {
  const Detected detected = detect(bytes);
  encoding_ = detected.encoding;
  markLength_ = detected.markLength;
  if (encoding_ == JsonEncoding::utf8) {
    utf8_ = bytes.substr(markLength_);
  } else {
    transcode(bytes);
    utf8_ = own_;
  }
}

void JsonText::transcode(std::string_view bytes) {
  const std::size_t size = unitSize(encoding_);
  const bool bigEndian = isBigEndian(encoding_);
  const auto unitAt = [&](std::size_t offset) {
    char32_t unit = 0;
    for (std::size_t index = 0; index < size; ++index) {
      const std::size_t place = bigEndian ? index : size - 1 - index;
      unit = unit << 8 | static_cast<unsigned char>(bytes[offset + place]);
    }
    return unit;
  };
  own_.reserve(bytes.size() / 2);
  for (std::size_t offset = markLength_; offset < bytes.size();) {
    const std::size_t start = offset;
    bool wellFormed = offset + size <= bytes.size();
    char32_t scalar = wellFormed ? unitAt(offset) : 0;
    offset += size;
    if (size == 2 && wellFormed && isHighSurrogate(static_cast<char16_t>(scalar))) {
      const char32_t low = offset + size <= bytes.size() ? unitAt(offset) : 0;
      wellFormed = isLowSurrogate(static_cast<char16_t>(low));
      scalar = scalarOfPair(static_cast<char16_t>(scalar), static_cast<char16_t>(low));
      offset += size;
    } else if (scalar > 0x10FFFF || (scalar >= 0xD800 && scalar < 0xE000)) {
      wellFormed = false;
    }
    if (!wellFormed) {
      malformedAt_ = start;
      return;
    }
    appendUTF8(own_, scalar);
  }
}

JsonText::Position JsonText::positionOf(std::size_t utf8Offset) const noexcept {
  Position position{markLength_, 1, 1};
  std::string_view before = utf8_.substr(0, std::min(utf8Offset, utf8_.size()));
  while (!before.empty()) {
    const DecodedScalar decoded = decodeUTF8(before);
    before.remove_prefix(decoded.length);
    const std::size_t unit = unitSize(encoding_);
    position.byteOffset += unit == 1   ? decoded.length
                           : unit == 2 ? (decoded.scalar < 0x10000 ? 2u : 4u)
                                       : 4u;
    if (decoded.scalar == U'\n') {
      ++position.line;
      position.column = 1;
    } else {
      ++position.column;
    }
  }
  return position;
}

}  // namespace zeb::detail
