#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBUtilities/Text/NSString+ZEBEmoji.h>
#include <ZEBUtilities/Text/NSString+ZEBHTMLEntity.h>

#include <sstream>

#include "../../../fuzz/UnescapingOneByOne.h"
#include "Support/Support.h"

namespace zeb::test {
namespace {

NSString textOf(std::u16string_view units) { return NSString(units); }

TEST(HTMLEntities, NamesHaveTheirCodePoints) {
  // After each "=" follow the names of consecutive code points.
  std::istringstream names(
      "=A0 nbsp iexcl cent pound curren yen brvbar sect uml copy ordf laquo not shy reg macr deg "
      "plusmn sup2 sup3 acute micro para middot cedil sup1 ordm raquo frac14 frac12 frac34 iquest "
      "Agrave Aacute Acirc Atilde Auml Aring AElig Ccedil Egrave Eacute Ecirc Euml Igrave Iacute "
      "Icirc Iuml ETH Ntilde Ograve Oacute Ocirc Otilde Ouml times Oslash Ugrave Uacute Ucirc "
      "Uuml Yacute THORN szlig agrave aacute acirc atilde auml aring aelig ccedil egrave eacute "
      "ecirc euml igrave iacute icirc iuml eth ntilde ograve oacute ocirc otilde ouml divide "
      "oslash ugrave uacute ucirc uuml yacute thorn yuml =152 OElig oelig =160 Scaron scaron =178 "
      "Yuml =192 fnof =2C6 circ =2DC tilde =391 Alpha Beta Gamma Delta Epsilon Zeta Eta Theta "
      "Iota Kappa Lambda Mu Nu Xi Omicron Pi Rho =3A3 Sigma Tau Upsilon Phi Chi Psi Omega =3B1 "
      "alpha beta gamma delta epsilon zeta eta theta iota kappa lambda mu nu xi omicron pi rho "
      "sigmaf sigma tau upsilon phi chi psi omega =3D1 thetasym upsih =3D6 piv =2002 ensp emsp "
      "=2009 thinsp =200C zwnj zwj lrm rlm =2013 ndash mdash =2018 lsquo rsquo sbquo =201C ldquo "
      "rdquo bdquo =2020 dagger Dagger bull =2026 hellip =2030 permil =2032 prime Prime =2039 "
      "lsaquo rsaquo =203E oline =2044 frasl =20AC euro =2111 image =2118 weierp =211C real =2122 "
      "trade =2135 alefsym =2190 larr uarr rarr darr harr =21B5 crarr =21D0 lArr uArr rArr dArr "
      "hArr =2200 forall =2202 part exist =2205 empty =2207 nabla isin notin =220B ni =220F prod "
      "=2211 sum minus =2217 lowast =221A radic =221D prop infin =2220 ang =2227 and or cap cup "
      "int =2234 there4 =223C sim =2245 cong =2248 asymp =2260 ne equiv =2264 le ge =2282 sub sup "
      "nsub =2286 sube supe =2295 oplus =2297 otimes =22A5 perp =22C5 sdot =2308 lceil rceil "
      "lfloor rfloor =2329 lang rang =25CA loz =2660 spades =2663 clubs =2665 hearts diams");
  std::string name;
  std::size_t count = 0;
  for (char16_t unit = 0; names >> name;) {
    if (name[0] == '=') {
      unit = static_cast<char16_t>(std::stoul(name.substr(1), nullptr, 16));
      continue;
    }
    const char16_t units[] = {unit++, 0};
    EXPECT_EQ(zeb_stringByUnescapingHTMLEntities("&" + name + ";"), textOf(units)) << name;
    ++count;
  }
  EXPECT_EQ(count, 248u);
}

TEST(HTMLEntities, UnescapingFollowsTheRules) {
  const std::string zeros(1000, '0');
  // Names that are unknown, characters that may not be used, digits that are none, numbers that
  // saturate, references without an end.
  const std::string unchanged =
      "&Lt;&APOS;&Nbsp;&AMp;&thetasyma;&thetasy;&a;&l\u00E9t;&31;&#31;&#9;&#0;&#xD800;&#xDFFF;"
      "&#x110000;&#12a;&#xg;&#;&#x;&#X;&# 65;&#-65;&#+65;&#x "
      "41;&#4294967361;&#18446744073709551681;"
      "&#\u0666\u0665;&#65\u00E9;&;&&lt";
  const std::pair<std::string, std::string> cases[] = {
      {"&lt;&LT;&gt;&GT;&amp;&AMP;&quot;&QUOT;&apos;", "<<>>&&\"\"'"},
      {"&#65;&#x41;&#X41;&#x1F600;&hellip;&#32;&#x7f;", "AAA😀… \x7f"},
      {"&#xD7FF;&#xE000;&#x10FFFF;", "\xED\x9F\xBF\xEE\x80\x80\xF4\x8F\xBF\xBF"},
      {"&#" + zeros + "65;&#x" + zeros + "41;&#x10000000000000041;", "AAA"},
      {"&#65٣;&#65𝟛;", "AA"},
      {"&amp;lt;&amp;amp;amp;&&lt;", "&lt;&amp;amp;&<"},
      {std::string("&lt\0;&\0lt;", 10), std::string("&lt\0;&\0lt;", 10)},
      {unchanged, unchanged}};
  for (const auto& [escaped, expected] : cases)
    EXPECT_EQ(zeb_stringByUnescapingHTMLEntities(escaped), NSString(expected));
  EXPECT_TRUE(zeb_stringByUnescapingHTMLEntities(nullptr).isNil());
  const NSMutableString receiver("& no reference;"_ns);
  zeb_stringByUnescapingHTMLEntities(receiver).appendString("!");
  EXPECT_EQ(receiver, "& no reference;");
}

TEST(HTMLEntities, RangesKeepTheirCharacters) {
  NSMutableString text{NSString("x&amp;y&lt;é")};
  const NSArray ranges{boxed(NSRange{0, 7}), "no range", boxed(NSRange{6, 5})};
  EXPECT_EQ(zeb_unescapeHTMLEntitiesAdjustingTextRanges(text, ranges),
            (NSArray{boxed(NSRange{0, 3}), "no range", boxed(NSRange{2, 2})}));
  EXPECT_EQ(text, "x&y<é");
  EXPECT_TRUE(zeb_unescapeHTMLEntitiesAdjustingTextRanges(text, nullptr).isNil());
  EXPECT_TRUE(
      zeb_unescapeHTMLEntitiesAdjustingTextRanges(NSMutableString(), ranges).isIdenticalTo(ranges));
  EXPECT_TRUE(zeb_unescapeHTMLEntitiesAdjustingTextRanges(nullptr, ranges).isNil());
}

TEST(HTMLEntities, TheResultIsThatOfReplacingOneByOne) {
  // The last six are not ASCII.
  const char16_t* pieces[] = {u"&",
                              u";",
                              u"&lt;",
                              u"&#65;",
                              u"&#x1F600;",
                              u"&hellip;",
                              u"&#",
                              u"x",
                              u"#",
                              u"&Mu;",
                              u"&#0000000000000065;",
                              u"&;",
                              u"&none;",
                              u"é",
                              u"\xD83D",
                              u"&#x000010000;",
                              u"٣",
                              u"&#65٣;",
                              u"😀"};
  std::mt19937 random(1);
  const auto anywhere = [&]() -> std::size_t {
    const std::size_t place = random() % 120, way = random() % 24;
    return way == 0 ? NSNotFound : way == 1 ? ~place : place;
  };
  for (int round = 0; round < 20'000; ++round) {
    std::u16string units;
    for (auto count = random() % 16; count > 0; --count)
      units += pieces[random() % (std::size(pieces) - (round % 2 ? 6 : 0))];
    std::vector<NSRange> ranges(random() % 12);
    for (NSRange& range : ranges) range = {anywhere(), anywhere()};
    ASSERT_TRUE(isUnescapedAsOneByOne(textOf(units), ranges)) << textOf(units);
  }
}

TEST(HTMLEntities, LargeTextsTakeLinearTime) {
  // In quadratic time each of these would run for hours.
  constexpr std::size_t size = 10'000'000;
  std::string names, numbers;
  while (names.size() < size) names += "&a";
  while (numbers.size() < size) numbers += "&#1";
  for (const std::string& text : {std::string(size, '&') + ";", names + ";", numbers + ";",
                                  "&#" + std::string(size, '1') + ";"})
    EXPECT_EQ(zeb_stringByUnescapingHTMLEntities(text).length(), text.size());
  // Ranges that begin inside of long references get from one into the next.
  std::string chain;
  for (int i = 0; i < 2000; ++i) chain += "&#" + std::string(2000, '0') + "65;";
  NSMutableArray ranges;
  for (std::size_t i = 0; i < 200'000; ++i) ranges.addObject(boxed(NSRange{i % 2000 + 1, i}));
  NSMutableString text{NSString(chain)};
  EXPECT_EQ(zeb_unescapeHTMLEntitiesAdjustingTextRanges(text, ranges).count(), ranges.count());
  EXPECT_EQ(text, NSString(std::string(2000, 'A')));
}

TEST(Emoji, TextsOfEmojiOnly) {
  for (const char16_t* units :
       {u"", u"🇯🇵", u"🇯🇵🇩🇪", u"1\uFE0F\u20E3", u"#\u20E3*\u20E3", u"❤\uFE0F", u"❤",
        u"👨‍👩‍👧👍🏽🏴󠁧󠁢󠁥󠁮󠁧󠁿", u"©®™", u"😀\u0301"})
    EXPECT_TRUE(zeb_containsOnlyEmoji(textOf(units))) << textOf(units);
  for (const char16_t* units :
       {u"1", u"🇯", u"🇯🇵🇩", u"1\uFE0F", u"❤\uFE0E", u"😀 ", u" 😀", u"😀a", u"a\u20E3", u"é",
        u"\xD83D", u"\xDE00😀", u"😀\xD83D", u"\u200D😀", u"😀\U0001F1E6", u"\uFE0F"})
    EXPECT_FALSE(zeb_containsOnlyEmoji(textOf(units))) << textOf(units);
  EXPECT_FALSE(zeb_containsOnlyEmoji(nullptr));
}

TEST(Emoji, DataOfTheFirstTwoCodePoints) {
  // The second code point, the first one in eight digits, and the flags.
  const std::tuple<const char16_t*, std::uint64_t, std::uint64_t> cases[] = {
      {u"", 0, 0},
      {u"a", 0x61, 0},
      {u"ab\u20E3", 0x62'0000'0061, 1},
      {u"1\u20E3", 0x20E3'0000'0031, 1},
      {u"😀🇯x\u20E3\xD83Dx", 0x1F1EF'0001'F600, 3},
      {u"\xDE00\u20E3", 0, 2},
      {u"\xD83Dx", 0, 2},
      {u"x\xDE00\u20E3", 0x78, 2}};
  for (const auto& [units, points, flags] : cases)
    EXPECT_EQ(_zeb_emojiCharacterData(textOf(units)), (ZEBEmojiCharacterData{points, flags}));
}

}  // namespace
}  // namespace zeb::test
