// Uses the input as a text, a pattern and numbers, and calls everything that tests, cuts or
// searches texts. All ranges lie inside their texts, and the fast implementations agree with the
// general ones.

#include <ZEBPlatform/Text.h>
#include <ZEBPlatform/Text/detail/WordToken.h>
#include <ZEBUtilities/Text.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

/// Nothing, or a part of the text.
void requireInside(NSRange range, const NSString& text) {
  if (range.location == NSNotFound) {
    require(range.length == 0);
  } else {
    require(range.location <= text.length() && range.length <= text.length() - range.location);
  }
}

void checkTrimming(const NSString& text) {
  const NSString trimmed = zeb_stringByTrimmingWhitespace(text);
  require(zeb_stringByTrimmingLeadingWhitespace(zeb_stringByTrimmingTrailingWhitespace(text)) ==
          trimmed);
  require(isNotEmptyAfterTrimmingWhitespace(text) == !trimmed.empty());
  require(!zeb_containsPrintableCharacters(text) || !trimmed.empty());
  const std::u16string units = text.utf16();
  require(containsPrintableCharacters(units.data(), units.size()) ==
          zeb_containsPrintableCharacters(text));
  const NSString nonbreaking = zeb_stringByConvertingWhitespaceToNonbreaking(text);
  require(nonbreaking.length() <= text.length());
  require(zeb_stringByConvertingWhitespaceToNonbreaking(nonbreaking) == nonbreaking);
  const NSArray pieces =
      componentsSeparatedByCharactersInSet(text, NSCharacterSet::whitespaceCharacterSet());
  std::size_t length = pieces.count() - 1;
  for (const Value& piece : pieces) length += NSString(piece).length();
  require(length == text.length());
  (void)zeb_stringByTrimmingTrailingSlash(text);
  (void)zeb_stringByTrimmingLeadingOctothorpe(text);
}

void checkDigits(const NSString& text) {
  if (zeb_containsOnlyHexNumbers(text)) require(text.isASCII() && !text.empty());
  (void)zeb_containsOnlyNumbers(text);
  (void)zeb_hexIntegerValue(text);
  (void)zeb_dateFromStringFormattedLikeHTTPDate(text);
  (void)zeb_SHA1HashAsHexStringValue(text);
}

void checkForms(const NSString& text) {
  const NSString composed = precomposedStringWithCanonicalMapping(text);
  const NSString decomposed = decomposedStringWithCanonicalMapping(text);
  require(precomposedStringWithCanonicalMapping(decomposed) == composed);
  require(decomposedStringWithCanonicalMapping(composed) == decomposed);
  require(zeb_lengthInCodePoints(text) == zeb_lengthInCodePoints(decomposed));
  require(zeb_isCaseInsensitiveSameAsString(composed, decomposed));
  require(decomposedStringWithCompatibilityMapping(precomposedStringWithCompatibilityMapping(
              text)) == decomposedStringWithCompatibilityMapping(text));
  (void)uppercaseString(text);
  (void)lowercaseString(text);
  (void)capitalizedString(text);
}

void checkSearching(const NSString& text, const NSString& part, std::uint64_t options,
                    NSRange range) {
  const NSRange found = rangeOfString(text, part, options);
  requireInside(found, text);
  requireInside(rangeOfString(text, part, options, range), text);
  if (found.location != NSNotFound) {
    const NSString match = text.substringWithRange(found);
    require(rangeOfString(match, part, options).length > 0);
  }
  const NSRange literal =
      rangeOfString(text, part, NSLiteralSearch | (options & NSBackwardsSearch));
  if (literal.location != NSNotFound) require(text.substringWithRange(literal) == part);
  if (zeb_hasPrefixIgnoringCase(text, part)) {
    require(rangeOfString(text, part, NSCaseInsensitiveSearch).location == 0);
  }
  (void)zeb_containsString(text, part);
  (void)zeb_matchesPartialsSearchString(text, part);
  (void)localizedStandardContainsString(text, part);

  const Ref<NSCharacterSet> set = NSCharacterSet::characterSetWithCharactersInString(part);
  const NSRange run = zeb_rangeOfCharactersFromSet(text, set, options, range);
  requireInside(run, text);
  for (std::size_t index = 0; index < run.length; ++index) {
    require(set->characterIsMember(text.characterAtIndex(run.location + index)));
  }
  requireInside(zeb_rangeOfCharactersFromSet(text, set, options, {range.length, SIZE_MAX}), text);
  (void)stringByTrimmingCharactersInSet(text, set);
}

void checkWords(const NSString& text, std::ptrdiff_t index) {
  for (const std::ptrdiff_t place : {index, index - 1, std::ptrdiff_t{0}, PTRDIFF_MIN}) {
    const NSRange word = wordRangeForIndex(text, place);
    requireInside(word, text);
    const NSRange joined = wordRangeIncludingUnderscoreForIndex(text, place);
    requireInside(joined, text);
    if (word.location != NSNotFound) {
      require(joined.location <= word.location && joined.length >= word.length);
    }
  }
  const NSRange whole{0, text.length()};
  const auto place = static_cast<std::size_t>(index);
  const auto own = detail::wordTokenAtIndex(text, whole, place);
  const auto icu = detail::wordTokenAtIndexByICU(text, whole, place);
  require(own.range == icu.range && own.type == icu.type);

  const auto tokenizer = CFStringTokenizerCreate(text, whole, kCFStringTokenizerUnitWordBoundary);
  std::size_t end = 0;
  while (CFStringTokenizerAdvanceToNextToken(tokenizer) != kCFStringTokenizerTokenNone) {
    const NSRange token = CFStringTokenizerGetCurrentTokenRange(tokenizer);
    require(token.location == end && token.length > 0);
    end += token.length;
  }
  require(end == text.length());
}

void checkExpression(const NSString& text, const NSString& pattern, std::uint64_t options) {
  const Ref<NSRegularExpression> expression =
      NSRegularExpression::regularExpressionWithPattern(pattern, options);
  if (!expression) return;
  for (const auto& match : expression->matchesInString(text, options, {0, text.length()})) {
    requireInside(match->range(), text);
  }
  (void)expression->stringByReplacingMatchesInString(text, options, {0, text.length()}, pattern);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 4) return 0;
  const std::uint64_t options = data[0];
  const bool isWide = data[1] & 1;
  const std::size_t partSize = std::min<std::size_t>(data[2], size - 4);
  const std::size_t number = data[3];
  const auto textOf = [&](const std::uint8_t* bytes, std::size_t length) {
    if (!isWide) return NSString(std::string_view(reinterpret_cast<const char*>(bytes), length));
    std::u16string units(length / 2, u'\0');
    if (!units.empty()) std::memcpy(units.data(), bytes, units.size() * 2);
    return NSString(std::u16string_view(units));
  };
  const NSString part = textOf(data + 4, partSize);
  const NSString text = textOf(data + 4 + partSize, size - 4 - partSize);
  const std::size_t location = text.empty() ? 0 : number % text.length();
  const std::size_t length = std::min<std::size_t>(number / 2, text.length() - location);

  checkTrimming(text);
  checkDigits(text);
  checkForms(text);
  checkSearching(text, part, options, {location, length});
  checkWords(text, static_cast<std::ptrdiff_t>(location));
  checkExpression(text, part, options);
  return 0;
}
