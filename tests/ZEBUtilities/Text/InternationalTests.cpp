#include <ZEBPlatform/Text/NSLocale.h>
#include <ZEBUtilities/Text/NSString+ZEBInternational.h>
#include <ZEBUtilities/Text/ZEBCountryCodes.h>
#include <ZEBUtilities/Text/ZEBInternational.h>

#include <iostream>

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
  const std::tuple<std::u16string, bool, bool> cases[] = {
      // text, contains any, from the right
      {u"", false, false},
      {u"plain", false, false},
      {u"אבגdefghij", true, false},
      {u"אבגדefghij", true, true},
      {u"\u202Bאב\u202C abcd", true, false},
      {u"\u202Bאב\u202C abc", true, true},
      {u"\u061C", true, false},  // a mark among the Arabic letters
      {u"\u202A\u2066", false, false},
      {u"\u058F\u0900\uFB1C\uFDFE\uFE6F\uFEFD", false, false},
      {u"\u0590\u08FF\uFB1D\uFDFD\uFE70\uFEFC", true, true},
      {u"\U0001F600\U0001E900", false, false},
      {repeated(u"1", 700) + repeated(u"א", 300), true, false},
      {repeated(u"1", 699) + repeated(u"א\u200E", 300), true, true},
      {repeated(u"א", 1025) + repeated(u"1", 200'000), true, false},
  };
  for (const auto& [units, contains, isFromRight] : cases) {
    EXPECT_EQ(zeb_containsRTLCharacters(textOf(units)), contains) << textOf(units);
    EXPECT_EQ(zeb_plainTextShouldBeRenderedFromRight(textOf(units)), isFromRight) << textOf(units);
  }
  const std::u16string latin = repeated(u"a", 140), arabic = repeated(u"ش", 1000);
  EXPECT_FALSE(zeb_statusTextShouldBeRenderedFromRight(textOf(latin + arabic)));
  EXPECT_TRUE(zeb_statusTextShouldBeRenderedFromRight(textOf(latin.substr(43) + arabic)));
}

TEST(Direction, ControlCharactersAreRemovedAndMarksRecognised) {
  std::u16string units, kept;
  for (char32_t unit = 1; unit <= 0xFFFF; ++unit) {
    units += static_cast<char16_t>(unit);
    const bool isControl = unit == 0x61C || unit == 0x200E || unit == 0x200F ||
                           (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
    if (!isControl) kept += static_cast<char16_t>(unit);
  }
  EXPECT_EQ(zeb_stringByRemovingAllDirectionControlCharacters(textOf(units)), textOf(kept));
  EXPECT_TRUE(zeb_stringByRemovingAllDirectionControlCharacters("a\u200E").isASCII());
  const NSString clean("é");
  EXPECT_TRUE(zeb_stringByRemovingAllDirectionControlCharacters(clean).isIdenticalTo(clean));
  const NSMutableString empty;
  EXPECT_TRUE(zeb_stringByRemovingAllDirectionControlCharacters(empty).isIdenticalTo(empty));
  EXPECT_TRUE(zeb_labelTextShouldBeRenderedFromRight("\u200Fa"));
  EXPECT_FALSE(zeb_labelTextShouldBeRenderedFromRight("a\u200F"));
  EXPECT_FALSE(zeb_labelTextShouldBeRenderedFromRight(nullptr));
}

TEST(Languages, CodesLoseTheirRegions) {
  const std::pair<NSString, NSString> cases[] = {{"zh-TW", "zh-Hant"},
                                                 {"zh-HK", "zh-Hant"},
                                                 {"zh-tw", "zh-tw"},
                                                 {"zh-Hant", "zh-Hant"},
                                                 {"zh-Hant-TW", "zh-Hant"},
                                                 {"zh-Hans-CN", "zh-Hans"},
                                                 {"en-GB", "en"},
                                                 {"pt-BR-x", "pt"},
                                                 {"es-419", "es"},
                                                 {"en-gb", "en-gb"},
                                                 {"en-X-a", "en-X-a"},
                                                 {"EN", "EN"},
                                                 {"en--GB-AA", "en-"},
                                                 {"-GB", ""},
                                                 {"en-éé", "en-éé"},
                                                 {"en-ÉÉ", "en"},
                                                 {"", ""},
                                                 {nullptr, nullptr}};
  for (const auto& [code, expected] : cases)
    EXPECT_EQ(ZEBLocalizationNormalizedLanguageCodeWithLanguageCode(code), expected) << code;
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
  std::cerr << zeb_labelTextShouldBeRenderedFromRight(
      zeb_labelTextByAddingDirectionControlCharacter("a"));
  std::cerr << zeb_labelTextByAddingDirectionControlCharacter("a").length()
            << zeb_labelTextByAddingDirectionControlCharacter(nullptr).isNil();
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
              "zh-Hant zh CH 0 zh-Hant zh \\(null\\) 0 021"
              " 10,5,20,8 30,5,-20,-8 10,5,20,8$");
  EXPECT_EXIT(printWith({"az-Arab-IR"}), succeeded,
              "az-Arab az CH 1 az-Arab az \\(null\\) 1 121"
              " 120,5,20,8 120,-3,20,8 70,5,20,8$");
  EXPECT_EXIT(printWith(NSArray::array()), succeeded, "en en CH 0 en en \\(null\\) 0");
}

TEST(CountryCodes, AreTheRawValuesOfTheCasesInOrder) {
  std::string all;
  for (const auto& [code, text] : ISOCountryCodeCases) {
    EXPECT_EQ(ISOCountryCodeWithRawValue(text), code);
    EXPECT_EQ(rawValue(code), std::string(text));
    all += text;
  }
  EXPECT_EQ(
      all,
      "ARAZBTBOBQCWFJGEHTIDIQIMITJMJPKZKELRMYMVMXMENRNZNGOMPKPSPAPGPYPHQARWSARSSCLKTOTNTRUAGBUS"
      "UYUZYE");
  EXPECT_EQ(ISOCountryCodeWithRawValue("UA"), ISOCountryCode::unitedArabEmirates);
  EXPECT_EQ(static_cast<int>(ISOCountryCode::yemen), 46);
  for (const NSString& unknown : {NSString("AE"), NSString("ar"), NSString(""), NSString()})
    EXPECT_EQ(ISOCountryCodeWithRawValue(unknown), std::nullopt);
  EXPECT_EQ(ISOLanguageCodeWithRawValue("ja"), ISOLanguageCode::japanese);
  EXPECT_EQ(ISOLanguageCodeWithRawValue("JA"), std::nullopt);
}

}  // namespace
}  // namespace zeb::test
