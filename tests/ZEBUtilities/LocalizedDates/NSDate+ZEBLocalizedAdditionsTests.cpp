#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Text/NSDateFormatter.h>
#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>
#include <ZEBUtilities/LocalizedDates/NSDate+ZEBLocalizedAdditions.h>
#include <ZEBUtilities/LocalizedDates/NSTimeZone+ZEBAdditions.h>

#include <cmath>
#include <random>

#include "Support/DateSettings.h"
#include "Support/Support.h"

namespace zeb::test {

namespace {

using Text = NSString (*)(const NSDate&);

/// The settings, which the kept formatters get at their next use.
struct FreshSettings : DateSettings {
  FreshSettings(const NSString& locale, const NSString& timeZone) : DateSettings(locale, timeZone) {
    zeb_currentLocaleDidChange();
  }
};

struct Display {
  Text ours;
  NSDateFormatterStyle dateStyle, timeStyle;
  const char* templateText;
};

// The medium ones have the short style; the same as the platform's formatters with these settings.
const Display displays[] = {
    {zeb_mediumDateStringNoTime, NSDateFormatterShortStyle, NSDateFormatterNoStyle, nullptr},
    {zeb_mediumDateStringNoYear, NSDateFormatterNoStyle, NSDateFormatterNoStyle, "MMMd"},
    {zeb_mediumDateString, NSDateFormatterShortStyle, NSDateFormatterShortStyle, nullptr},
    {zeb_longDateStringWithTime, NSDateFormatterLongStyle, NSDateFormatterShortStyle, nullptr},
    {zeb_longDateStringNoYear, NSDateFormatterNoStyle, NSDateFormatterNoStyle, "MMMMd"},
    {zeb_shortDateString, NSDateFormatterShortStyle, NSDateFormatterNoStyle, nullptr},
    {zeb_shortRelativeDateStringWithTime, NSDateFormatterShortStyle, NSDateFormatterShortStyle,
     nullptr},
    {zeb_shortTimeString, NSDateFormatterNoStyle, NSDateFormatterShortStyle, nullptr},
    {zeb_longDateString, NSDateFormatterLongStyle, NSDateFormatterNoStyle, nullptr},
    {zeb_weekdayDateStringWithTime, NSDateFormatterNoStyle, NSDateFormatterNoStyle,
     "EEEE hh mm a"}};

constexpr double morning = 1580460060;  // 2020-01-31 08:41 UTC

}  // namespace

TEST(LocalizedDates, DisplayTextsHaveTheirStylesInEveryLocale) {
  for (const char* locale : {"en_US", "de_DE", "ar_EG", "ja_JP", "th_TH", "en_US_POSIX"}) {
    const FreshSettings settings(locale, "Asia/Tokyo");
    for (const Display& display : displays) {
      const Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
      formatter->setDateStyle(display.dateStyle);
      formatter->setTimeStyle(display.timeStyle);
      if (display.templateText)
        formatter->setDateFormat(
            NSDateFormatter::dateFormatFromTemplate(display.templateText, 0, nullptr));
      for (const double seconds : {morning, 0.0, -1e11, 1e300})
        EXPECT_EQ(display.ours(since1970(seconds)), formatter->stringFromDate(since1970(seconds)))
            << locale << " " << (&display - displays);
      EXPECT_TRUE(display.ours(nullptr).isNil() && display.ours(since1970(NAN)).isNil());
    }
  }
  const FreshSettings settings("de_DE", "Europe/Berlin");
  EXPECT_EQ(zeb_longDateStringWithTime(since1970(morning)), "31. Januar 2020 um 09:41"_ns);
  EXPECT_EQ(zeb_weekdayDateStringWithTime(since1970(morning)), "Freitag 09:41\u202FAM"_ns);
  EXPECT_TRUE(zeb_shortRelativeDateStringWithTime(NSDate::date()).hasPrefix("heute, "));
}

TEST(LocalizedDates, LongDatesAreReadBack) {
  for (const char* locale : {"en_US", "de_DE", "ar_EG", "ja_JP"}) {
    const FreshSettings settings(locale, "America/New_York");
    EXPECT_EQ(zeb_dateWithLongDateString(zeb_longDateString(since1970(morning))),
              since1970(1580446800))
        << locale;
    EXPECT_TRUE(zeb_dateWithLongDateString("1/31/20").isNil());
    EXPECT_TRUE(zeb_dateWithLongDateString(nullptr).isNil());
  }
}

TEST(LocalizedDates, WireFormatsAreThoseOfICUOverTheWholeRange) {
  const FreshSettings settings("ar_EG", "Asia/Kathmandu");
  const NSDate newYear = since1970(1577836800);
  EXPECT_EQ(zeb_APIUTCDateStringWithTime(newYear), "Wed Jan 01 2020 00:00:00 +0000"_ns);
  EXPECT_EQ(zeb_APIUTCDateStringWithTimeAndYearAtEnd(newYear), "Wed Jan 01 00:00:00 +0000 2020"_ns);
  EXPECT_EQ(zeb_RFC1123DateStringWithTime(newYear), "Wed, 01 Jan 2020 00:00:00 GMT"_ns);

  const std::tuple<Text, const char*, const char*> formats[] = {
      {zeb_APIUTCDateStringWithTime, "EEE MMM dd yyyy HH:mm:ss Z", "en_US_POSIX"},
      {zeb_APIUTCDateStringWithTimeAndYearAtEnd, "EEE MMM dd HH:mm:ss Z yyyy", "en_US_POSIX"},
      {zeb_RFC1123DateStringWithTime, "EEE',' dd MMM yyyy HH':'mm':'ss 'GMT'", "en_US"}};
  std::vector<double> moments{0.0, -0.0001, -1e-9, 0.9996, NAN, INFINITY, -INFINITY, 1e300, -1e300};
  // The ends of ICU's range, the change of calendars, the years 0 and 10000, with their neighbours.
  for (const double edge : {183882168921600.0, -184303902528000.0, -12219292800.0, -62135769600.0,
                            -62167392000.0, 253402300800.0, -30610224000.0, 951782400.0})
    for (const double distance : {-86400.0, -1.0, -0.001, 0.0, 0.001, 86399.999, 86400.0})
      moments.push_back(edge + distance);
  for (int day = -800'000; day < 80'000; day += 13) moments.push_back(86400.0 * day + 45'296);
  std::mt19937_64 random(1);
  for (const double range : {1e9, 1e11, 1e13, 1.85e14})
    for (int i = 0; i < 3000; ++i)
      moments.push_back(std::uniform_real_distribution<>(-range, range)(random));
  for (const auto& [ours, pattern, locale] : formats) {
    const Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
    formatter->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
    formatter->setDateFormat(pattern);
    for (const double moment : moments)
      ASSERT_EQ(ours(since1970(moment)), formatter->stringFromDate(since1970(moment)))
          << std::to_string(moment);
    EXPECT_TRUE(ours(nullptr).isNil());
  }
}

TEST(LocalizedDates, EightFormattersFollowTheSystemsZoneAndTwoDoNot) {
  NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier("en_GB"));
  const NSDate evening = since1970(1580508000);  // 2020-01-31 22:00 UTC
  const auto texts = [&] {
    std::vector<NSString> result;
    for (const Display& display : displays) result.push_back(display.ours(evening));
    return result;
  };
  setenv("TZ", "UTC", 1);
  NSTimeZone::systemTimeZoneDidChange();
  zeb_currentLocaleDidChange();
  const std::vector<NSString> before = texts();
  setenv("TZ", "Asia/Tokyo", 1);
  EXPECT_EQ(texts(), before);  // nothing has been reported yet
  NSTimeZone::systemTimeZoneDidChange();
  const std::vector<NSString> after = texts();
  for (std::size_t i = 0; i < before.size(); ++i) EXPECT_EQ(before[i] != after[i], i < 8) << i;
  EXPECT_EQ(zeb_shortTimeString(evening), "07:00"_ns);
  EXPECT_EQ(zeb_longDateString(evening), "31 January 2020"_ns);
  zeb_currentLocaleDidChange();
  EXPECT_EQ(zeb_longDateString(evening), "1 February 2020"_ns);
  EXPECT_EQ(zeb_weekdayDateStringWithTime(evening), "Saturday 07:00\u202Fam"_ns);
  unsetenv("TZ");
  NSLocale::setCurrentLocale(nullptr);
  NSTimeZone::systemTimeZoneDidChange();
}

TEST(LocalizedDates, ReportedLocalesEmptyTheCacheBeforeThePost) {
  const FreshSettings settings("en_US", "UTC");
  const NSDate date = since1970(morning);
  EXPECT_EQ(zeb_longDateStringNoYear(date), "January 31"_ns);
  NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier("fr_FR"));
  EXPECT_EQ(zeb_longDateStringNoYear(date), "January 31"_ns);

  std::vector<NSString> seen;
  const Ref<NSObject> token = NSNotificationCenter::defaultCenter()->addObserverForName(
      "ZEBDateFormatDidChangeNotification", nullptr, nullptr,
      [&, caller = std::this_thread::get_id()](const Ref<NSNotification>& notification) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        EXPECT_TRUE(notification->object().isNil());
        seen.push_back(zeb_longDateStringNoYear(date));  // the queue is free again
      });
  zeb_currentLocaleDidChange();
  NSNotificationCenter::defaultCenter()->removeObserver(token);
  EXPECT_EQ(seen, std::vector<NSString>{"31 janvier"});
}

TEST(LocalizedDates, YearsAndDaysFollowTheCalendar) {
  const DateSettings settings("en_US", "America/Sao_Paulo");
  const NSDate leapDay = since1970(1582979696.25);
  EXPECT_EQ(zeb_dateWithYears(leapDay, 1), since1970(1582979696.25 + 365 * 86400));
  EXPECT_EQ(zeb_dateWithYears(leapDay, -4), since1970(1582979696.25 - 1461 * 86400));
  for (const std::int64_t years : {INT64_MAX, INT64_MIN, std::int64_t{10'000'000}})
    EXPECT_TRUE(zeb_dateWithYears(leapDay, years).isNil());
  EXPECT_TRUE(zeb_dateWithYears(nullptr, 1).isNil());
  EXPECT_TRUE(zeb_isAfter(zeb_dateWithYearsFromNow(1), zeb_dateWithDaysFromNow(364)));

  const NSDate noon = since1970(1541350800), begin = since1970(1541300400);  // midnight is skipped
  EXPECT_EQ(zeb_beginningOfDay(noon), begin);
  EXPECT_TRUE(zeb_isEqualToDateIgnoringTime(noon, begin));
  EXPECT_FALSE(zeb_isEqualToDateIgnoringTime(noon, since1970(1541300399)));
  // Without its era, a day of the year 44 before counts in the year 44.
  EXPECT_EQ(zeb_APIUTCDateStringWithTime(zeb_beginningOfDay(since1970(-63517305600))),
            "Sun Mar 22 0044 03:06:28 +0000"_ns);
  EXPECT_TRUE(zeb_beginningOfDay(nullptr).isNil() || zeb_isEqualToDateIgnoringTime(noon, nullptr));
  for (const double end : {NAN, INFINITY, -INFINITY}) zeb_beginningOfDay(since1970(end));

  const std::tuple<NSDate, const char*> rows[] = {{NSDate::date(), "100"},
                                                  {zeb_dateTomorrow(), "010"},
                                                  {zeb_dateYesterday(), "001"},
                                                  {zeb_dateWithDaysFromNow(2), "000"},
                                                  {nullptr, "000"}};
  for (const auto& [date, expected] : rows) {
    std::string found;
    for (const auto test : {zeb_isToday, zeb_isTomorrow, zeb_isYesterday})
      found += test(date) ? '1' : '0';
    EXPECT_EQ(found, expected);
  }
}

TEST(LocalizedDates, OffsetsAndQueuesHaveTheirForms) {
  const DateSettings settings("ar_EG", "Asia/Kolkata");
  const std::pair<const char*, const char*> rows[] = {{"Europe/Berlin", "+0100"},
                                                      {"America/St_Johns", "-0330"},
                                                      {"UTC", "+0000"},
                                                      {"Pacific/Kiritimati", "+1400"}};
  for (const auto& [zone, offset] : rows)
    EXPECT_EQ(zeb_utcOffsetOfDate(since1970(morning), NSTimeZone::timeZoneWithName(zone)),
              NSString(offset));
  EXPECT_TRUE(zeb_utcOffsetOfDate(since1970(morning), nullptr).isNil() &&
              zeb_utcOffsetOfDate(nullptr, NSTimeZone::defaultTimeZone()).isNil());
  EXPECT_EQ(zeb_utcOffsetFromCurrentTime(), "+0530"_ns);
  EXPECT_EQ(_zeb_dateQueue()->label(), "NSDate+ZEBLocalizedAdditions");
  EXPECT_EQ(_zeb_timezoneQueue()->label(), "NSTimeZone+ZEBAdditions");
}

TEST(LocalizedDates, ThreadsShareTheFormatters) {
  const FreshSettings settings("en_US", "UTC");
  std::vector<std::jthread> threads;
  std::atomic<int> wrong{0};
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (int round = 0; round < 50; ++round) {
        if (i == 0) zeb_currentLocaleDidChange();
        if (i == 1) NSTimeZone::systemTimeZoneDidChange();
        for (const Display& display : displays) wrong += display.ours(since1970(morning)).empty();
        wrong += zeb_RFC1123DateStringWithTime(since1970(morning)).empty();
        wrong += !zeb_isToday(NSDate::date());
      }
    });
  }
  threads.clear();
  EXPECT_EQ(wrong, 0);
}

}  // namespace zeb::test
