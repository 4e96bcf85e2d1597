#include <ZEBUtilities/Text.h>

#include "Support/Support.h"

namespace zeb::test {

using namespace std::string_view_literals;

TEST(NSStringZEBAdditions, Digits) {
  // clang-format off
  const struct { NSString text; bool onlyNumbers, onlyHexNumbers; std::uint64_t value; } cases[] = {
      {nullptr, false, false, 0}, {"", false, false, 0}, {"123", true, true, 0x123},
      {"12a", false, true, 0x12A}, {"deadBEEF", false, true, 0xDEADBEEF},
      {"0x1F", false, false, 0}, {"1Fz9", false, false, 31}, {"ff", false, true, 255},
      {"g1", false, false, 0}, {" 1", false, false, 0},
      {"FFFFFFFFFFFFFFFFF", false, true, UINT64_MAX},
      {"123456789ABCDEF01", false, true, 0x23456789ABCDEF01},
      {u"\u0661\u0662\u0663"sv, true, false, 0}, {u"\U0001D7CE\U0001D7D7"sv, true, false, 0},
      {u"a\uFF11"sv, false, false, 10}, {u"1\xD835"sv, false, false, 1},
      {u"\xDFCE"sv, false, false, 0}};
  // clang-format on
  for (const auto& [text, onlyNumbers, onlyHexNumbers, value] : cases) {
    EXPECT_EQ(zeb_containsOnlyNumbers(text), onlyNumbers) << text;
    EXPECT_EQ(zeb_containsOnlyHexNumbers(text), onlyHexNumbers) << text;
    EXPECT_EQ(zeb_hexIntegerValue(text), value) << text;
  }
}

TEST(NSStringZEBAdditions, PrintableCharacters) {
  // clang-format off
  const std::pair<NSString, bool> cases[] = {
      {nullptr, false}, {"", false}, {" \n\t\x7F\x01", false}, {"a", true}, {" \n!", true},
      {u"\u200B\uFEFF"sv, false}, {u"\u00AD\u034F\u3164\uFE0F\u2066\u3000\u0378\uFFFE"sv, false},
      {u"\u00A0a"sv, true}, {u"\u00A0\u05D0"sv, true}, {u"\U0001F600"sv, true},
      {u"\U000E0041\U0001D173\U0001FFFF"sv, false}, {u"\xD83D"sv, false}, {u"\xD83D\x61"sv, false},
      {u"\xD83D\xD83D\xDE00"sv, true}, {u"\xDE00"sv, true}, {u"\xD83D\x61\xD83D"sv, false}};
  // clang-format on
  for (const auto& [text, isPrintable] : cases) {
    EXPECT_EQ(zeb_containsPrintableCharacters(text), isPrintable)
        << ::testing::PrintToString(text.utf16());
    const std::u16string units = text.utf16();
    EXPECT_EQ(containsPrintableCharacters(units.data(), units.size()), isPrintable);
  }
}

TEST(NSStringZEBAdditions, ComparingAndSearching) {
  EXPECT_TRUE(zeb_isCaseInsensitiveSameAsString(u"\u00C9T\u00C9"sv, u"e\u0301te\u0301"sv));
  EXPECT_FALSE(zeb_isCaseInsensitiveSameAsString("a", "b"));
  EXPECT_FALSE(zeb_isCaseInsensitiveSameAsString(nullptr, nullptr));
  EXPECT_TRUE(zeb_containsString("abc", "bc") && !zeb_containsString("abc", nullptr));
  EXPECT_TRUE(zeb_localizedCaseInsensitiveContainsString("ABC", "bc"));
  EXPECT_FALSE(zeb_localizedCaseInsensitiveContainsString("ABC", nullptr));
  EXPECT_TRUE(zeb_hasPrefixIgnoringCase(u"\u00C9t\u00E9"sv, u"\u00E9T"sv));
  EXPECT_FALSE(zeb_hasPrefixIgnoringCase("abc", "bc") || zeb_hasPrefixIgnoringCase("abc", "") ||
               zeb_hasPrefixIgnoringCase("abc", nullptr) ||
               zeb_hasPrefixIgnoringCase(nullptr, "a"));
  // clang-format off
  const struct { NSString text, search; bool matches; } cases[] = {
      {"John Smith", "jo sm", true}, {"John Smith", "jo xy", false}, {"a b", "b a", true},
      {"a", "  ", true}, {nullptr, " \t", false}, {"a", "", false}, {"a", nullptr, false},
      {"a\nb", "a\nb", true}, {"ab", "a\nb", false}};
  // clang-format on
  for (const auto& [text, search, matches] : cases) {
    EXPECT_EQ(zeb_matchesPartialsSearchString(text, search), matches) << text << '|' << search;
  }
}

TEST(NSStringZEBAdditions, RunsOfCharacters) {
  const Ref<NSCharacterSet> digits = NSCharacterSet::decimalDigitCharacterSet();
  constexpr NSRange notFound{NSNotFound, 0};
  // clang-format off
  const struct { NSString text; std::uint64_t options; NSRange range, expected; } cases[] = {
      {"ab123cd", 0, {0, 7}, {2, 3}}, {"ab123cd", NSBackwardsSearch, {0, 7}, {2, 3}},
      {"ab123cd", 0, {3, 1}, {3, 1}}, {"ab123cd", NSBackwardsSearch, {3, SIZE_MAX}, {3, 2}},
      {"ab123cd", NSAnchoredSearch, {0, 7}, notFound}, {"ab123cd", 0, {7, 1}, notFound},
      {"ab123cd", 0, {NSNotFound, 1}, notFound}, {"ab123cd", 0, {2, 0}, notFound},
      {"12ab34", 0, {0, 6}, {0, 2}}, {"12ab34", NSBackwardsSearch, {0, 6}, {4, 2}},
      {"12", NSBackwardsSearch, {0, 2}, {0, 2}}, {"abc", 0, {0, 3}, notFound},
      {u"a\U0001D7CEb"sv, 0, {0, 4}, {1, 0}},
      {u"a\U0001D7CEb"sv, NSBackwardsSearch, {0, 4}, {2, 0}}, {nullptr, 0, {0, 1}, notFound}};
  // clang-format on
  for (const auto& [text, options, range, expected] : cases) {
    EXPECT_EQ(zeb_rangeOfCharactersFromSet(text, digits, options, range), expected) << text;
  }
  EXPECT_EQ(zeb_rangeOfCharactersFromSet("a1", digits), (NSRange{1, 1}));
  EXPECT_EQ(zeb_rangeOfCharactersFromSet("a1", nullptr), notFound);
}

TEST(NSStringZEBAdditions, CodePointsAndDigests) {
  // clang-format off
  const std::pair<NSString, std::size_t> lengths[] = {
      {nullptr, 0}, {"abc", 3}, {u"e\u0301"sv, 1}, {u"\U0001F600\u00E9"sv, 2},
      {u"\xD83D\xD83D\xDE00\xDE00"sv, 3}};
  // clang-format on
  for (const auto& [text, length] : lengths) EXPECT_EQ(zeb_lengthInCodePoints(text), length);
  EXPECT_EQ(zeb_SHA1HashAsHexStringValue("abc"), "a9993e364706816aba3e25717850c26c9cd0d89d");
  EXPECT_TRUE(zeb_SHA1HashAsHexStringValue(nullptr).isNil());
}

TEST(NSStringZEBAdditions, Trimming) {
  // clang-format off
  const struct { NSString text, trimmed, withoutLeading, withoutTrailing, nonbreaking; } cases[] = {
      {"   ", "", "", "", u"\u00A0"sv},
      {" a  \n b\t", "a  \n b", "a  \n b\t", " a  \n b", u"\u00A0a\u00A0b\u00A0"sv},
      {u"\u3000\u00E9\u2028"sv, u"\u00E9"sv, u"\u00E9\u2028"sv, u"\u3000\u00E9"sv,
       u"\u00A0\u00E9\u00A0"sv},
      {u"\U0001F600\xD83D \xDE00"sv, u"\U0001F600\xD83D \xDE00"sv, u"\U0001F600\xD83D \xDE00"sv,
       u"\U0001F600\xD83D \xDE00"sv, u"\U0001F600\xD83D\u00A0\xDE00"sv},
      {u"a\v\x85\u2029\u200B"sv, u"a\v\x85\u2029\u200B"sv, u"a\v\x85\u2029\u200B"sv,
       u"a\v\x85\u2029\u200B"sv, u"a\u00A0\u200B"sv},
      {"", "", "", "", ""}, {"ab", "ab", "ab", "ab", "ab"},
      {nullptr, nullptr, nullptr, nullptr, nullptr}};
  // clang-format on
  for (const auto& [text, trimmed, withoutLeading, withoutTrailing, nonbreaking] : cases) {
    EXPECT_EQ(zeb_stringByTrimmingWhitespace(text), trimmed);
    EXPECT_EQ(zeb_stringByTrimmingLeadingWhitespace(text), withoutLeading);
    EXPECT_EQ(zeb_stringByTrimmingTrailingWhitespace(text), withoutTrailing);
    EXPECT_EQ(zeb_stringByConvertingWhitespaceToNonbreaking(text), nonbreaking);
    EXPECT_EQ(isNotEmptyAfterTrimmingWhitespace(text), trimmed.length() > 0);
    EXPECT_EQ(zeb_rejectEmptyStrippedStringsBlock()(text), trimmed.length() > 0);
    for (const auto trim :
         {stringValue, zeb_stringByTrimmingWhitespace, zeb_stringByTrimmingLeadingWhitespace,
          zeb_stringByTrimmingTrailingWhitespace, zeb_stringByTrimmingTrailingSlash,
          zeb_stringByTrimmingLeadingOctothorpe, zeb_stringByConvertingWhitespaceToNonbreaking}) {
      const NSString result = trim(text);
      EXPECT_TRUE(text.isNil() || result != text || &result.text() == &text.text())
          << "the text itself, if nothing changes";
    }
  }
  EXPECT_TRUE(zeb_rejectEmptyStrippedStringsBlock() == zeb_rejectEmptyStrippedStringsBlock());
  EXPECT_EQ(zeb_stringByTrimmingTrailingSlash("/a//"), "/a/");
  EXPECT_EQ(zeb_stringByTrimmingLeadingOctothorpe("##a#"), "#a#");
  const NSString spaces(std::string(1'000'000, ' '));
  EXPECT_EQ(zeb_stringByConvertingWhitespaceToNonbreaking(spaces), u"\u00A0"sv);
}

TEST(NSStringZEBAdditions, WordRanges) {
  constexpr NSRange notFound{NSNotFound, 0};
  const NSString longWord(std::string(100, 'x'));
  // clang-format off
  const struct { NSString text; std::ptrdiff_t index; NSRange word, withUnderscores; } cases[] = {
      {"one two", 0, {0, 3}, {0, 3}}, {"one two", 3, notFound, notFound},
      {"one two", 4, {4, 3}, {4, 3}}, {"one two", 7, {4, 3}, {4, 3}},
      {"one two", 8, notFound, notFound}, {"one two", -1, notFound, notFound},
      {"one ", 4, notFound, notFound}, {"", 0, notFound, notFound},
      {nullptr, 0, notFound, notFound}, {"don't", 4, {0, 5}, {0, 5}},
      {"42", 0, notFound, notFound}, {"a_b_c", 4, {0, 5}, {0, 5}}, {"__", 0, {0, 2}, {0, 2}},
      {"_", 0, notFound, {0, 1}}, {" _ ", 1, notFound, {1, 1}},
      {u"\u4E2D_\u6587"sv, 1, notFound, {0, 3}}, {u"\u4E2D__\u6587 "sv, 0, {0, 1}, {0, 4}},
      {u"abc\u200F"sv, 3, {0, 4}, {0, 4}}, {u"abc\u200F"sv, 4, {0, 4}, {0, 4}},
      {u"abc\u2067\u202B x"sv, 4, {0, 5}, {0, 5}}, {u"\u200F\u200F"sv, 1, notFound, notFound},
      {u"\u05E9\u05DC\u05D5\u05DD!"sv, 2, {0, 4}, {0, 4}}, {longWord, 50, {30, 40}, {0, 100}},
      {longWord, 0, {0, 20}, {0, 100}}, {longWord, 100, {80, 20}, {0, 100}},
      {u"\U0001F600a\xD83D"sv, 2, {2, 1}, {2, 1}}, {u"\U0001F600a\xD83D"sv, 1, notFound, notFound}};
  // clang-format on
  for (const auto& [text, index, word, withUnderscores] : cases) {
    EXPECT_EQ(wordRangeForIndex(text, index), word) << text << ' ' << index;
    EXPECT_EQ(wordRangeIncludingUnderscoreForIndex(text, index), withUnderscores)
        << text << ' ' << index;
  }
  for (const NSRange range : {NSRange{NSNotFound, 0}, {4, 1}, {2, SIZE_MAX}}) {
    EXPECT_EQ(_zeb_wordRangeExpandRight("a_b", range), range);
  }
  EXPECT_EQ(_zeb_wordRangeExpandLeft("a_b", {4, 1}), (NSRange{4, 1}));
  EXPECT_EQ(_zeb_wordRangeExpandLeft("a_b", {2, 1}), (NSRange{0, 3}));

  NSMutableString names;
  for (int count = 0; count < 200'000; ++count) names.appendString(u"\u00E9\u4E2D_"sv);
  EXPECT_EQ(wordRangeIncludingUnderscoreForIndex(names, 300'000), (NSRange{0, 600'000}));
}

}  // namespace zeb::test
