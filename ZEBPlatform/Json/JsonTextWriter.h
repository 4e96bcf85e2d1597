#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>
#include <ZEBPlatform/Foundation/detail/DataBuilder.h>
#include <ZEBPlatform/Foundation/detail/StringHash.h>
#include <ZEBPlatform/Foundation/detail/UnicodeConverter.h>
#include <ZEBPlatform/Json/detail/ByteBlock.h>
#include <ZEBPlatform/Json/detail/JsonNumberText.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zeb::detail {

/// Writes the tokens of a JSON text one after the other. Knows how each token is spelled; the
/// caller is responsible for their order.
class JsonTextWriter {
 public:
  explicit JsonTextWriter(bool escapesSlashes) noexcept : escapesSlashes_(escapesSlashes) {}

  /// Brackets, commas and other text that is JSON already.
  void put(char character) {
    output_.require(1);
    output_.put(character);
  }
  void put(std::string_view text) {
    output_.require(text.size());
    output_.put(text);
  }

  /// With quotes and escapes, followed by one character. Unpaired surrogates become numbered
  /// escapes.
  inline void writeString(const StringStorage& string, char terminator);
  void writeString(const StringStorage& string) {
    put('"');
    writeContent(string);
    put('"');
  }
  /// Only the text between the quotes.
  inline void writeContent(const StringStorage& string);
  inline void writeASCII(std::string_view text);

  inline void writeInteger(std::int64_t number);
  inline void writeUnsigned(std::uint64_t number);
  /// A boolean, number or null, followed by one character. Numbers must be finite, see `isFinite`.
  inline void writeScalar(const Value& value, char terminator);

  static bool isFinite(const Value& number) noexcept {
    // Only infinities and not-a-number have all bits of the exponent set.
    constexpr std::uint64_t doubleExponent = std::uint64_t{0x7FF} << 52;
    constexpr std::uint64_t floatExponent = std::uint64_t{0xFF} << 23;
    const std::uint64_t bits = number.payload();
    if (number.kind() == ValueKind::Double) return (bits & doubleExponent) != doubleExponent;
    return number.kind() != ValueKind::Float || (bits & floatExponent) != floatExponent;
  }

  std::size_t size() const noexcept { return output_.size(); }
  DataBuilder& output() noexcept { return output_; }
  NSData finish() { return output_.finish(); }

 private:
  inline bool needsEscapes(std::uint64_t word) const noexcept;
  inline char* writePiece(char* target, std::string_view piece) const noexcept;
  /// Whether the string needs no escapes and has readable memory after it, as those of documents.
  bool canCopy(const StringStorage& string) const noexcept {
    constexpr std::uint8_t flags = StorageInArena | StoragePlainText;
    return (string.flags & flags) == flags && !escapesSlashes_;
  }
  static inline char* copyBlocks(char* target, const char* at, std::size_t length) noexcept;
  inline char* writeShort(char* target, const char* at, const char* end) const noexcept;
  char* writeCharacters(char* target, const char* at, const char* end) const noexcept;
  char* writeCharacter(char* target, char character) const noexcept;
  char* writeWidePiece(char* target, std::u16string_view piece) const noexcept;
  void writeWide(std::u16string_view units);

  const bool escapesSlashes_;
  const UnicodeConverter& converter_ = unicodeConverter();
  DataBuilder output_;
};

// Functions that run for every string and number of a document are inline.

namespace json_text {

inline constexpr std::size_t pieceLength = 4096;  // units that space is reserved for at once
inline constexpr std::size_t maxEscapeLength = 6;

/// Letters for the unused bytes of a word with fewer than eight characters.
constexpr std::uint64_t shortWordFill(std::size_t length) noexcept {
  return everyByte('a') << (8 * length);
}

inline ByteBlock needsEscape(ByteBlock block, bool slashes) noexcept {
  const auto found = (block < 0x20) | (block == '"') | (block == '\\');
  return reinterpret_cast<ByteBlock>(slashes ? found | (block == '/') : found);
}

}  // namespace json_text

inline void JsonTextWriter::writeString(const StringStorage& string, char terminator) {
  if (string.length > json_text::pieceLength) {
    writeString(string);
    put(terminator);
    return;
  }
  output_.require(string.length * json_text::maxEscapeLength + UnicodeConverter::slack + 3);
  char* target = output_.cursor();
  *target++ = '"';
  if (string.isWide()) {
    target = writeWidePiece(target, {string.units(), string.length});
  } else if (canCopy(string)) {
    target = copyBlocks(target, string.ascii(), string.length);
  } else {
    target = writePiece(target, {string.ascii(), string.length});
  }
  *target++ = '"';
  *target++ = terminator;
  output_.setCursor(target);
}

inline void JsonTextWriter::writeContent(const StringStorage& string) {
  if (string.isWide()) {
    writeWide({string.units(), string.length});
  } else {
    writeASCII({string.ascii(), string.length});
  }
}

inline bool JsonTextWriter::needsEscapes(std::uint64_t word) const noexcept {
  std::uint64_t found = ((word - everyByte(0x20)) & ~word & everyByte(0x80)) |
                        zeroBytes(word ^ everyByte('"')) | zeroBytes(word ^ everyByte('\\'));
  if (escapesSlashes_) found |= zeroBytes(word ^ everyByte('/'));
  return found != 0;
}

inline void JsonTextWriter::writeASCII(std::string_view text) {
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, json_text::pieceLength);
    text.remove_prefix(piece.size());
    output_.require(piece.size() * json_text::maxEscapeLength + sizeof(ByteBlock));
    output_.setCursor(writePiece(output_.cursor(), piece));
  }
}

/// For text after which two blocks can be read. Most texts take one round, so that their different
/// lengths cause no mispredicted branches.
inline char* JsonTextWriter::copyBlocks(char* target, const char* at, std::size_t length) noexcept {
  constexpr std::size_t atOnce = 2 * sizeof(ByteBlock);
  for (std::size_t done = 0;; done += atOnce) {
    std::memcpy(target + done, at + done, atOnce);
    if (length - done <= atOnce) return target + length;
  }
}

/// Copies whole blocks that need no escape, and other blocks character by character.
inline char* JsonTextWriter::writePiece(char* target, std::string_view piece) const noexcept {
  const char* at = piece.data();
  const char* const end = at + piece.size();
  while (static_cast<std::size_t>(end - at) >= sizeof(ByteBlock)) {
    const ByteBlock block = loadBlock(at);
    std::memcpy(target, &block, sizeof block);
    if (anySet(json_text::needsEscape(block, escapesSlashes_))) {
      target = writeCharacters(target, at, at + sizeof block);
    } else {
      target += sizeof block;
    }
    at += sizeof block;
  }
  return writeShort(target, at, end);
}

/// For less than a block. Uses one word, or two words that may overlap.
inline char* JsonTextWriter::writeShort(char* target, const char* at,
                                        const char* end) const noexcept {
  const auto length = static_cast<std::size_t>(end - at);
  if (length < 8) {
    const std::uint64_t word = loadTail(at, length);
    if (needsEscapes(word | json_text::shortWordFill(length)))
      return writeCharacters(target, at, end);
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

inline void JsonTextWriter::writeInteger(std::int64_t number) {
  output_.require(maxJsonNumberLength);
  output_.setCursor(writeJsonInteger(output_.cursor(), number));
}

inline void JsonTextWriter::writeUnsigned(std::uint64_t number) {
  output_.require(maxJsonNumberLength);
  output_.setCursor(writeJsonUnsigned(output_.cursor(), number));
}

inline void JsonTextWriter::writeScalar(const Value& value, char terminator) {
  output_.require(maxJsonNumberLength + 1);
  char* target = output_.cursor();
  const auto word = [&](std::string_view text) {
    std::memcpy(target, text.data(), text.size());
    target += text.size();
  };
  switch (value.kind()) {
    case ValueKind::Boolean:
      word(value.payload() ? "true" : "false");
      break;
    case ValueKind::SignedInteger:
      target = writeJsonInteger(target, static_cast<std::int64_t>(value.payload()));
      break;
    case ValueKind::UnsignedInteger:
      target = writeJsonUnsigned(target, value.payload());
      break;
    case ValueKind::Float:
      target = writeJsonFloat(target, value.floatValue());
      break;
    case ValueKind::Double:
      target = writeJsonDouble(target, std::bit_cast<double>(value.payload()));
      break;
    default:
      word("null");
  }
  *target++ = terminator;
  output_.setCursor(target);
}

}  // namespace zeb::detail
