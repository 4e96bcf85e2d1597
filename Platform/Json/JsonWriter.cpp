#include <Foundation/DataBuilder.h>
#include <Foundation/NSError.h>
#include <Foundation/NSException.h>
#include <Foundation/NSNumber.h>
#include <Foundation/NSString.h>
#include <Foundation/StringHash.h>
#include <Foundation/TreeRebuild.h>
#include <Foundation/UnicodeTranscoding.h>
#include <Json/ByteBlock.h>
#include <Json/JsonNumberText.h>
#include <Json/JsonReader.h>
#include <Json/JsonWriter.h>
#include <Json/NSJSONSerialization.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

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

constexpr std::uint64_t everyByte(std::uint64_t byte) noexcept {
  return byte * 0x0101010101010101u;
}

class DocumentWriter {
 public:
  explicit DocumentWriter(std::uint64_t options)
      : pretty_(options & NSJSONWritingPrettyPrinted),
        escapesSlashes_(!(options & NSJSONWritingWithoutEscapingSlashes)) {}

  NSData finish() { return output_.finish(); }

  // The tree's visitor.

  bool enter(const Value& collection, std::size_t depth) {
    if (collection.isSet()) raiseUnwritable(collection);
    if (depth >= deepestJsonNesting) {
      throw NSError(NSCocoaErrorDomain, NSPropertyListWriteInvalidError,
                    {{NSLocalizedDescriptionKey, "Nested more than 512 levels deep."}});
    }
    output_.require(1);
    output_.put(collection.isArray() ? '[' : '{');
    indentation_ = depth + 1;
    isEmpty_ = true;
    return true;
  }

  void leave(const Value& collection, std::size_t depth) {
    indentation_ = depth;
    if (pretty_ && !isEmpty_) newLine();
    isEmpty_ = false;
    output_.require(1);
    output_.put(collection.isArray() ? ']' : '}');
  }

  void element(std::size_t position) {
    if (position) {
      output_.require(1);
      output_.put(',');
    }
    if (pretty_) newLine();
    isEmpty_ = false;
  }

  void key(const Value& key, std::size_t position) {
    element(position);
    if (!key.isString()) {
      raiseInvalidArgument(NSString::stringWithFormat("JSON keys must be strings: %@", key));
    }
    writeString(*key.storageAs<StringStorage>());
    output_.require(3);
    if (pretty_) output_.put(' ');
    output_.put(':');
    if (pretty_) output_.put(' ');
  }

  [[gnu::always_inline]] void leaf(const Value& value) {
    if (value.isString()) return writeString(*value.storageAs<StringStorage>());
    output_.require(longestJsonNumber);
    switch (value.kind()) {
      case ValueKind::Null:
        return output_.put("null");
      case ValueKind::Boolean:
        return output_.put(value.boolValue() ? "true" : "false");
      case ValueKind::SignedInteger:
        return output_.setCursor(writeJsonInteger(output_.cursor(), value.longLongValue()));
      case ValueKind::UnsignedInteger:
        return output_.setCursor(writeJsonUnsigned(output_.cursor(), value.payload()));
      case ValueKind::Float:
      case ValueKind::Double: {
        const double number = value.doubleValue();
        if (!std::isfinite(number)) {
          raiseInvalidArgument(NSString::stringWithFormat("JSON has no number %@", value));
        }
        return output_.setCursor(value.kind() == ValueKind::Float
                                     ? writeJsonFloat(output_.cursor(), static_cast<float>(number))
                                     : writeJsonDouble(output_.cursor(), number));
      }
      default:
        raiseUnwritable(value);
    }
  }

 private:
  [[noreturn]] static void raiseUnwritable(const Value& value) {
    raiseInvalidArgument(NSString::stringWithFormat("JSON has no such value: %@", value));
  }

  void newLine() {
    constexpr std::size_t step = 2;
    output_.require(1 + step * indentation_);
    output_.put('\n');
    std::memset(output_.cursor(), ' ', step * indentation_);
    output_.setCursor(output_.cursor() + step * indentation_);
  }

  void writeString(const StringStorage& string) {
    output_.require(1);
    output_.put('"');
    if (string.isWide()) {
      writeWide({string.units(), string.length});
    } else {
      writeNarrow({string.ascii(), string.length});
    }
    output_.require(1);
    output_.put('"');
  }

  ByteBlock needsEscape(ByteBlock block) const noexcept {
    const auto found = (block < 0x20) | (block == '"') | (block == '\\');
    return reinterpret_cast<ByteBlock>(escapesSlashes_ ? found | (block == '/') : found);
  }

  bool needsEscapes(std::uint64_t word) const noexcept {
    const auto zeroByteIn = [](std::uint64_t bytes) {
      return (bytes - everyByte(1)) & ~bytes & everyByte(0x80);
    };
    std::uint64_t found = ((word - everyByte(0x20)) & ~word & everyByte(0x80)) |
                          zeroByteIn(word ^ everyByte('"')) | zeroByteIn(word ^ everyByte('\\'));
    if (escapesSlashes_) found |= zeroByteIn(word ^ everyByte('/'));
    return found != 0;
  }

  /// ASCII: whole blocks while nothing in them needs an escape, else character by character.
  void writeNarrow(std::string_view text) {
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
        if (anySet(needsEscape(block))) {
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
  char* writeShort(char* target, const char* at, const char* end) const noexcept {
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

  /// Letters where a word of fewer than eight characters has none.
  static constexpr std::uint64_t shortWordFill(std::size_t length) noexcept {
    return everyByte('a') << (8 * length);
  }

  char* writeCharacters(char* target, const char* at, const char* end) const noexcept {
    for (; at != end; ++at) target = writeCharacter(target, *at);
    return target;
  }

  char* writeCharacter(char* target, char character) const noexcept {
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

  static char* writeNumberedEscape(char* target, char16_t unit) noexcept {
    constexpr char digits[] = "0123456789abcdef";
    *target++ = '\\';
    *target++ = 'u';
    for (int shift = 12; shift >= 0; shift -= 4) *target++ = digits[unit >> shift & 0xF];
    return target;
  }

  void writeWide(std::u16string_view units) {
    for (std::size_t index = 0; index < units.size();) {
      const std::size_t pieceEnd = std::min(units.size(), index + pieceLength);
      output_.require((pieceEnd - index + 1) * longestEscape);
      char* target = output_.cursor();
      while (index < pieceEnd) target = writeScalar(target, nextScalar(units, index));
      output_.setCursor(target);
    }
  }

  char* writeScalar(char* target, char32_t scalar) const noexcept {
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

  static constexpr std::size_t pieceLength = 4096;  ///< units that room is made for at once
  static constexpr std::size_t longestEscape = 6;

  const bool pretty_;
  const bool escapesSlashes_;
  DataBuilder output_;
  std::size_t indentation_ = 0;
  bool isEmpty_ = true;
};

/// Dictionaries with their entries in the order of their keys, which are strings or, in what will be
/// refused anyway, in any order.
struct SortedKeysRules : TreeRules {
  static Value finished(Value collection) {
    if (!collection.isDictionary()) return frozen(std::move(collection));
    std::vector<DictionaryEntry> entries;
    for (const DictionaryEntry& entry : NSDictionary(collection)) entries.push_back(entry);
    std::stable_sort(entries.begin(), entries.end(),
                     [](const DictionaryEntry& left, const DictionaryEntry& right) {
                       return NSString(left.key) < NSString(right.key);
                     });
    return NSDictionary::dictionaryWithEntries(entries);
  }
};

}  // namespace

NSData writeJson(const Value& root, std::uint64_t options) {
  const bool isCollection = root.isArray() || root.isDictionary();
  if (!isCollection && !(options & NSJSONWritingFragmentsAllowed)) {
    raiseInvalidArgument("The root of a JSON document must be an array or a dictionary");
  }
  DocumentWriter writer(options);
  if (options & NSJSONWritingSortedKeys) {
    walkTree(rebuildTree(root, SortedKeysRules()), writer);
  } else {
    walkTree(root, writer);
  }
  return writer.finish();
}

}  // namespace zeb::detail
