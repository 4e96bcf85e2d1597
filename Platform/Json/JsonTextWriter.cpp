#include <Foundation/StringHash.h>
#include <Foundation/UnicodeTranscoding.h>
#include <Json/ByteBlock.h>
#include <Json/JsonNumberText.h>
#include <Json/JsonTextWriter.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace zeb::detail {

namespace {

/// How each ASCII character is escaped: 0 not at all, 'u' by number, else by this letter.
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

constexpr std::size_t pieceLength = 4096;  // units that room is made for at once
constexpr std::size_t longestEscape = 6;

constexpr std::uint64_t everyByte(std::uint64_t byte) noexcept {
  return byte * 0x0101010101010101u;
}

/// Letters where a word of fewer than eight characters has none.
constexpr std::uint64_t shortWordFill(std::size_t length) noexcept {
  return everyByte('a') << (8 * length);
}

ByteBlock needsEscape(ByteBlock block, bool slashes) noexcept {
  const auto found = (block < 0x20) | (block == '"') | (block == '\\');
  return reinterpret_cast<ByteBlock>(slashes ? found | (block == '/') : found);
}

char* writeNumberedEscape(char* target, char16_t unit) noexcept {
  constexpr char digits[] = "0123456789abcdef";
  *target++ = '\\';
  *target++ = 'u';
  for (int shift = 12; shift >= 0; shift -= 4) *target++ = digits[unit >> shift & 0xF];
  return target;
}

}  // namespace

void JsonTextWriter::writeString(const StringStorage& string) {
  put('"');
  writeContent(string);
  put('"');
}

void JsonTextWriter::writeContent(const StringStorage& string) {
  if (string.isWide()) {
    writeWide({string.units(), string.length});
  } else {
    writeASCII({string.ascii(), string.length});
  }
}

bool JsonTextWriter::needsEscapes(std::uint64_t word) const noexcept {
  const auto zeroByteIn = [](std::uint64_t bytes) {
    return (bytes - everyByte(1)) & ~bytes & everyByte(0x80);
  };
  std::uint64_t found = ((word - everyByte(0x20)) & ~word & everyByte(0x80)) |
                        zeroByteIn(word ^ everyByte('"')) | zeroByteIn(word ^ everyByte('\\'));
  if (escapesSlashes_) found |= zeroByteIn(word ^ everyByte('/'));
  return found != 0;
}

/// Whole blocks while nothing in them needs an escape, else character by character.
void JsonTextWriter::writeASCII(std::string_view text) {
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, pieceLength);
    text.remove_prefix(piece.size());
    output_.require(piece.size() * longestEscape + sizeof(ByteBlock));
    const char* at = piece.data();
    const char* const end = at + piece.size();
    char* target = output_.cursor();
    while (static_cast<std::size_t>(end - at) >= sizeof(ByteBlock)) {
      const ByteBlock block = loadBlock(at);
      std::memcpy(target, &block, sizeof block);
      if (anySet(needsEscape(block, escapesSlashes_))) {
        target = writeCharacters(target, at, at + sizeof block);
      } else {
        target += sizeof block;
      }
      at += sizeof block;
    }
    output_.setCursor(writeShort(target, at, end));
  }
}

/// Less than a block: by one or two words that may overlap.
char* JsonTextWriter::writeShort(char* target, const char* at, const char* end) const noexcept {
  const auto length = static_cast<std::size_t>(end - at);
  if (length < 8) {
    const std::uint64_t word = loadTail(at, length);
    if (needsEscapes(word | shortWordFill(length))) return writeCharacters(target, at, end);
    std::memcpy(target, &word, sizeof word);
    return target + length;
  }
  const std::uint64_t first = loadWord(at);
  const std::uint64_t last = loadWord(end - 8);
  if (needsEscapes(first) || needsEscapes(last)) return writeCharacters(target, at, end);
  std::memcpy(target, &first, sizeof first);
  std::memcpy(target + length - 8, &last, sizeof last);
  return target + length;
}

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
    const std::size_t pieceEnd = std::min(units.size(), index + pieceLength);
    output_.require((pieceEnd - index + 1) * longestEscape);
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

void JsonTextWriter::writeInteger(std::int64_t number) {
  output_.require(longestJsonNumber);
  output_.setCursor(writeJsonInteger(output_.cursor(), number));
}

void JsonTextWriter::writeUnsigned(std::uint64_t number) {
  output_.require(longestJsonNumber);
  output_.setCursor(writeJsonUnsigned(output_.cursor(), number));
}

void JsonTextWriter::writeDouble(double number) {
  output_.require(longestJsonNumber);
  output_.setCursor(writeJsonDouble(output_.cursor(), number));
}

void JsonTextWriter::writeFloat(float number) {
  output_.require(longestJsonNumber);
  output_.setCursor(writeJsonFloat(output_.cursor(), number));
}

void JsonTextWriter::writeScalar(const Value& value) {
  switch (value.kind()) {
    case ValueKind::Boolean:
      return put(value.payload() ? "true" : "false");
    case ValueKind::SignedInteger:
      return writeInteger(static_cast<std::int64_t>(value.payload()));
    case ValueKind::UnsignedInteger:
      return writeUnsigned(value.payload());
    case ValueKind::Float:
      return writeFloat(value.floatValue());
    case ValueKind::Double:
      return writeDouble(value.doubleValue());
    default:
      return put("null");
  }
}

}  // namespace zeb::detail
