#include <IDN/Tables/NameprepTables.h>
#include <IDN/Tables/detail/CodePointIndex.h>

#include "Outcome.h"

namespace zeb::test {

std::string prepared(std::u32string_view text, std::int32_t capacity = XcodeMaxPreparedCodePoints) {
  return outcome<XcodeCodePoint>(Xcode_nameprepString32, text, capacity, nullptr);
}

TEST(Nameprep, AppliesItsStepsInOrder) {
  using Case = std::pair<std::u32string_view, const char*>;
  for (const auto& [text, expected] :
       {Case(U"A\u00ADB", "ab"), Case(U"Straße", "strasse"), Case(U"\u00AD", "!208"),
        Case(U"", "!208"), Case(U"İ", "i̇"), Case(U"ℌｅｌｌｏ ㌀", "hello アパート"),
        Case(U"\u212B", "å"), Case(U"豈", "豈"), Case(U"\U0001D7FF", "9"),
        Case(U"ﷺ", "صلى الله عليه وسلم"),
        // The order of marks, compositions that are blocked, and one that does not come back.
        Case(U"a\u0302\u0323", "ậ"), Case(U"a\u0315\u0300\u05AE\u0300b", "à֮\u0300\u0315b"),
        Case(U"\u0344", "\u0308\u0301"), Case(U"ᄀ\u0301ᅡ", "ᄀ\u0301ᅡ"), Case(U"각", "각"),
        // Directions.
        Case(U"ا1", "!203"), Case(U"1ا", "!203"), Case(U"אa", "!203"), Case(U"اaب", "!204"),
        Case(U"ا1ب", "ا1ب"), Case(U"\uE000", "!201"), Case(U"a\u200E", "!201")})
    EXPECT_EQ(prepared(text), expected) << expected;

  XcodeCodePoint result[8], offending = 0;
  std::int32_t length = 8;
  EXPECT_EQ(Xcode_nameprepString(u"a\uE000\uE001", 3, result, &length, &offending),
            XcodeProhibitedCharacter);
  EXPECT_EQ(offending, 0xE000u);
  EXPECT_EQ(Xcode_nameprepString(u"a\xD800", 2, result, &length, nullptr), XcodeUTF16Invalid);
  EXPECT_EQ(Xcode_nameprepString(u"", 0, result, &length, nullptr), XcodeBadArgument);
  // The upper half of the second number must not get lost in a look-up of compositions.
  for (const XcodeCodePoint outside : {std::uint64_t{0x110000}, std::uint64_t{1} << 32 | 'e'}) {
    const XcodeCodePoint text[] = {outside, 0x301, 0xE000};
    EXPECT_EQ(Xcode_nameprepString32(text, 3, result, &length, nullptr), XcodeCodePointRange);
  }
}

TEST(Nameprep, HasLimitsInEachStep) {
  const auto many = [](std::size_t count, std::u32string text) { return repeated(count, text); };
  EXPECT_EQ(prepared(many(256, U"a")), std::string(256, 'a'));
  EXPECT_EQ(prepared(many(257, U"a")) + prepared(many(257, U"\u00AD")), "!3!3");
  EXPECT_EQ(prepared(many(129, U"ß")), "!3");                             // mapped to two
  EXPECT_EQ(prepared(many(85, U"각")), repeated(85, std::string("각")));  // decomposed to three
  EXPECT_EQ(prepared(many(86, U"각")), "!207");
  EXPECT_EQ(prepared(many(15, U"ﷺ")), "!207");
  EXPECT_EQ(prepared({U"a\0b", 3}), "!202");
  EXPECT_EQ(prepared(U"abc", 3) + prepared(U"e\u0301bc", 3), "abcébc");
  EXPECT_EQ(prepared(U"abc", 2) + prepared(U"e\u0301bc", 2), "!3!3");
  // The most expensive order of marks.
  EXPECT_EQ(prepared(U"a" + many(127, U"\u0315\u0323")),
            "ạ" + repeated(126, std::string("\u0323")) + repeated(127, std::string("\u0315")));
}

TEST(Nameprep, LooksUpWhatTheTablesHave) {
  std::vector<unsigned> expected(detail::codePointLimit);
  const auto mark = [&](std::uint64_t first, std::uint64_t last, unsigned flag) {
    for (auto codePoint = first; codePoint <= last; ++codePoint) expected[codePoint] |= flag;
  };
  for (const auto& [first, last] : g_prohibitTable) mark(first, last, detail::isProhibited);
  for (const auto& [first, last] : g_lcatTable) mark(first, last, detail::isLeftToRight);
  for (const auto codePoint : g_randalcatTable) mark(codePoint, codePoint, detail::isRightToLeft);
  for (const auto& [codePoint, combiningClass] : g_canonicalTable) {
    mark(codePoint, codePoint, detail::hasClass);
    EXPECT_EQ(detail::canonicalClass(codePoint), combiningClass);
  }
  const unsigned compared =
      detail::isProhibited | detail::isLeftToRight | detail::isRightToLeft | detail::hasClass;
  for (std::uint64_t codePoint = 0; codePoint < expected.size(); ++codePoint)
    ASSERT_EQ(detail::flagsOf(codePoint) & compared, expected[codePoint]) << codePoint;
}

TEST(Nameprep, AgreesWithPythonOnAllCodePoints) {
  // The hashes were computed with Python's stringprep and unicodedata.ucd_3_2_0: FNV-1a over the
  // resulting code points, or the code and the prohibited code point. The text has each code point
  // in the place of its zero.
  const auto hashOfAll = [](std::vector<XcodeCodePoint> text) {
    XcodeCodePoint& tried = *std::ranges::find(text, XcodeCodePoint{0});
    std::uint64_t hash = 14695981039346656037u;
    const auto add = [&](XcodeCodePoint value) { hash = (hash ^ value) * 1099511628211u; };
    for (tried = 1; tried < 0x110000; ++tried) {
      if (tried >= 0xD800 && tried < 0xE000) continue;
      XcodeCodePoint result[32], offending = 0;
      std::int32_t length = 32;
      const XcodeResult code = Xcode_nameprepString32(
          text.data(), static_cast<std::int32_t>(text.size()), result, &length, &offending);
      if (code != XcodeOK) add(code);
      if (code == XcodeProhibitedCharacter) add(offending);
      if (code == XcodeOK) std::for_each(result, result + length, add);
    }
    return hash;
  };
  EXPECT_EQ(hashOfAll({0}), 0x264560626aea7936u);
  EXPECT_EQ(hashOfAll({0, 0x301, 0x323, 0x3099}), 0xe00dd6b3388c68e4u);
  EXPECT_EQ(hashOfAll({0x5D0, 0, 0x5D0}), 0x734f71e574b31d87u);
}

}  // namespace zeb::test
