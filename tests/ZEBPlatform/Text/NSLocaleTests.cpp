#include <ZEBPlatform/Text/NSLocale.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace zeb::test {
namespace {

using Variables = std::vector<std::pair<const char*, std::string>>;

/// "identifier: languages" in an environment that has only these variables.
std::string localeWith(const Variables& variables) {
  for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LC_TIME", "LANG"}) unsetenv(name);
  for (const auto& [name, value] : variables) setenv(name, value.c_str(), 1);
  return (NSLocale::currentLocale()->localeIdentifier() + ": " +
          NSLocale::preferredLanguages().componentsJoinedByString(" "))
      .utf8();
}

TEST(NSLocale, FollowsTheEnvironment) {
  const std::string noise(10'000, 'x');
  const std::pair<Variables, const char*> cases[] = {
      {{}, "en_US_POSIX: "},
      {{{"LANG", "de_DE.UTF-8@euro"}}, "de_DE: de-DE"},
      {{{"LANG", "sr_RS@latin"}}, "sr_Latn_RS: sr-Latn-RS"},
      {{{"LANG", "ca_ES@valencia"}}, "ca_ES_VALENCIA: ca-ES-valencia"},
      {{{"LANG", "en_US@calendar=buddhist"}}, "en_US@calendar=buddhist: en-US-u-ca-buddhist"},
      {{{"LANG", "iw_IL"}}, "he_IL: he-IL"},
      {{{"LC_ALL", ""}, {"LC_TIME", "fr_FR"}, {"LC_MESSAGES", "it"}, {"LANG", "es_ES"}},
       "fr_FR: it"},
      {{{"LC_ALL", "nl_NL"}, {"LC_TIME", "fr_FR"}, {"LC_MESSAGES", "it"}, {"LANG", "es_ES"}},
       "nl_NL: nl-NL"},
      {{{"LANGUAGE", "de_AT:en:de_AT::!!:pt_BR"}, {"LANG", "en"}}, "en: de-AT en pt-BR"},
      {{{"LANGUAGE", "de"}}, "en_US_POSIX: de"},
      {{{"LANGUAGE", "de"}, {"LC_ALL", "C.UTF-8"}, {"LANG", "fr_FR"}}, "en_US_POSIX: "},
      {{{"LANGUAGE", "de"}, {"LC_TIME", "C"}, {"LANG", "fr_FR"}}, "en_US_POSIX: de fr-FR"},
      {{{"LANG", "a b\xff.@="}}, "en_US_POSIX: "},
      {{{"LANGUAGE", noise}, {"LC_ALL", noise}}, "en_US_POSIX: "},
      {{{"LC_ALL", "zh_TW.Big5"}, {"LANGUAGE", "/usr"}}, "zh_TW: zh-TW"},
  };
  for (const auto& [variables, expected] : cases) EXPECT_EQ(localeWith(variables), expected);

  NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier("ja-JP"));
  NSLocale::setPreferredLanguages(NSArray{"ar", 1, ""});
  EXPECT_EQ(localeWith({{"LC_ALL", "de_DE"}}), "ja_JP: ar");
  NSLocale::setPreferredLanguages(NSArray::array());
  NSLocale::setCurrentLocale(nullptr);
  EXPECT_EQ(localeWith({{"LC_ALL", "de_DE"}}), "de_DE: ");
  NSLocale::setPreferredLanguages(nullptr);
}

TEST(NSLocale, HasTheComponentsOfItsIdentifier) {
  const std::pair<std::string, const char*> cases[] = {
      {"de-at", "de_AT de (null) AT"},   {"zh-hant-HK", "zh_Hant_HK zh Hant HK"},
      {"xx-XX", "xx_XX xx (null) XX"},   {std::string("pt\0_BR", 6), "pt pt (null) (null)"},
      {"", " (null) (null) (null)"},     {"en_US_POSIX", "en_US_POSIX en (null) US"},
      {"es-419", "es_419 es (null) 419"}};
  for (const auto& [identifier, expected] : cases) {
    const Ref<NSLocale> locale = NSLocale::localeWithLocaleIdentifier(identifier);
    EXPECT_EQ(locale->localeIdentifier() + " " + locale->languageCode().description() + " " +
                  locale->scriptCode().description() + " " + locale->countryCode().description(),
              expected);
  }
  EXPECT_FALSE(NSLocale::localeWithLocaleIdentifier(nullptr));
}

TEST(NSLocale, ScriptsGiveTheDirection) {
  const std::pair<NSLocaleLanguageDirection, std::vector<NSString>> cases[] = {
      {NSLocaleLanguageDirection::rightToLeft,
       {"ar", "he", "iw", "fa", "ur", "az-Arab", "az_IR", "ks", "dv", "pa-PK", "syr", "und-Hebr"}},
      {NSLocaleLanguageDirection::leftToRight,
       {"en", "ja", "zh-Hant", "pa", "az", "ar-Latn", "sr_RS", "ks-Deva"}},
      {NSLocaleLanguageDirection::topToBottom, {"mn-Mong"}},
      {NSLocaleLanguageDirection::unknown,
       {nullptr, "", "xx", "und", "_US", "C", "!", NSString(std::string(10'000, 'a')),
        NSString(std::u16string_view(u"\xD800"))}},
  };
  for (const auto& [direction, codes] : cases)
    for (const NSString& code : codes)
      EXPECT_EQ(NSLocale::characterDirectionForLanguage(code), direction) << code;
}

}  // namespace
}  // namespace zeb::test
