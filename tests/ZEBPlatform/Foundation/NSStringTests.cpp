#include <ZEBPlatform/Foundation.h>

#include <random>

#include "NoMemory.h"
#include "Support/Support.h"

namespace zeb::test {

TEST(NSString, KeepsASCIIAsBytesAndOtherTextAsUnits) {
  // clang-format off
  const std::pair<std::string, std::u16string> cases[] = {
      {"", u""}, {"plain \x7F", u"plain \x7F"}, {"\xC2\x80", u"\x80"},
      {"na\xC3\xAFve", u"na\u00EFve"}, {"\xE2\x82\xAC", u"\u20AC"},
      {"\xF0\x9F\x98\x80!", u"\U0001F600!"}, {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"}};
  // clang-format on
  for (const auto& [utf8, units] : cases) {
    const bool isASCII = utf8.size() == units.size();
    for (const NSString& string :
         {NSString(utf8), NSString(units), NSString::stringWithUTF8(utf8)}) {
      EXPECT_TRUE(string == NSString(utf8) && string.hash() == NSString(utf8).hash()) << utf8;
      EXPECT_TRUE(string.utf8() == utf8 && string.utf16() == units) << utf8;
      EXPECT_TRUE(string.length() == units.size() && string.isWellFormed()) << utf8;
      EXPECT_EQ(string.isASCII(), isASCII) << utf8;
      EXPECT_TRUE(isASCII ? string.asciiView() == utf8 : string.utf16View() == units) << utf8;
    }
  }
  // A single unit beyond ASCII is noticed wherever it stands.
  for (std::size_t place = 0; place < 20; ++place) {
    const std::string text = std::string(20, 'x').replace(place, 1, "\xC3\xA9");
    EXPECT_TRUE(!NSString(text).isASCII() && NSString(text).utf8() == text) << text;
  }
}

TEST(NSString, ReplacesMalformedUTF8) {
  // clang-format off
  const std::pair<std::string_view, std::u16string_view> cases[] = {
      {"\x80", u"\uFFFD"}, {"a\xFF\xFEz", u"a\uFFFD\uFFFDz"}, {"\xC0\xAF", u"\uFFFD\uFFFD"},
      {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"}, {"\xF0\x80\x80\xAF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"}, {"\xE2\x82", u"\uFFFD"},
      {"\xE2\x82x", u"\uFFFDx"}, {"\xF0\x9F\x98", u"\uFFFD"}, {"\xC3\xC3\xA9", u"\uFFFD\u00E9"},
      {"\x61\xF1\x80\x80\xE1\x80\xC2\x62\x80\x63\x80\xBF\x64",
       u"a\uFFFD\uFFFD\uFFFD\u0062\uFFFD\u0063\uFFFD\uFFFD\u0064"}};
  // clang-format on
  for (const auto& [bytes, units] : cases) {
    EXPECT_EQ(NSString(bytes).utf16(), units);
    EXPECT_TRUE(NSString::stringWithUTF8(bytes).isNil());
  }
  EXPECT_TRUE(NSString::stringWithUTF8("\xED\xA0\x80").isNil()) << "a surrogate is no scalar";
}

TEST(NSString, KeepsLoneSurrogates) {
  for (const std::u16string units :
       {u"\xD83D", u"\xDE00", u"\xDE00\xD83D", u"a\xD83Dz", u"\xD83D\xD83D\xDE00"}) {
    const NSString string{std::u16string_view(units)};
    EXPECT_TRUE(string.utf16View() == units && !string.isWellFormed());
    EXPECT_EQ(NSString::stringWithFormat("%@", string).utf16(), units);
    EXPECT_EQ(NSArray{string}.componentsJoinedByString("").utf16(), units);
  }
  NSMutableString pair(NSString(std::u16string_view(u"a\xD83D")));
  EXPECT_EQ(pair.utf8(), "a\xED\xA0\xBD");
  pair.appendString(NSString(std::u16string_view(u"\xDE00")));
  EXPECT_TRUE(pair.isWellFormed() && pair == "a\xF0\x9F\x98\x80");
}

TEST(NSString, ComparesAndSearchesByUnits) {
  using Case = std::tuple<NSString, NSString, NSComparisonResult, bool, bool, std::size_t>;
  const Case cases[] = {
      {"abcabc", "abc", NSOrderedDescending, true, true, 0},
      {"abc", "abc", NSOrderedSame, true, true, 0},
      {"abc", "abcd", NSOrderedAscending, false, false, NSNotFound},
      {"xabcx", "abc", NSOrderedDescending, false, false, 1},
      {"\xC3\xA9t\xC3\xA9", "t", NSOrderedDescending, false, false, 1},
      {"\xC3\xA9t\xC3\xA9", "\xC3\xA9", NSOrderedDescending, true, true, 0},
      {"plain", "\xC3\xA9", NSOrderedAscending, false, false, NSNotFound},
      {"a\xC3\xA9", "a", NSOrderedDescending, true, false, 0},
      // By units, not by scalars: a surrogate sorts before U+FF5E.
      {"\xF0\x9F\x98\x80", "\xEF\xBD\x9E", NSOrderedAscending, false, false, NSNotFound}};
  for (const auto& [plain, part, order, prefix, suffix, place] : cases) {
    NSMutableString wide("\xE2\x82\xAC"_ns);  // holds ASCII in 16-bit units, too
    wide.appendString(plain).deleteCharactersInRange({0, 1});
    for (const NSString& text : {plain, NSString(NSMutableString(plain)), NSString(wide)}) {
      SCOPED_TRACE(text.utf8() + " and " + part.utf8());
      EXPECT_TRUE(text.compare(part) == order && part.compare(text) == -order);
      EXPECT_TRUE((text < part) == (order < 0) && (text == part) == (order == 0));
      EXPECT_TRUE(text.hasPrefix(part) == prefix && text.hasSuffix(part) == suffix);
      EXPECT_EQ(text.rangeOfString(part).location, place);
      EXPECT_EQ(text.containsString(part), place != NSNotFound);
    }
  }
}

TEST(NSString, FindsLongPartsInLinearTime) {
  std::mt19937 random(1);
  for (int round = 0; round < 3'000; ++round) {
    // Two letters make texts with many periods.
    std::string text, part;
    for (std::size_t length = random() % 200; length > 0; --length) text += "ab"[random() % 8 == 0];
    for (std::size_t length = 1 + random() % 40; length > 0; --length) {
      part += part.size() % 5 == 4 ? part[part.size() / 2] : "ab"[random() % 8 == 0];
    }
    const std::size_t place = text.find(part);
    const std::size_t expected = place == text.npos ? NSNotFound : place;
    EXPECT_EQ(NSString(text).rangeOfString(part).location, expected) << text << " " << part;
    EXPECT_EQ(NSString(text + "\u20AC").rangeOfString(part).location, expected);
  }
  // Comparing at each place would take hours.
  const std::string many(4'000'000, 'a');
  EXPECT_FALSE(NSString(many).containsString(many.substr(0, 2'000'000) + "b"));
  EXPECT_FALSE(NSString(many).containsString("b" + many.substr(0, 2'000'000)));
}

TEST(NSString, IsReadWithoutMemory) {
  const NSString text("gr\xC3\xBC\xC3\x9F dich");
  const NSString part("dich");
  const NSDictionary dictionary{{text, 1}};
  const NoMemory noMemory;
  EXPECT_TRUE(text.hasSuffix(part) && !text.hasPrefix(part) && part.compare(text) < 0);
  EXPECT_TRUE(text.rangeOfString(part) == (NSRange{5, 4}) && text.hash() != part.hash());
  EXPECT_TRUE(dictionary.find("gr\xC3\xBC\xC3\x9F dich") && !dictionary.find("gr\xC3\xBC"));
}

TEST(NSString, CutsAndJoins) {
  for (const NSString& text : {"0123456789"_ns, "01234\xC3\xA9\x36\x37\x38\x39"_ns}) {
    EXPECT_TRUE(text.substringWithRange({2, 3}) == "234" && text.substringWithRange({10, 0}) == "");
    EXPECT_TRUE(text.substringFromIndex(6) == "6789" && text.substringToIndex(3).isASCII());
    EXPECT_EQ(text.substringToIndex(5).stringByAppendingString(text.substringFromIndex(5)), text);
    NSMutableString copy(text);
    for (const NSRange range : {NSRange{11, 0}, {10, 1}, {0, 11}, {5, SIZE_MAX}, {SIZE_MAX, 1}}) {
      EXPECT_EQ(raisedName([&] { (void)text.substringWithRange(range); }), NSRangeException);
      EXPECT_EQ(raisedName([&] { copy.deleteCharactersInRange(range); }), NSRangeException);
    }
    EXPECT_EQ(raisedName([&] { (void)text.substringFromIndex(11); }), NSRangeException);
    EXPECT_EQ(raisedName([&] { text.characterAtIndex(10); }), NSRangeException);
  }
  EXPECT_TRUE("a"_ns + "b" + std::string("c") == "abc" && "x" + NSString() + "y"_ns == "xy");
  EXPECT_TRUE("\xC3\xA9" + "a"_ns == "\xC3\xA9\x61" && (NSString() + NSString()) == "");
  const NSArray pieces{"", "a", "", "\xC3\xA9", ""};
  EXPECT_EQ(pieces.componentsJoinedByString("::"), "::a::::\xC3\xA9::");
  EXPECT_EQ("::a::::\xC3\xA9::"_ns.componentsSeparatedByString("::"), pieces);
  EXPECT_EQ("abc"_ns.componentsSeparatedByString(""), NSArray{"abc"});
  EXPECT_EQ(""_ns.componentsSeparatedByString("::"), NSArray{""});
}

TEST(NSMutableString, ChangesInPlace) {
  NSMutableString text("start"_ns);
  const NSMutableString handle = text;
  text.appendString(" middle").appendUTF8(" end").appendFormat(" %d", 4).appendString(nullptr);
  EXPECT_EQ(handle, "start middle end 4");
  text.replaceCharactersInRange({6, 6}, "\xE2\x82\xAC");
  EXPECT_TRUE(handle == "start \xE2\x82\xAC end 4" && !handle.isASCII());
  text.appendString(text);
  EXPECT_EQ(handle.length(), 26u);
  text.setString("ascii");
  EXPECT_TRUE(handle == "ascii" && handle.copy().isASCII());
  (text += text).deleteCharactersInRange({0, 5});
  EXPECT_EQ(text.hash(), NSString("ascii").hash()) << "the hash follows the content";
}

}  // namespace zeb::test
