#include <ZEBPlatform/Text/NSDateFormatter.h>
#include <gtest/gtest.h>

#include <cmath>

#include "Support/DateSettings.h"

namespace zeb::test {

namespace {

Ref<NSDateFormatter> withStyles(NSDateFormatterStyle date, NSDateFormatterStyle time) {
  const Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
  formatter->setDateStyle(date);
  formatter->setTimeStyle(time);
  return formatter;
}

Ref<NSDateFormatter> withPattern(const NSString& pattern) {
  const Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
  formatter->setDateFormat(pattern);
  return formatter;
}

constexpr auto none = NSDateFormatterNoStyle, brief = NSDateFormatterShortStyle,
               medium = NSDateFormatterMediumStyle, extensive = NSDateFormatterLongStyle,
               full = NSDateFormatterFullStyle;
constexpr double evening = 1580503265;  // 2020-01-31 20:41:05 UTC

}  // namespace

TEST(NSDateFormatter, StylesSpeakTheLanguageOfTheLocale) {
  const std::tuple<const char*, NSDateFormatterStyle, NSDateFormatterStyle, const char*> rows[] = {
      {"en_US", brief, brief, "1/31/20, 9:41\u202FPM"},
      {"en_US", medium, none, "Jan 31, 2020"},
      {"en_US_POSIX", brief, brief, "1/31/20, 9:41\u202FPM"},
      {"de_DE", extensive, extensive, "31. Januar 2020 um 21:41:05 MEZ"},
      {"ar_EG", extensive, none, "٣١ يناير ٢٠٢٠"},
      {"ja_JP", none, full, "21時41分05秒 中央ヨーロッパ標準時"},
      {"th_TH", brief, none, "31/1/63"},
      {"he_IL@calendar=hebrew", extensive, none, "ה׳ בשבט תש״ף"},
      {"en_US", none, none, ""}};
  for (const auto& [locale, dateStyle, timeStyle, expected] : rows) {
    const DateSettings settings(locale, "Europe/Berlin");
    EXPECT_EQ(withStyles(dateStyle, timeStyle)->stringFromDate(since1970(evening)),
              NSString(expected))
        << locale;
  }
  const DateSettings settings("xx_invalid/locale", "UTC");
  for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) unsetenv(name);
  for (const char* nothing : {"C", "POSIX", "C.UTF-8"}) {
    setenv("LC_ALL", nothing, 1);
    NSLocale::setCurrentLocale(nullptr);
    EXPECT_EQ(withStyles(brief, brief)->locale()->localeIdentifier(), "en_US_POSIX"_ns);
    EXPECT_EQ(withStyles(brief, brief)->stringFromDate(since1970(evening)),
              "1/31/20, 8:41\u202FPM"_ns);
  }
  unsetenv("LC_ALL");
}

TEST(NSDateFormatter, SettingsTakeEffectWhenTheyChange) {
  const DateSettings settings("en_US", "UTC");
  const Ref<NSDateFormatter> formatter = withPattern("y-MM-dd HH:mm zzzz");
  const auto text = [&] { return formatter->stringFromDate(since1970(evening)); };
  EXPECT_EQ(text(), "2020-01-31 20:41 Coordinated Universal Time"_ns);
  formatter->setTimeZone(NSTimeZone::timeZoneWithName("Asia/Tokyo"));
  formatter->setLocale(NSLocale::localeWithLocaleIdentifier("fr_FR"));
  EXPECT_EQ(text(), "2020-02-01 05:41 heure normale du Japon"_ns);
  formatter->setCalendar(NSCalendar::calendarWithIdentifier("buddhist"));
  EXPECT_EQ(text(), "2563-02-01 05:41 heure normale du Japon"_ns);
  formatter->setCalendar(nullptr);
  formatter->setTimeStyle(brief);
  EXPECT_EQ(text() + formatter->dateFormat(), "05:41HH:mm"_ns);
  formatter->setDateStyle(brief);
  formatter->setDoesRelativeDateFormatting(true);
  EXPECT_EQ(text(), "01/02/2020 05:41"_ns);
  EXPECT_TRUE(formatter->stringFromDate(NSDate::date()).hasPrefix("aujourd"));
}

TEST(NSDateFormatter, ParsesWholeTextsAndLenientlyOnRequest) {
  const DateSettings settings("en_US", "America/New_York");
  const auto parsed = [](const char* pattern, const NSString& text, bool isLenient) {
    const Ref<NSDateFormatter> formatter = withPattern(pattern);
    formatter->setLenient(isLenient);
    return formatter->dateFromString(text);
  };
  EXPECT_EQ(parsed("yyyy-MM-dd", "2020-01-31", false), since1970(1580446800));
  EXPECT_EQ(parsed("yyyy-MM-dd", "2020-01-32", true), since1970(1580533200));
  EXPECT_EQ(parsed("MMM d, y HH:mm Z", "Jan 31, 2020 00:00 +0530", false), since1970(1580409000));
  for (const NSString& text :
       {"2020-01-32"_ns, "2020-01-31T"_ns, "31 janvier"_ns, ""_ns, NSString()})
    EXPECT_TRUE(parsed("yyyy-MM-dd", text, false).isNil()) << text;
  EXPECT_TRUE(makeRef<NSDateFormatter>()->dateFromString("1/1/20").isNil());
}

TEST(NSDateFormatter, TemplatesBecomePatternsOfTheLocale) {
  const auto pattern = [](const char* locale, const NSString& text) {
    const Ref<NSLocale> used = NSLocale::localeWithLocaleIdentifier(locale);
    return NSDateFormatter::dateFormatFromTemplate(text, 0, used);
  };
  EXPECT_EQ(pattern("en_US", "MMMd") + pattern("de_DE", "MMMd"), "MMM dd. MMM"_ns);
  EXPECT_EQ(pattern("en_US", "EEEE hh mm a"), "EEEE hh:mm\u202Fa"_ns);
  EXPECT_EQ(pattern("en_US", "jmm") + pattern("fr_FR", "jjmm"), "h:mm\u202FaHH:mm"_ns);
  EXPECT_TRUE(pattern("en_US", nullptr).isNil());
}

TEST(NSDateFormatter, ExtremeDatesAndPatternsAreHarmless) {
  const DateSettings settings("en_US", "America/New_York");
  const auto written = [](const char* pattern, double seconds) {
    return withPattern(pattern)->stringFromDate(since1970(seconds));
  };
  for (const double end : {double{INFINITY}, 1e300, 1e18})
    EXPECT_EQ(written("G y-MM-dd", end) + written("G y-MM-dd", -end),
              "AD 5828963-12-19BC 5838270-09-19"_ns);
  EXPECT_TRUE(written("y", NAN).isNil() && withPattern("y")->stringFromDate(nullptr).isNil());
  EXPECT_TRUE(written("yyyy nonsense", 0).isNil());
  EXPECT_EQ(written("'open", 0) + written("yyyy 年 😀", 0), "open1969 年 😀"_ns);
}

}  // namespace zeb::test
