#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <cstdint>

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
  const std::size_t start = units.size();
  units.resize(start + utf8.size());
  units.resize(start + unicodeConverter().decode(utf8, units.data() + start));
}

void appendUTF8(std::string& utf8, char32_t scalar) { utf8 += encodeUTF8(scalar).view(); }

void appendUTF8(std::string& utf8, std::u16string_view units) {
  const std::size_t start = utf8.size();
  const std::size_t length = utf8Length(units);
  utf8.resize(start + length);
  unicodeConverter().encode(units, utf8.data() + start, length);
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

namespace {

/// Whether no bit of `mask` is set in the bytes, which are examined 32 at a time.
bool hasNoneOf(std::uint64_t mask, const char* bytes, std::size_t count) noexcept {
  for (; count >= 32; bytes += 32, count -= 32) {
    const std::uint64_t seen =
        loadWord(bytes) | loadWord(bytes + 8) | loadWord(bytes + 16) | loadWord(bytes + 24);
    if (seen & mask) return false;
  }
  std::uint64_t seen = 0;
  for (; count >= 8; bytes += 8, count -= 8) seen |= loadWord(bytes);
  return ((seen | loadTail(bytes, count)) & mask) == 0;
}

}  // namespace

bool isASCII(std::string_view bytes) noexcept {
  return hasNoneOf(0x8080808080808080u, bytes.data(), bytes.size());
}

bool isASCII(std::u16string_view units) noexcept {
  return hasNoneOf(0xFF80FF80FF80FF80u, reinterpret_cast<const char*>(units.data()),
                   units.size() * sizeof(char16_t));
}

}  // namespace zeb::detail
