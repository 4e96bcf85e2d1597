#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/TokenTypePrivate.h>
#include <ZEBPlatform/Text/WordIteratorPrivate.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>
#include <ZEBPlatform/Text/detail/WordToken.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <array>
#include <memory>

namespace zeb::detail {

namespace {

constexpr NSRange notFound{NSNotFound, 0};

/// What the rules for word boundaries tell apart. These are the values of the property Word_Break
/// with the changes that ICU's rules make.
enum class WordClass : std::uint8_t {
  other,
  carriageReturn,
  lineFeed,
  newline,
  extend,  ///< Extend or Format
  joiner,  ///< U+200D
  regionalIndicator,
  letter,
  hebrewLetter,
  numeric,
  extendNumLet,  ///< such as the underscore
  singleQuote,
  doubleQuote,
  midNumLet,
  midLetter,
  midNum,
  space,
  pictograph,
  needsICU,  ///< a dictionary decides, or the rules are more complicated
};

WordClass classOfProperty(char32_t codePoint, std::int32_t wordBreak) noexcept {
  switch (wordBreak) {
    case U_WB_CR:
      return WordClass::carriageReturn;
    case U_WB_LF:
      return WordClass::lineFeed;
    case U_WB_NEWLINE:
      return WordClass::newline;
    case U_WB_EXTEND:
    case U_WB_FORMAT:
      return WordClass::extend;
    case U_WB_ZWJ:
      return WordClass::joiner;
    case U_WB_REGIONAL_INDICATOR:
      return WordClass::regionalIndicator;
    case U_WB_ALETTER:
      return WordClass::letter;
    case U_WB_HEBREW_LETTER:
      return WordClass::hebrewLetter;
    case U_WB_NUMERIC:
      return WordClass::numeric;
    case U_WB_EXTENDNUMLET:
      return WordClass::extendNumLet;
    case U_WB_SINGLE_QUOTE:
      return WordClass::singleQuote;
    case U_WB_DOUBLE_QUOTE:
      return WordClass::doubleQuote;
    case U_WB_MIDNUMLET:
      return WordClass::midNumLet;
    case U_WB_MIDLETTER:
      // ICU does not let colons connect letters.
      return codePoint == U':' || codePoint == U'\uFE55' || codePoint == U'\uFF1A'
                 ? WordClass::other
                 : WordClass::midLetter;
    case U_WB_MIDNUM:
      return WordClass::midNum;
    case U_WB_WSEGSPACE:
      return WordClass::space;
    default:
      return codePoint == U'@' ? WordClass::letter : WordClass::other;
  }
}

bool hasDictionary(UChar32 codePoint, std::int32_t wordBreak) noexcept {
  UErrorCode status = U_ZERO_ERROR;
  const UScriptCode script = uscript_getScript(codePoint, &status);
  return script == USCRIPT_HAN || script == USCRIPT_HIRAGANA || script == USCRIPT_KATAKANA ||
         wordBreak == U_WB_KATAKANA || u_hasBinaryProperty(codePoint, UCHAR_IDEOGRAPHIC) ||
         (codePoint >= 0xAC00 && codePoint <= 0xD7A3) ||
         u_getIntPropertyValue(codePoint, UCHAR_LINE_BREAK) == U_LB_COMPLEX_CONTEXT;
}

WordClass computedClass(char32_t character) noexcept {
  const auto codePoint = static_cast<UChar32>(character);
  const std::int32_t wordBreak = u_getIntPropertyValue(codePoint, UCHAR_WORD_BREAK);
  if (hasDictionary(codePoint, wordBreak)) return WordClass::needsICU;
  const WordClass wordClass = classOfProperty(character, wordBreak);
  if (!u_hasBinaryProperty(codePoint, UCHAR_EXTENDED_PICTOGRAPHIC)) return wordClass;
  return wordClass == WordClass::other ? WordClass::pictograph : WordClass::needsICU;
}

/// The classes of the code points of the first two planes; emoji are in the second one.
using ClassTable = std::array<WordClass, 0x20000>;

const ClassTable& classTable() {
  static const ClassTable* const table = [] {
    auto classes = std::make_unique<ClassTable>();
    for (std::size_t index = 0; index < classes->size(); ++index) {
      (*classes)[index] = computedClass(static_cast<char32_t>(index));
    }
    return classes.release();  // lives as long as the process
  }();
  return *table;
}

/// The word boundaries of a short text, each found from the characters next to it, by the rules of
/// UAX #29. The names of rules are those of its section 4.1.1.
template <class Units>
class Boundaries {
 public:
  explicit Boundaries(Units units) noexcept : units_(units), table_(classTable()) {}

  /// Whether a character was seen for which these rules are not enough. Then all answers are void.
  bool needsICU() const noexcept { return needsICU_; }

  NSRange tokenAt(std::size_t index) noexcept {
    std::size_t begin = index;
    std::size_t end = index + 1;
    if (isPlainLetter(index)) {  // letters in a row are most of what is asked for
      while (begin > 0 && isPlainLetter(begin - 1)) --begin;
      while (end < units_.size() && isPlainLetter(end)) ++end;
    } else {
      if (end < units_.size() && isInsidePair(end)) ++end;
      begin = end;
      previous(begin);
    }
    while (begin > 0 && !isBoundary(begin)) previous(begin);
    while (end < units_.size() && !isBoundary(end)) next(end);
    return {begin, end - begin};
  }

  /// The status that ICU's rules give to a token.
  std::int32_t statusOf(NSRange token) noexcept {
    const std::size_t end = token.location + token.length;
    std::size_t place = end;
    const WordClass last = previousIgnoringExtend(place, token.location);
    std::size_t afterLast = place;
    next(afterLast);
    const bool isExtended = afterLast != end;
    switch (last) {
      case WordClass::letter:
      case WordClass::hebrewLetter:
        return UBRK_WORD_LETTER;
      case WordClass::numeric:
        return UBRK_WORD_NUMBER;
      case WordClass::extendNumLet: {
        if (isExtended) return UBRK_WORD_NONE;
        const WordClass before = previousIgnoringExtend(place, token.location);
        if (isLetter(before) || before == WordClass::extendNumLet) return UBRK_WORD_LETTER;
        return before == WordClass::numeric ? UBRK_WORD_NUMBER : UBRK_WORD_NONE;
      }
      case WordClass::singleQuote:
        return !isExtended &&
                       previousIgnoringExtend(place, token.location) == WordClass::hebrewLetter
                   ? UBRK_WORD_LETTER
                   : UBRK_WORD_NONE;
      default:
        return UBRK_WORD_NONE;
    }
  }

 private:
  static bool isLetter(WordClass value) noexcept {
    return value == WordClass::letter || value == WordClass::hebrewLetter;
  }
  static bool isNewline(WordClass value) noexcept {
    return value >= WordClass::carriageReturn && value <= WordClass::newline;
  }
  static bool isExtend(WordClass value) noexcept {
    return value == WordClass::extend || value == WordClass::joiner;
  }
  /// MidLetter or MidNumLetQ.
  static bool isBetweenLetters(WordClass value) noexcept {
    return value == WordClass::midLetter || value == WordClass::midNumLet ||
           value == WordClass::singleQuote;
  }
  /// MidNum or MidNumLetQ.
  static bool isBetweenNumbers(WordClass value) noexcept {
    return value == WordClass::midNum || value == WordClass::midNumLet ||
           value == WordClass::singleQuote;
  }

  /// Surrogates are none.
  bool isPlainLetter(std::size_t index) const noexcept {
    return table_[static_cast<char16_t>(units_[index])] == WordClass::letter;
  }
  bool isInsidePair(std::size_t index) const noexcept {
    return sizeof(units_[0]) > 1 && isLowSurrogate(static_cast<char16_t>(units_[index])) &&
           isHighSurrogate(static_cast<char16_t>(units_[index - 1]));
  }

  WordClass classOf(char32_t character) noexcept {
    const WordClass result =
        character < table_.size() ? table_[character] : computedClass(character);
    if (result == WordClass::needsICU) needsICU_ = true;
    return result;
  }
  /// Moves `index` over a character and answers its class.
  WordClass next(std::size_t& index) noexcept { return classOf(nextCharacter(units_, index)); }
  WordClass previous(std::size_t& index) noexcept {
    return classOf(previousCharacter(units_, index));
  }

  /// The class of the last character before `index` that is not ignored (WB4); moves `index` to
  /// that character. `other` if there is none after `first`.
  WordClass previousIgnoringExtend(std::size_t& index, std::size_t first) noexcept {
    while (index > first) {
      const WordClass result = previous(index);
      if (!isExtend(result)) return result;
    }
    return WordClass::other;
  }
  WordClass nextIgnoringExtend(std::size_t index) noexcept {
    while (index < units_.size()) {
      const WordClass result = next(index);
      if (!isExtend(result)) return result;
    }
    return WordClass::other;
  }

  /// `index` is inside the text and not inside a pair.
  bool isBoundary(std::size_t index) noexcept {
    std::size_t before = index;
    std::size_t after = index;
    WordClass left = previous(before);
    const WordClass right = next(after);
    if (left == WordClass::letter && right == WordClass::letter) return false;  // WB5, most often
    if (left == WordClass::carriageReturn && right == WordClass::lineFeed) return false;  // WB3
    if (isNewline(left) || isNewline(right)) return true;                                 // WB3a, b
    if (left == WordClass::joiner && right == WordClass::pictograph) return false;        // WB3c
    if (left == WordClass::space && right == WordClass::space) return false;              // WB3d
    if (isExtend(right)) return false;                                                    // WB4
    if (isExtend(left)) left = previousIgnoringExtend(before, 0);
    return !joins(left, before, right, after);
  }

  /// WB5 to WB16 for the class before a place, which begins at `before`, and the one after it,
  /// which ends at `after`.
  bool joins(WordClass left, std::size_t before, WordClass right, std::size_t after) noexcept {
    const bool isLeftWord = isLetter(left) || left == WordClass::numeric;
    if (isLeftWord && (isLetter(right) || right == WordClass::numeric)) return true;
    if (isLetter(left) && isBetweenLetters(right)) {  // WB6, WB7a
      if (left == WordClass::hebrewLetter && right == WordClass::singleQuote) return true;
      if (isLetter(nextIgnoringExtend(after))) return true;
    }
    if (left == WordClass::hebrewLetter && right == WordClass::doubleQuote) {  // WB7b
      return nextIgnoringExtend(after) == WordClass::hebrewLetter;
    }
    if (left == WordClass::numeric && isBetweenNumbers(right)) {  // WB12
      return nextIgnoringExtend(after) == WordClass::numeric;
    }
    if (isLetter(right) && isBetweenLetters(left)) {  // WB7
      if (isLetter(previousIgnoringExtend(before, 0))) return true;
    } else if (right == WordClass::hebrewLetter && left == WordClass::doubleQuote) {  // WB7c
      return previousIgnoringExtend(before, 0) == WordClass::hebrewLetter;
    } else if (right == WordClass::numeric && isBetweenNumbers(left)) {  // WB11
      return previousIgnoringExtend(before, 0) == WordClass::numeric;
    }
    if (right == WordClass::extendNumLet) {  // WB13a
      return isLeftWord || left == WordClass::extendNumLet;
    }
    if (left == WordClass::extendNumLet) {  // WB13b
      return isLetter(right) || right == WordClass::numeric;
    }
    if (left == WordClass::regionalIndicator && right == WordClass::regionalIndicator) {
      bool isFirstOfPair = true;  // WB15, WB16
      while (previousIgnoringExtend(before, 0) == WordClass::regionalIndicator) {
        isFirstOfPair = !isFirstOfPair;
      }
      return isFirstOfPair;
    }
    return false;
  }

  const Units units_;
  const ClassTable& table_;
  bool needsICU_ = false;
};

WordToken tokenByICU(std::u16string_view units, std::size_t index) {
  const WordIterator words;
  UErrorCode status = U_ZERO_ERROR;
  if (!words.get()) return {notFound, kCFStringTokenizerTokenNone};
  ubrk_setText(words.get(), units.data(), static_cast<std::int32_t>(units.size()), &status);
  const std::int32_t end = ubrk_following(words.get(), static_cast<std::int32_t>(index));
  const std::int32_t rule = ubrk_getRuleStatus(words.get());
  const std::int32_t begin = ubrk_previous(words.get());
  if (U_FAILURE(status) || begin < 0 || end <= begin)
    return {notFound, kCFStringTokenizerTokenNone};
  return {{static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)},
          tokenTypeOfStatus(rule, units.substr(static_cast<std::size_t>(begin),
                                               static_cast<std::size_t>(end - begin)))};
}

WordToken tokenByICU(std::string_view units, std::size_t index) {
  return tokenByICU(std::u16string(units.begin(), units.end()), index);
}

template <class Units>
WordToken tokenByRules(Units units, std::size_t index) {
  Boundaries<Units> boundaries(units);
  const NSRange range = boundaries.tokenAt(index);
  const std::int32_t status = boundaries.statusOf(range);
  if (boundaries.needsICU()) return tokenByICU(units, index);
  return {range, tokenTypeOfStatus(status, {})};
}

/// Calls `find` with the units of the range and the index in them.
template <class Find>
WordToken findToken(const NSString& string, NSRange range, std::size_t index, const Find& find) {
  if (range.length == 0 || index < range.location || index - range.location > range.length) {
    return {notFound, kCFStringTokenizerTokenNone};
  }
  // The end belongs to the last token.
  const std::size_t place = (std::min)(index - range.location, range.length - 1);
  WordToken token = withUnits(
      string, [&](auto units) { return find(units.substr(range.location, range.length), place); });
  if (token.range.location != NSNotFound) token.range.location += range.location;
  return token;
}

}  // namespace

WordToken wordTokenAtIndex(const NSString& string, NSRange range, std::size_t index) {
  return findToken(string, range, index,
                   [](auto units, std::size_t place) { return tokenByRules(units, place); });
}

WordToken wordTokenAtIndexByICU(const NSString& string, NSRange range, std::size_t index) {
  return findToken(string, range, index,
                   [](auto units, std::size_t place) { return tokenByICU(units, place); });
}

}  // namespace zeb::detail
