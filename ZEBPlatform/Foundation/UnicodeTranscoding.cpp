#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <cstdint>
#include <cstring>

namespace zeb::detail {

DecodedScalar decodeUTF8(std::string_view utf8, bool permitSurrogates) noexcept {
  const auto at = [&](std::size_t index) -> unsigned {
    return index < utf8.size() ? static_cast<unsigned char>(utf8[index]) : 0u;
  };
  const unsigned lead = at(0);
  if (lead < 0x80) return {lead, 1, true};

  // The range of the first continuation byte excludes overlong forms, surrogates and scalars beyond
  // U+10FFFF (Unicode, table 3-7).
  std::size_t length = 0;
  unsigned low = 0x80;
  unsigned high = 0xBF;
  char32_t scalar = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
    scalar = lead & 0x1Fu;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    scalar = lead & 0x0Fu;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED && !permitSurrogates) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    scalar = lead & 0x07u;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return {0xFFFD, 1, false};
  }
  for (std::size_t index = 1; index < length; ++index) {
    const unsigned next = at(index);
    if (next < low || next > high) return {0xFFFD, index, false};
    scalar = scalar << 6 | (next & 0x3Fu);
    low = 0x80;
    high = 0xBF;
  }
  return {scalar, length, true};
}

void appendUTF16(std::u16string& units, std::string_view utf8) {
  units.reserve(units.size() + utf8.size());
  while (!utf8.empty()) {
    const auto byte = static_cast<unsigned char>(utf8.front());
    if (byte < 0x80) {
      units.push_back(byte);
      utf8.remove_prefix(1);
      continue;
    }
    const DecodedScalar decoded = decodeUTF8(utf8, true);
    utf8.remove_prefix(decoded.length);
    if (decoded.scalar < 0x10000) {
      units.push_back(static_cast<char16_t>(decoded.scalar));
    } else {
      units.push_back(static_cast<char16_t>(0xD7C0 + (decoded.scalar >> 10)));
      units.push_back(static_cast<char16_t>(0xDC00 + (decoded.scalar & 0x3FF)));
    }
  }
}

void appendUTF8(std::string& utf8, char32_t scalar) { utf8 += encodeUTF8(scalar).view(); }

void appendUTF8(std::string& utf8, std::u16string_view units) {
  utf8.reserve(utf8.size() + units.size());
  for (std::size_t index = 0; index < units.size();) appendUTF8(utf8, nextScalar(units, index));
}

std::size_t utf8Length(std::u16string_view units) noexcept {
  std::size_t length = 0;
  for (std::size_t index = 0; index < units.size();) {
    length += encodeUTF8(nextScalar(units, index)).length;
  }
  return length;
}

std::size_t findMalformedUTF8(std::string_view utf8) noexcept {
  std::size_t offset = 0;
  while (offset < utf8.size()) {
    if (static_cast<unsigned char>(utf8[offset]) < 0x80) {
      ++offset;
      continue;
    }
    const DecodedScalar decoded = decodeUTF8(utf8.substr(offset));
    if (!decoded.wellFormed) return offset;
    offset += decoded.length;
  }
  return std::string_view::npos;
}

bool isASCII(std::string_view bytes) noexcept {
  std::uint64_t seen = 0;
  std::size_t index = 0;
  for (; index + 8 <= bytes.size(); index += 8) {
    std::uint64_t word;
    std::memcpy(&word, bytes.data() + index, 8);
    seen |= word;
  }
  for (; index < bytes.size(); ++index) seen |= static_cast<unsigned char>(bytes[index]);
  return !(seen & 0x8080808080808080u);
}

bool isASCII(std::u16string_view units) noexcept {
  char16_t seen = 0;
  for (const char16_t unit : units) seen = static_cast<char16_t>(seen | unit);
  return seen < 0x80;
}

}  // namespace zeb::detail
