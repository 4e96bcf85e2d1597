#include <ZEBPlatform/Foundation/detail/Arena.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>
#include <ZEBPlatform/Foundation/detail/StringBuilding.h>
#include <ZEBPlatform/Foundation/detail/StringHash.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Json/JsonNumberPrivate.h>
#include <ZEBPlatform/Json/JsonScratchPrivate.h>
#include <ZEBPlatform/Json/detail/ByteBlock.h>
#include <ZEBPlatform/Json/detail/JsonLimits.h>
#include <ZEBPlatform/Json/detail/JsonReader.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <span>

namespace zeb::detail {

namespace {

static_assert(sizeof(Words) == sizeof(Value) && 2 * sizeof(Words) == sizeof(DictionaryEntry));

/// Copies in whole blocks, without a call for few words. Both sides have room for a whole last
/// block.
void copyWords(void* target, const Words* source, std::size_t count) noexcept {
  constexpr std::size_t fewWords = 32;
  constexpr std::size_t blockSize = WordStack::wordsAtOnce * sizeof(Words);
  static_assert(blockSize <= Arena::slack);
  if (count > fewWords) {
    std::memcpy(target, source, count * sizeof(Words));
    return;
  }
  auto* to = static_cast<char*>(target);
  for (std::size_t done = 0; done < count; done += WordStack::wordsAtOnce) {
    std::memcpy(to, source + done, blockSize);
    to += blockSize;
  }
}

/// Up to this size (in bytes), a tree may waste half of its memory.
constexpr std::size_t smallTreeSize = 8192;

constexpr std::array<bool, 256> tokenEnds = [] {
  std::array<bool, 256> ends{};
  for (const char character : {',', '}', ']', ':', ' ', '\n', '\r', '\t'}) {
    ends[static_cast<unsigned char>(character)] = true;
  }
  return ends;
}();

bool endsToken(char character) noexcept { return tokenEnds[static_cast<unsigned char>(character)]; }

/// The bytes that a plain string does not contain: escapes, and bytes outside ASCII.
ByteBlock needsDecoding(ByteBlock block) noexcept {
  return reinterpret_cast<ByteBlock>((block == '\\') | (block >= 0x80));
}

/// The lanes before `count`; the others become zero.
ByteBlock firstLanes(ByteBlock block, std::size_t count) noexcept {
  const auto limit = static_cast<std::uint8_t>(std::min(count, sizeof block));
  return block & reinterpret_cast<ByteBlock>(laneNumbers < limit);
}

/// The bytes outside ASCII among the first `count`.
ByteBlock beyondASCII(ByteBlock block, std::size_t count) noexcept {
  return firstLanes(reinterpret_cast<ByteBlock>(block >= 0x80), count);
}

/// Whether one of a word's eight bytes is a backslash.
constexpr bool hasBackslash(std::uint64_t word) noexcept {
  return zeroBytes(word ^ everyByte('\\')) != 0;
}

/// The same as `loadTail`, for bytes with a whole readable word after their start.
std::uint64_t loadTailAtOnce(const char* bytes, std::size_t count) noexcept {
  return loadWord(bytes) & ((std::uint64_t{1} << (8 * count)) - 1);
}

constexpr int hexValue(char digit) noexcept {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

class TreeReader {
 public:
  TreeReader(std::string_view text, JsonScratch& scratch)
      : text_(text),
        limit_(text.data() + text.size()),
        scratch_(scratch),
        arena_(Arena::create(std::min(2 * text.size(), smallTreeSize + text.size() / 4) + 64)) {
    scratch_.keys.startDocument();
  }
  TreeReader(const TreeReader&) = delete;
  TreeReader& operator=(const TreeReader&) = delete;
  ~TreeReader() { arena_->release(); }

  JsonReading read(bool permitFragments) {
    JsonReading reading;
    const std::span<const std::uint32_t> indexes = scratch_.structure.indexes();
    if (indexes.empty()) {
      reading.fault = {"No value", text_.size(), true};
      return reading;
    }
    if (!permitFragments && text_[indexes[0]] != '{' && text_[indexes[0]] != '[') {
      reading.fault = {"The root is neither an array nor a dictionary", indexes[0]};
      return reading;
    }
    // Every place puts at most one value on the stack.
    Words* const stack = scratch_.stack.reserve(indexes.size());
    if (!readTree(indexes.data(), indexes.data() + indexes.size(), stack)) {
      reading.fault = fault_;
      return reading;
    }
    // The root holds the only counted reference to the arena.
    if (Value::isCountedHead(stack->head)) arena_->retain();
    reading.value = Value(Value::adoptWords, stack->head, stack->payload);
    return reading;
  }

 private:
  [[gnu::cold]] bool fail(const char* message, std::size_t offset) noexcept {
    fault_ = {message, offset, offset == text_.size()};
    return false;
  }

  /// `top` is where the next value is stored, here and in the functions below.
  bool readTree(const std::uint32_t* next, const std::uint32_t* const end, Words* top) {
    const char* const text = text_.data();
    struct Level {
      Words* base;  ///< where its first value is
      bool isDictionary;
    };
    std::array<Level, maxJsonNesting> levels;
    std::size_t depth = 0;

    for (;;) {
      // A value begins here.
      if (next == end) return fail("A value is missing at the end", text_.size());
      const std::uint32_t at = *next++;
      place_ = at;
      switch (text[at]) {
        case '"':
          if (!readString(at, next, end, top)) return false;
          break;
        case '{':
        case '[': {
          const bool isDictionary = text[at] == '{';
          if (depth == maxJsonNesting) return fail(jsonNestingFault.c_str(), at);
          levels[depth++] = {top, isDictionary};
          if (next != end && text[*next] == (isDictionary ? '}' : ']'))
            break;  // the loop below closes it
          if (isDictionary && !readKey(next, end, top)) return false;
          continue;
        }
        case 't':
          if (!readWord(at, "true", {Value::headOf(ValueKind::Boolean, 'c'), 1}, top)) return false;
          break;
        case 'f':
          if (!readWord(at, "false", {Value::headOf(ValueKind::Boolean, 'c'), 0}, top))
            return false;
          break;
        case 'n':
          if (!readWord(at, "null", {Value::headOf(ValueKind::Null), 0}, top)) return false;
          break;
        default:
          if (!readNumber(at, top)) return false;
      }

      // A value has ended here. A comma or the end of a collection follows.
      for (;;) {
        if (depth == 0) {
          if (next != end) return fail("Something follows the root", *next);
          return true;
        }
        const Level level = levels[depth - 1];
        if (next == end) {
          return fail(level.isDictionary ? "A dictionary is not closed" : "An array is not closed",
                      text_.size());
        }
        const std::uint32_t place = *next++;
        const char character = text[place];
        if (character == ',') {
          if (level.isDictionary && !readKey(next, end, top)) return false;
          break;
        }
        if (character != (level.isDictionary ? '}' : ']')) {
          return fail(level.isDictionary ? "A comma or the dictionary's end was expected"
                                         : "A comma or the array's end was expected",
                      place);
        }
        --depth;
        const auto count = static_cast<std::uint32_t>(top - level.base);
        top = level.base;
        *top = level.isDictionary ? newDictionary(top, count / 2) : newArray(top, count);
        ++top;
      }
    }
  }

  bool readWord(std::uint32_t at, std::string_view word, Words value, Words*& top) {
    const char* start = text_.data() + at;
    const auto rest = static_cast<std::size_t>(limit_ - start);
    if (rest < word.size() || std::memcmp(start, word.data(), word.size()) != 0 ||
        (rest > word.size() && !endsToken(start[word.size()]))) {
      return fail("A value was expected", at);
    }
    *top++ = value;
    return true;
  }

  bool readNumber(std::uint32_t at, Words*& top) {
    const char* start = text_.data() + at;
    if (*start != '-' && !json_number::isDigit(*start)) return fail("A value was expected", at);
    Words value;
    const JsonNumberEnd number = readJsonNumber(start, limit_, value.head, value.payload);
    if (!number.end) return fail(number.fault, at);
    if (number.end != limit_ && !endsToken(*number.end)) {
      return fail("Malformed number", static_cast<std::size_t>(number.end - text_.data()));
    }
    *top++ = value;
    return true;
  }

  /// Memory for a node.
  void* allocate(std::size_t size) {
    if (!arena_->hasRoom(size)) prepareNextChunk();
    return arena_->allocate(size);
  }

  /// Chunks after the first are sized for the rest of the text, estimated from what the text needed
  /// so far, so that a tree wastes little memory.
  [[gnu::noinline]] void prepareNextChunk() noexcept {
    const double progress = static_cast<double>(place_ + 1) / static_cast<double>(text_.size() + 1);
    const double rest = static_cast<double>(arena_->footprint()) * (1 - progress) / progress;
    arena_->setNextChunkSize(std::min(static_cast<std::size_t>(rest * 1.05), 2 * text_.size()) +
                             smallTreeSize / 8);
  }

  /// The text between the quotes of the string at `at`. Its end is found by searching back from the
  /// next token.
  std::string_view stringAt(std::uint32_t at, const std::uint32_t* next,
                            const std::uint32_t* end) const noexcept {
    const char* start = text_.data() + at + 1;
    const char* quote = text_.data() + (next != end ? *next : text_.size()) - 1;
    while (*quote != '"') --quote;
    return {start, static_cast<std::size_t>(quote - start)};
  }

  /// Whether a whole block can be read from any position in `raw`.
  bool hasBlockAfter(std::string_view raw) const noexcept {
    return static_cast<std::size_t>(limit_ - raw.data()) >= raw.size() + sizeof(ByteBlock);
  }

  StringStorage* newString(std::size_t bytes, std::uint8_t flags, std::size_t units) {
    static_assert(sizeof(ByteBlock) <= Arena::slack);
    void* memory = allocate(sizeof(StringStorage) + bytes);
    return new (memory) StringStorage(static_cast<std::uint8_t>(flags | StorageInArena),
                                      static_cast<std::uint32_t>(units), arena_->offsetOf(memory));
  }

  void keepOnly(StringStorage* string, std::size_t bytes) noexcept {
    arena_->shrinkLatest(string, sizeof(StringStorage) + bytes);
  }
  void drop(StringStorage* string) noexcept { arena_->shrinkLatest(string, 0); }

  static Words wordsOf(const StringStorage* string, std::uint32_t keyHash = 0) noexcept {
    return {static_cast<std::uint64_t>(ValueKind::String) | std::uint64_t{keyHash} << 32,
            reinterpret_cast<std::uint64_t>(string)};
  }

  bool readString(std::uint32_t at, const std::uint32_t* next, const std::uint32_t* end,
                  Words*& top) {
    const StringStorage* string = newStringOf(stringAt(at, next, end));
    if (!string) return false;
    *top++ = wordsOf(string);
    return true;
  }

  /// The string that `raw` denotes; null after a fault.
  StringStorage* newStringOf(std::string_view raw) {
    if (!hasBlockAfter(raw)) return newStringAtEnd(raw);
    // Most texts beyond ASCII show it at once. They are not copied first.
    const bool beginsBeyondASCII = static_cast<unsigned char>(*raw.data()) >= 0x80;
    if (beginsBeyondASCII || anySet(beyondASCII(loadBlock(raw.data()), raw.size()))) {
      return newWideString(raw);
    }
    StringStorage* string = newString(raw.size(), StoragePlainText, raw.size());
    char* const target = contentOf<char>(string);
    ByteBlock found{};
    std::size_t offset = 0;
    for (; offset + sizeof(ByteBlock) <= raw.size(); offset += sizeof(ByteBlock)) {
      const ByteBlock block = loadBlock(raw.data() + offset);
      std::memcpy(target + offset, &block, sizeof block);
      found |= needsDecoding(block);
    }
    const ByteBlock last = loadBlock(raw.data() + offset);
    std::memcpy(target + offset, &last, sizeof last);
    found |= firstLanes(needsDecoding(last), raw.size() - offset);
    if (!anySet(found)) return string;
    drop(string);
    return newDecodedString(raw);
  }

  /// The same for text with less than a block after it.
  [[gnu::noinline]] StringStorage* newStringAtEnd(std::string_view raw) {
    if (!isASCII(raw) || raw.find('\\') != raw.npos) return newDecodedString(raw);
    StringStorage* string = newString(raw.size(), 0, raw.size());
    std::memcpy(contentOf<char>(string), raw.data(), raw.size());
    return string;
  }

  /// The string of text with escapes or beyond ASCII; null after a fault.
  [[gnu::noinline]] StringStorage* newDecodedString(std::string_view raw) {
    StringStorage* string = isASCII(raw) ? newUnescapedString(raw) : nullptr;
    return string || fault_.message ? string : newWideString(raw);
  }

  /// The string of ASCII text with escapes of ASCII characters; null after a fault and for other
  /// text.
  StringStorage* newUnescapedString(std::string_view raw) {
    StringStorage* string = newString(raw.size(), 0, 0);
    char* const bytes = contentOf<char>(string);
    char* target = bytes;
    while (!raw.empty()) {
      if (raw.size() >= sizeof(ByteBlock)) {
        // The whole block is written; the part after the first special byte is overwritten next.
        const ByteBlock block = loadBlock(raw.data());
        std::memcpy(target, &block, sizeof block);
        const std::size_t plain = firstSet(needsDecoding(block));
        target += plain;
        raw.remove_prefix(plain);
        if (plain == sizeof block) continue;
      }
      char16_t unit = static_cast<unsigned char>(raw.front());
      if (unit != '\\') {
        raw.remove_prefix(1);
      } else if (!takeEscape(raw, unit)) {
        return nullptr;
      }
      if (unit >= 0x80) {
        drop(string);
        return nullptr;
      }
      *target++ = static_cast<char>(unit);
    }
    string->length = static_cast<std::uint32_t>(target - bytes);
    keepOnly(string, string->length);
    return string;
  }

  StringStorage* newWideString(std::string_view raw) {
    static_assert(UnicodeConverter::slack <= Arena::slack);
    StringStorage* string = newString(raw.size() * sizeof(char16_t), StorageWide, 0);
    char16_t* const units = contentOf<char16_t>(string);
    const TextProgress progress = decodePiece(raw, units);
    char16_t* end = units + progress.written;
    if (progress.read != raw.size()) {
      raw.remove_prefix(progress.read);
      if (!decodeRest(raw, end)) return nullptr;
    }
    string->length = static_cast<std::uint32_t>(end - units);
    keepOnly(string, string->length * sizeof(char16_t));
    return string;
  }

  TextProgress decodePiece(std::string_view raw, char16_t* target) const noexcept {
    const auto readable = static_cast<std::size_t>(limit_ - raw.data());
    return converter_.decodeUntilBackslash(raw, readable, target);
  }

  /// Decodes text from its first escape on, and moves `target` to the end of what it wrote.
  [[gnu::noinline]] bool decodeRest(std::string_view raw, char16_t*& target) noexcept {
    while (!raw.empty()) {
      if (raw.front() == '\\') {
        if (!takeEscape(raw, *target)) return false;
        ++target;
        continue;
      }
      const TextProgress progress = decodePiece(raw, target);
      raw.remove_prefix(progress.read);
      target += progress.written;
    }
    return true;
  }

  /// Decodes one escape. Escaped surrogates are ordinary units, paired or not.
  bool takeEscape(std::string_view& raw, char16_t& unit) noexcept {
    const auto offset = static_cast<std::size_t>(raw.data() - text_.data());
    // A backslash is never the last character: the quote after it would not have ended the string.
    const char character = raw[1];
    raw.remove_prefix(2);
    switch (character) {
      case '"':
      case '\\':
      case '/':
        unit = static_cast<char16_t>(character);
        return true;
      case 'b':
        unit = u'\b';
        return true;
      case 'f':
        unit = u'\f';
        return true;
      case 'n':
        unit = u'\n';
        return true;
      case 'r':
        unit = u'\r';
        return true;
      case 't':
        unit = u'\t';
        return true;
      case 'u': {
        int value = raw.size() < 4 ? -1 : 0;
        for (std::size_t index = 0; index < 4 && value >= 0; ++index) {
          const int digit = hexValue(raw[index]);
          value = digit < 0 ? -1 : value << 4 | digit;
        }
        if (value < 0) return fail("Four hexadecimal digits were expected", offset);
        raw.remove_prefix(4);
        unit = static_cast<char16_t>(value);
        return true;
      }
      default:
        return fail("Unknown escape in a string", offset);
    }
  }

  /// Reads a dictionary's key and its colon.
  bool readKey(const std::uint32_t*& next, const std::uint32_t* end, Words*& top) {
    const char* const text = text_.data();
    if (next == end) return fail("A key is missing at the end", text_.size());
    const std::uint32_t at = *next++;
    if (text[at] != '"') return fail("A key was expected", at);
    if (next == end || text[*next] != ':') {
      return fail("A colon was expected", next == end ? text_.size() : *next);
    }
    const std::string_view key = stringAt(at, next, end);
    ++next;
    if (!hasBlockAfter(key)) return readUnusualKey(key, top);

    const std::uint64_t start =
        key.size() >= 8 ? loadWord(key.data()) : loadTailAtOnce(key.data(), key.size());
    if (const KeyTable::Entry* entry = scratch_.keys.findFollower(key, start)) {
      *top++ = wordsOf(entry->string, entry->hash);
      return true;
    }
    return readUnexpectedKey(key, start, top);
  }

  /// For a key that did not follow the previous one before.
  [[gnu::noinline]] bool readUnexpectedKey(std::string_view key, std::uint64_t start, Words*& top) {
    bool escaped = false;
    const std::uint32_t hash =
        hashWords(key.data(), key.size(), loadTailAtOnce,
                  [&](std::uint64_t word) { escaped |= hasBackslash(word); });
    if (escaped) return readUnusualKey(key, top);
    KeyTable::Entry* entry = scratch_.keys.find(key, start, hash);
    StringStorage* string = entry ? entry->string : nullptr;
    if (!string) {
      string = newStringOf(key);
      string->hash.store(hash, std::memory_order_relaxed);
      if (entry) entry->string = string;
    }
    *top++ = wordsOf(string, hash);
    return true;
  }

  /// For a key with escapes, or at the end of the text. Such keys are not shared.
  [[gnu::noinline]] bool readUnusualKey(std::string_view key, Words*& top) {
    const StringStorage* string = newStringOf(key);
    if (!string) return false;
    *top++ = wordsOf(string, hashOfString(*string));
    return true;
  }

  Words newArray(const Words* first, std::uint32_t count) {
    void* memory = allocate(sizeof(ArrayStorage) + count * sizeof(Words));
    auto* array = new (memory) ArrayStorage(StorageInArena, count, arena_->offsetOf(memory));
    copyWords(array + 1, first, count);
    return {static_cast<std::uint64_t>(ValueKind::Array), reinterpret_cast<std::uint64_t>(array)};
  }

  Words newDictionary(const Words* first, std::uint32_t count) {
    const std::size_t entriesSize = count * sizeof(DictionaryEntry);
    const std::size_t slots = count > maxUnindexedEntries ? indexSlots(count) : 0;
    void* memory =
        allocate(sizeof(DictionaryStorage) + entriesSize + slots * sizeof(std::uint32_t));
    auto* table = new (memory)
        DictionaryStorage(ValueKind::Dictionary, StorageInArena, arena_->offsetOf(memory));
    char* const entries = static_cast<char*>(memory) + sizeof(DictionaryStorage);
    table->entries = reinterpret_cast<DictionaryEntry*>(entries);
    table->used = count;
    copyWords(entries, first, 2 * std::size_t{count});
    finishBorrowedEntries(*table);
    return {static_cast<std::uint64_t>(ValueKind::Dictionary),
            reinterpret_cast<std::uint64_t>(table)};
  }

  std::string_view text_;
  const char* limit_;
  JsonScratch& scratch_;
  const UnicodeConverter& converter_ = unicodeConverter();
  Arena* arena_;
  JsonFault fault_;
  std::uint32_t place_ = 0;  ///< offset of the value that is being read
};

}  // namespace

JsonReading readJson(std::string_view utf8, bool permitFragments) {
  const JsonScratchLease lease;
  const JsonFault fault = (*lease).structure.scan(utf8);
  if (fault.message) return {Value(), fault};
  return TreeReader(utf8, *lease).read(permitFragments);
}

}  // namespace zeb::detail
