#include <ZEBPlatform/Text/detail/WordToken.h>
#include <ZEBUtilities/Text/NSString+ZEBWordRange.h>

#include <algorithm>

namespace zeb {

namespace {

constexpr NSRange notFound{NSNotFound, 0};
constexpr std::size_t reach = 20;

constexpr bool isDirectionalMark(char16_t unit) noexcept {
  return unit == u'\u200E' || unit == u'\u200F' || unit == u'\u061C' ||
         (unit >= u'\u202A' && unit <= u'\u202E') || (unit >= u'\u2066' && unit <= u'\u2069');
}

char16_t unitAt(const NSString& string, std::size_t index) noexcept {
  return string.isASCII() ? static_cast<char16_t>(string.asciiView()[index])
                          : string.utf16View()[index];
}

/// As `wordRangeForIndex`, for an index that is not negative.
NSRange wordRangeAt(const NSString& string, std::size_t index) {
  const std::size_t length = string.length();
  if (index > length) return notFound;
  if (index < length && !string.isASCII()) {
    while (isDirectionalMark(unitAt(string, index))) {
      if (index == 0) return notFound;
      --index;
    }
  }
  const std::size_t begin = index - (std::min)(index, reach);
  const std::size_t end = (std::min)(index + reach, length);
  const detail::WordToken token = detail::wordTokenAtIndex(string, {begin, end - begin}, index);
  const bool isWord = token.type == kCFStringTokenizerTokenNormal ||
                      (token.type & kCFStringTokenizerTokenHasSubTokensMask) != 0;
  return isWord ? token.range : notFound;
}

}  // namespace

NSRange wordRangeForIndex(const NSString& string, std::ptrdiff_t index) {
  return index < 0 ? notFound : wordRangeAt(string, static_cast<std::size_t>(index));
}

NSRange wordRangeIncludingUnderscoreForIndex(const NSString& string, std::ptrdiff_t index) {
  if (index < 0) return notFound;
  const auto place = static_cast<std::size_t>(index);
  NSRange range = wordRangeAt(string, place);
  if (range.location == NSNotFound) {
    if (place >= string.length() || unitAt(string, place) != u'_') return range;
    range = {place, 1};
  }
  return _zeb_wordRangeExpandRight(string, _zeb_wordRangeExpandLeft(string, range));
}

NSRange _zeb_wordRangeExpandLeft(const NSString& string, NSRange range) {
  // Each round takes the underscores and one word. A location past the end takes nothing.
  while (range.location != 0 && range.location <= string.length()) {
    std::size_t begin = range.location;
    while (begin > 0 && unitAt(string, begin - 1) == u'_') --begin;
    range = {begin, range.length + range.location - begin};
    if (begin == 0) break;
    const NSRange word = wordRangeAt(string, begin - 1);
    if (word.location >= begin) break;  // NSNotFound, too
    range = {word.location, range.length + begin - word.location};
  }
  return range;
}

NSRange _zeb_wordRangeExpandRight(const NSString& string, NSRange range) {
  const std::size_t length = string.length();
  // A range that overflows or begins past the end takes nothing.
  while (range.location <= length && range.length < length - range.location) {
    std::size_t end = range.location + range.length;
    while (end < length && unitAt(string, end) == u'_') ++end;
    range.length = end - range.location;
    const NSRange word = wordRangeAt(string, end);
    if (word.location == NSNotFound || word.location + word.length <= end) break;
    range.length = word.location + word.length - range.location;
  }
  return range;
}

}  // namespace zeb
