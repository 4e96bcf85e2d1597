#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBUtilities/Text/NSString+ZEBInternational.h>
#include <ZEBUtilities/Text/ZEBCountryCodes.h>
#include <ZEBUtilities/Text/ZEBInternational.h>

#include <iostream>
#include <ranges>

#include "Support/Support.h"

namespace zeb::test {
namespace {

std::u16string repeated(const char16_t* text, int count) {
  std::u16string result;
  while (count-- > 0) result += text;
  return result;
}

NSString textOf(const std::u16string& units) { return NSString(std::u16string_view(units)); }

TEST(Direction, FollowsTheShareOfRightToLeftCharacters) {
  const std::u16string neither[] = {u"", u"plain", u"\u202A\u2066", u"\U0001F600\U0001E900",
                                    u"\u058F\u0900\uFB1C\uFDFE\uFE6F\uFEFD"};
  const std::u16string tooFew[] = {u"אבגdefghij", u"\u202Bאב\u202C abcd", u"\u061C",
                                   repeated(u"1", 700) + repeated(u"א", 300),
                                   repeated(u"א", 1025) + repeated(u"1", 200'000)};
  const std::u16string enough[] = {u"אבגדefghij", u"\u202Bאב\u202C abc",
                                   u"\u0590\u08FF\uFB1D\uFDFD\uFE70\uFEFC",
                                   repeated(u"1", 699) + repeated(u"א\u200E", 300)};
  const auto expect = [](const auto& texts, bool contains, bool isFromRight) {
    for (const NSString text : texts | std::views::transform(textOf)) {
      EXPECT_EQ(zeb_containsRTLCharacters(text), contains) << text;
      EXPECT_EQ(zeb_plainTextShouldBeRenderedFromRight(text), isFromRight) << text;
    }
  };
  expect(neither, false, false);
  expect(tooFew, true, false);
  expect(enough, true, true);
  const std::u16string latin = repeated(u"a", 140), arabic = repeated(u"ش", 1000);
  EXPECT_FALSE(zeb_statusTextShouldBeRenderedFromRight(textOf(latin + arabic)));
  EXPECT_TRUE(zeb_statusTextShouldBeRenderedFromRight(textOf(latin.substr(43) + arabic)));
}

TEST(Direction, ControlCharactersAreRemovedAndMarksRecognised) {
  const std::u16string_view controls =
      u"\u061C\u200E\u200F\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069";
  std::u16string units, kept;
  for (char32_t unit = 1; unit <= 0xFFFF; ++unit) {
    units += static_cast<char16_t>(unit);
    if (controls.find(units.back()) == controls.npos) kept += units.back();
  }
  EXPECT_EQ(zeb_stringByRemovingAllDirectionControlCharacters(textOf(units)), textOf(kept));
  EXPECT_TRUE(zeb_stringByRemovingAllDirectionControlCharacters("a\u200E").isASCII());
  for (const NSString& same : {NSString("é"), NSString(NSMutableString())})
    EXPECT_TRUE(zeb_stringByRemovingAllDirectionControlCharacters(same).isIdenticalTo(same));
  EXPECT_TRUE(zeb_labelTextShouldBeRenderedFromRight("\u200Fa"));
  EXPECT_FALSE(zeb_labelTextShouldBeRenderedFromRight("a\u200F"));
}

TEST(Languages, CodesLoseTheirRegions) {
  const char* codes[] = {"zh-TW",      "zh-Hant", "zh-HK",  "zh-Hant", "zh-tw",      "zh-tw",
                         "zh-Hant-TW", "zh-Hant", "en-GB",  "en",      "zh-Hans-CN", "zh-Hans",
                         "pt-BR-x",    "pt",      "es-419", "es",      "en-gb",      "en-gb",
                         "en-X-a",     "en-X-a",  "EN",     "EN",      "en--GB-AA",  "en-",
                         "-GB",        "",        "en-éé",  "en-éé",   "en-ÉÉ",      "en",
                         "",           "",        nullptr,  nullptr};
  for (std::size_t i = 0; i < std::size(codes); i += 2)
    EXPECT_EQ(ZEBLocalizationNormalizedLanguageCodeWithLanguageCode(codes[i]),
              NSString(codes[i + 1]));
}

/// Prints what depends on the user's language, which a process determines only once.
[[noreturn]] void printWith(const NSArray& languages) {
  NSLocale::setPreferredLanguages(languages);
  NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier("de_CH"));
  ZEBSetOverrideCurrentLanguageCode("fi");
  const auto print = [] {
    std::cerr << ZEBCurrentLanguageCode() << ' ' << ZEBCurrentUILanguageCode() << ' '
              << ZEBCurrentCountryCode() << ' ' << ZEBIsUsingRTLLanguage() << ' ';
  };
  print();
  NSLocale::setPreferredLanguages(NSArray{"ur-PK"});
  NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier("eo"));
  print();
  const NSString label = zeb_labelTextByAddingDirectionControlCharacter("a");
  std::cerr << zeb_labelTextShouldBeRenderedFromRight(label) << label.length();
  for (const CGRect& rect :
       {YOVCGRectFlipInOuterBoundsIfUsingRTLLanguage({{10, 5}, {20, 8}}, {{50, 0}, {100, 1}}),
        YOVCGRectFlipInOuterBoundsIfUsingRTLLanguage({{30, 5}, {-20, -8}}, {{150, 0}, {-100, 1}}),
        YOVCGRectFlipInWidthIfUsingRTLLanguage({{10, 5}, {20, 8}}, 100)}) {
    std::cerr << ' ' << rect.origin.x << ',' << rect.origin.y << ',' << rect.size.width << ','
              << rect.size.height;
  }
  std::_Exit(0);
}

TEST(Languages, AreFixedAtTheFirstUse) {
  const testing::ExitedWithCode succeeded(0);
  EXPECT_EXIT(printWith({"zh-Hant-TW", "it"}), succeeded,
              "zh-Hant zh CH 0 zh-Hant zh \\(null\\) 0 02"
              " 10,5,20,8 30,5,-20,-8 10,5,20,8$");
  EXPECT_EXIT(printWith({"az-Arab-IR"}), succeeded,
              "az-Arab az CH 1 az-Arab az \\(null\\) 1 12"
              " 120,5,20,8 120,-3,20,8 70,5,20,8$");
  EXPECT_EXIT(printWith(NSArray::array()), succeeded, "en en CH 0 en en \\(null\\) 0");
}

TEST(CountryCodes, AreTheRawValuesOfTheCasesInOrder) {
  std::string all;
  for (const auto& [code, text] : ISOCountryCodeCases) {
    EXPECT_EQ(ISOCountryCodeWithRawValue(rawValue(code)), code);
    all += text;
  }
  EXPECT_EQ(
      all,
      "ARAZBTBOBQCWFJGEHTIDIQIMITJMJPKZKELRMYMVMXMENRNZNGOMPKPSPAPGPYPHQARWSARSSCLKTOTNTRUAGBUS"
      "UYUZYE");
  EXPECT_EQ(ISOCountryCodeWithRawValue("UA"), ISOCountryCode::unitedArabEmirates);
  for (const NSString& unknown : {NSString("AE"), NSString("ar"), NSString(""), NSString()})
    EXPECT_FALSE(ISOCountryCodeWithRawValue(unknown));
  EXPECT_EQ(ISOLanguageCodeWithRawValue("ja"), ISOLanguageCode::japanese);
}

}  // namespace
}  // namespace zeb::test
