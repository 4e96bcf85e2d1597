#include <ZEBPlatform/Text.h>

#include "Support/Support.h"

namespace zeb::test {

using namespace std::string_view_literals;

constexpr NSRange notFound{NSNotFound, 0};
constexpr std::uint64_t anchored = NSAnchoredSearch;
constexpr std::uint64_t backwards = NSBackwardsSearch;
constexpr std::uint64_t anyCase = NSCaseInsensitiveSearch;
constexpr std::uint64_t anyMarks = NSDiacriticInsensitiveSearch;

TEST(StringServices, SearchingForText) {
  // clang-format off
  const struct { NSString text, part; std::uint64_t options; NSRange expected; } cases[] = {
      {"abcabc", "bc", 0, {1, 2}}, {"abcabc", "bc", backwards, {4, 2}},
      {"abcabc", "bc", anchored, notFound}, {"abcabc", "ab", anchored, {0, 2}},
      {"abcabc", "bc", anchored | backwards, {4, 2}},
      {"abcabc", "ab", anchored | backwards, notFound}, {"abcabc", "BC", 0, notFound},
      {"abcabc", "BC", anyCase, {1, 2}}, {"", "a", 0, notFound}, {"a", "", 0, notFound},
      {nullptr, "a", 0, notFound}, {"a", nullptr, 0, notFound}, {"aaab", "aab", 0, {1, 3}},
      {u"Stra\u00DFe"sv, "STRASSE", anyCase, {0, 6}}, {u"Stra\u00DFe"sv, "as", anyCase, notFound},
      {u"x\u00E9"sv, u"e\u0301"sv, 0, {1, 1}}, {u"xe\u0301"sv, u"\u00E9"sv, 0, {1, 2}},
      {u"xe\u0301"sv, u"\u00E9"sv, NSLiteralSearch, notFound}, {u"xe\u0301e"sv, "e", 0, {3, 1}},
      {u"xe\u0301e"sv, "e", NSLiteralSearch, {1, 1}},
      {u"xe\u0301e"sv, "E", anyMarks | anyCase, {1, 2}},
      {u"q\u0323\u0307"sv, u"q\u0307\u0323"sv, 0, {0, 3}},
      {u"\u0301"sv, u"\u0301"sv, anyMarks, notFound},
      {u"\u212A\u00C5"sv, u"k\u212B"sv, anyCase, {0, 2}},
      {u"a\U00010400"sv, u"\U00010428"sv, anyCase, {1, 2}},
      {u"a\U00010400"sv, u"\U00010428"sv, anyCase | NSLiteralSearch, {1, 2}},
      {u"a\xD801\xDC00"sv, u"\xDC00"sv, 0, notFound},
      {u"\xDC00\xD801"sv, u"\xD801"sv, anyCase, {1, 1}}};
  // clang-format on
  for (const auto& [text, part, options, expected] : cases) {
    EXPECT_EQ(rangeOfString(text, part, options), expected) << text << ' ' << part;
  }
  EXPECT_EQ(rangeOfString("abcabc", "abc", 0, {1, 5}), (NSRange{3, 3}));
  EXPECT_EQ(rangeOfString("abcabc", "abc", 0, {1, 4}), notFound);
  EXPECT_EQ(raisedName([] { rangeOfString("abc", "b", 0, {1, SIZE_MAX}); }), NSRangeException);
  EXPECT_EQ(raisedName([] { rangeOfString("abc", "b", 0, {4, 0}); }), NSRangeException);
}

TEST(StringServices, SearchingAgreesWithASimpleSearch) {
  std::mt19937 random(3);
  for (int round = 0; round < 3000; ++round) {
    std::string text, part;
    for (std::size_t count = random() % 20; count > 0; --count) text += "ab"[random() % 2];
    for (std::size_t count = 1 + random() % 5; count > 0; --count) part += "ab"[random() % 2];
    const auto rangeAt = [&](std::size_t place) {
      return place == text.npos ? notFound : NSRange{place, part.size()};
    };
    // A character outside ASCII behind the text selects the other implementation.
    for (const NSString& stored : {NSString(text), NSString(text + "\xE2\x82\xAC")}) {
      for (const std::uint64_t options :
           {std::uint64_t{0}, anyCase, std::uint64_t{NSLiteralSearch}}) {
        EXPECT_EQ(rangeOfString(stored, part, options), rangeAt(text.find(part)));
        EXPECT_EQ(rangeOfString(stored, part, options | backwards), rangeAt(text.rfind(part)));
      }
    }
  }
}

TEST(StringServices, TheCaseOfTheLetterIFollowsTheLocale) {
  const Ref<NSLocale> turkish = NSLocale::localeWithLocaleIdentifier("tr_TR");
  const auto contains = [&](const NSString& text, const NSString& part) {
    return rangeOfString(text, part, anyCase, {0, text.length()}, turkish).location == 0;
  };
  EXPECT_TRUE(contains(u"\u0130zmir"sv, "izm") && contains("ISPARTA", u"\u0131sp"sv));
  EXPECT_FALSE(contains("ISPARTA", "isp"));
  EXPECT_EQ(uppercaseStringWithLocale("izmir", turkish), NSString(u"\u0130ZM\u0130R"sv));
  EXPECT_EQ(lowercaseStringWithLocale("ISPARTA", turkish), NSString(u"\u0131sparta"sv));

  EXPECT_TRUE(localizedCaseInsensitiveContainsString("ISPARTA", "isp"));
  NSLocale::setCurrentLocale(turkish);
  EXPECT_FALSE(localizedCaseInsensitiveContainsString("ISPARTA", "isp"));
  EXPECT_TRUE(localizedCaseInsensitiveContainsString("ISPARTA", "parta"));
  NSLocale::setCurrentLocale(nullptr);
  EXPECT_TRUE(localizedStandardContainsString(u"Caf\u00C9"sv, "cafe"));
  EXPECT_FALSE(localizedCaseInsensitiveContainsString(u"Caf\u00C9"sv, "cafe"));
  EXPECT_FALSE(localizedCaseInsensitiveContainsString("a", ""));
}

TEST(StringServices, ComparingWithoutCase) {
  // clang-format off
  const struct { NSString left, right; NSComparisonResult expected; } cases[] = {
      {"Hello", "hELLO", NSOrderedSame}, {"a", "B", NSOrderedAscending},
      {"ab", "A", NSOrderedDescending}, {u"\u00C9t\u00E9"sv, u"e\u0301TE\u0301"sv, NSOrderedSame},
      {u"\u00DF"sv, "SS", NSOrderedSame}, {nullptr, "", NSOrderedAscending},
      {nullptr, nullptr, NSOrderedSame}, {"", "", NSOrderedSame},
      {u"\xD800"sv, u"\xD800"sv, NSOrderedSame}, {u"\xD800"sv, u"\xD801"sv, NSOrderedAscending}};
  // clang-format on
  for (const auto& [left, right, expected] : cases) {
    EXPECT_EQ(caseInsensitiveCompare(left, right), expected) << left << ' ' << right;
    EXPECT_EQ(caseInsensitiveCompare(right, left), -expected) << left << ' ' << right;
  }
}

TEST(StringServices, SearchingForCharacters) {
  const Ref<NSCharacterSet> digits = NSCharacterSet::decimalDigitCharacterSet();
  const Ref<NSCharacterSet> upper = NSCharacterSet::characterSetWithCharactersInString("AB");
  // clang-format off
  const struct {
    NSString text;
    Ref<NSCharacterSet> set;
    std::uint64_t options;
    NSRange expected;
  } cases[] = {
      {"ab12c", digits, 0, {2, 1}}, {"ab12c", digits, backwards, {3, 1}},
      {"ab12c", digits, anchored, notFound}, {"1ab12", digits, anchored | backwards, {4, 1}},
      {"ab12c", upper, 0, notFound}, {"xab", upper, anyCase, {1, 1}},
      {u"a\U0001D7CEb"sv, digits, 0, {1, 2}}, {u"a\U0001D7CEb"sv, digits, backwards, {1, 2}},
      {u"a\xD835"sv, digits->invertedSet(), backwards, {1, 1}},
      {u"\U0001D7CE"sv, digits->invertedSet(), backwards, notFound},
      {nullptr, digits, 0, notFound}, {"1", nullptr, 0, notFound}};
  // clang-format on
  for (const auto& [text, set, options, expected] : cases) {
    EXPECT_EQ(rangeOfCharacterFromSet(text, set, options), expected) << text;
  }
  EXPECT_EQ(rangeOfCharacterFromSet("1a1", digits, 0, {1, 2}), (NSRange{2, 1}));
  EXPECT_EQ(raisedName([&] { rangeOfCharacterFromSet("1", digits, 0, {NSNotFound, 1}); }),
            NSRangeException);
}

TEST(StringServices, TrimmingAndSeparating) {
  const Ref<NSCharacterSet> spaces = NSCharacterSet::whitespaceAndNewlineCharacterSet();
  const Ref<NSCharacterSet> faces =
      NSCharacterSet::characterSetWithCharactersInString(u"\U0001F600 "sv);
  const NSString plain("plain"), wide(u"\u00E9t\u00E9"sv);
  EXPECT_EQ(stringByTrimmingCharactersInSet(" \ta b\r\n", spaces), "a b");
  EXPECT_EQ(stringByTrimmingCharactersInSet(" \n", spaces), "");
  EXPECT_EQ(stringByTrimmingCharactersInSet(u"\u2003\u00E9 \u3000"sv, spaces), u"\u00E9"sv);
  EXPECT_EQ(stringByTrimmingCharactersInSet(u"\U0001F600x\U0001F601\U0001F600 "sv, faces),
            u"x\U0001F601"sv);
  EXPECT_EQ(&stringByTrimmingCharactersInSet(plain, spaces).text(), &plain.text());
  EXPECT_EQ(&stringByTrimmingCharactersInSet(wide, nullptr).text(), &wide.text());
  EXPECT_TRUE(stringByTrimmingCharactersInSet(nullptr, spaces).isNil());

  EXPECT_EQ(componentsSeparatedByCharactersInSet(" a  b", spaces), (NSArray{"", "a", "", "b"}));
  EXPECT_EQ(componentsSeparatedByCharactersInSet("", spaces), NSArray{""});
  EXPECT_EQ(componentsSeparatedByCharactersInSet("a b", nullptr), NSArray{"a b"});
  EXPECT_EQ(componentsSeparatedByCharactersInSet(u"a\U0001F600\xD83D"sv, faces),
            (NSArray{"a", NSString(u"\xD83D"sv)}));
  EXPECT_TRUE(componentsSeparatedByCharactersInSet(nullptr, spaces).isNil());
}

TEST(StringServices, NormalizationForms) {
  // clang-format off
  const struct { std::u16string_view text, composed, decomposed, compatible; } cases[] = {
      {u"e\u0301", u"\u00E9", u"e\u0301", u"\u00E9"},
      {u"\u212B", u"\u00C5", u"A\u030A", u"\u00C5"}, {u"\uFB01x", u"\uFB01x", u"\uFB01x", u"fix"},
      {u"q\u0307\u0323", u"q\u0323\u0307", u"q\u0323\u0307", u"q\u0323\u0307"},
      {u"\u1112\u1161\u11AB", u"\uD55C", u"\u1112\u1161\u11AB", u"\uD55C"},
      {u"e\u0301\xD800", u"\u00E9\xD800", u"e\u0301\xD800", u"\u00E9\xD800"}};
  // clang-format on
  for (const auto& [text, composed, decomposed, compatible] : cases) {
    EXPECT_EQ(precomposedStringWithCanonicalMapping(text), composed);
    EXPECT_EQ(decomposedStringWithCanonicalMapping(text), decomposed);
    EXPECT_EQ(precomposedStringWithCompatibilityMapping(text), compatible);
    EXPECT_EQ(decomposedStringWithCompatibilityMapping(compatible),
              decomposedStringWithCanonicalMapping(compatible));
  }
  const NSString normal(u"\u00E9"sv), ascii("e");
  EXPECT_EQ(&precomposedStringWithCanonicalMapping(normal).text(), &normal.text());
  EXPECT_EQ(&decomposedStringWithCanonicalMapping(ascii).text(), &ascii.text());
  EXPECT_TRUE(precomposedStringWithCanonicalMapping(nullptr).isNil());
}

TEST(StringServices, UpperAndLowerCase) {
  EXPECT_EQ(uppercaseString(u"stra\u00DFe \U00010428\xD800"sv), u"STRASSE \U00010400\xD800"sv);
  EXPECT_EQ(lowercaseString(u"\u0391\u03A3 X"sv), u"\u03B1\u03C2 x"sv);
  EXPECT_EQ(capitalizedString(u"hELLO wOrld don't \u01C6x"sv), u"Hello World Don't \u01C5x"sv);
  EXPECT_EQ(uppercaseString("a-z!") + lowercaseString("A-Z!"), "A-Z!a-z!");
  const NSString upper("ABC"), digits(u"12\u20AC"sv);
  EXPECT_EQ(&uppercaseString(upper).text(), &upper.text());
  EXPECT_EQ(&lowercaseString(digits).text(), &digits.text());
  EXPECT_TRUE(uppercaseString(nullptr).isNil() && capitalizedString("").empty());
}

// Texts on which simple algorithms take quadratic time, so that this test would not end.
TEST(StringServices, HostileTextsTakeLinearTime) {
  constexpr std::size_t length = 500'000;
  const std::string as(length, 'a');
  EXPECT_EQ(rangeOfString(as, as.substr(length / 2) + "b", anyCase), notFound);
  EXPECT_EQ(rangeOfString(as + "\xE2\x82\xAC", "b" + as.substr(length / 2), backwards), notFound);
  std::u16string marks = u"e";
  for (std::size_t mark = 0; mark < length; ++mark) marks += mark % 2 ? u'\u0323' : u'\u0301';
  std::u16string sorted = u"\u1EB9";
  sorted.append(length / 2 - 1, u'\u0323').append(length / 2, u'\u0301');
  EXPECT_EQ(precomposedStringWithCanonicalMapping(std::u16string_view(marks)),
            std::u16string_view(sorted));
  EXPECT_EQ(caseInsensitiveCompare(std::u16string_view(marks), std::u16string_view(sorted)),
            NSOrderedSame);
}

}  // namespace zeb::test
