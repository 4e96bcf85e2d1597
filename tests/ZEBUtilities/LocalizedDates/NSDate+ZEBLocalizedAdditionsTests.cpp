#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Text/NSDateFormatter.h>
#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>
#include <ZEBUtilities/LocalizedDates/NSDate+ZEBLocalizedAdditions.h>
#include <ZEBUtilities/LocalizedDates/NSTimeZone+ZEBAdditions.h>

#include <cmath>

#include "Support/DateSettings.h"
#include "Support/Support.h"

namespace zeb::test {

namespace {

/// The settings, which the kept formatters get at their next use.
struct FreshSettings : DateSettings {
  FreshSettings(const NSString& locale, const NSString& timeZone) : DateSettings(locale, timeZone) {
    zeb_currentLocaleDidChange();
  }
};

constexpr auto none = NSDateFormatterNoStyle, brief = NSDateFormatterShortStyle,
               extensive = NSDateFormatterLongStyle;
/// The styles or the template; the medium ones have the short style.
const struct {
  NSString (*ours)(const NSDate&);
  NSDateFormatterStyle dateStyle, timeStyle;
  const char* templateText = nullptr;
} displays[] = {{zeb_mediumDateStringNoTime, brief, none},
                {zeb_mediumDateStringNoYear, none, none, "MMMd"},
                {zeb_mediumDateString, brief, brief},
                {zeb_longDateStringWithTime, extensive, brief},
                {zeb_longDateStringNoYear, none, none, "MMMMd"},
                {zeb_shortDateString, brief, none},
                {zeb_shortRelativeDateStringWithTime, brief, brief},
                {zeb_shortTimeString, none, brief},
                {zeb_longDateString, extensive, none},
                {zeb_weekdayDateStringWithTime, none, none, "EEEE hh mm a"}};

const NSDate morning = since1970(1580460060);  // 2020-01-31 08:41 UTC

}  // namespace

TEST(LocalizedDates, DisplayTextsHaveTheirStylesInEveryLocale) {
  for (const char* locale : {"en_US", "de_DE", "ar_EG", "ja_JP", "th_TH", "en_US_POSIX"}) {
    const FreshSettings settings(locale, "Asia/Tokyo");
    for (const auto& display : displays) {
      const Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
      formatter->setDateStyle(display.dateStyle);
      formatter->setTimeStyle(display.timeStyle);
      if (const char* text = display.templateText)
        formatter->setDateFormat(NSDateFormatter::dateFormatFromTemplate(text, 0, nullptr));
      for (const NSDate& date :
           {morning, since1970(-1e11), since1970(1e300), since1970(NAN), NSDate()})
        EXPECT_EQ(display.ours(date), formatter->stringFromDate(date)) << locale << " " << date;
    }
    const NSDate day = zeb_dateWithLongDateString(zeb_longDateString(morning));
    EXPECT_EQ(day, since1970(1580396400)) << locale;
  }
  const FreshSettings settings("de_DE", "Europe/Berlin");
  EXPECT_EQ(zeb_longDateStringWithTime(morning), "31. Januar 2020 um 09:41"_ns);
  EXPECT_EQ(zeb_weekdayDateStringWithTime(morning), "Freitag 09:41\u202FAM"_ns);
  EXPECT_TRUE(zeb_shortRelativeDateStringWithTime(NSDate::date()).hasPrefix("heute, "));
  EXPECT_TRUE(zeb_dateWithLongDateString("31.1.20").isNil() &&
              zeb_dateWithLongDateString(nullptr).isNil());
}

TEST(LocalizedDates, LongDatesAreReadWhereClocksSkipMidnight) {
  for (const char* locale : {"en_US", "pt_BR"}) {
    const FreshSettings settings(locale, "America/Sao_Paulo");
    const NSDate noon = since1970(1541347200);  // 4 November 2018, which began at 01:00
    EXPECT_EQ(zeb_dateWithLongDateString(zeb_longDateString(noon)), zeb_beginningOfDay(noon));
    EXPECT_TRUE(zeb_dateWithLongDateString("February 30, 2018").isNil());
  }
}

TEST(LocalizedDates, WireFormatsAreThoseOfICUOverTheWholeRange) {
  const FreshSettings settings("ar_EG", "Asia/Kathmandu");
  const NSDate newYear = since1970(1577836800);
  EXPECT_EQ(zeb_APIUTCDateStringWithTime(newYear), "Wed Jan 01 2020 00:00:00 +0000"_ns);
  EXPECT_EQ(zeb_APIUTCDateStringWithTimeAndYearAtEnd(newYear), "Wed Jan 01 00:00:00 +0000 2020"_ns);
  EXPECT_EQ(zeb_RFC1123DateStringWithTime(newYear), "Wed, 01 Jan 2020 00:00:00 GMT"_ns);

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
  const std::tuple<NSString (*)(const NSDate&), const char*, const char*> formats[] = {
      {zeb_APIUTCDateStringWithTime, "EEE MMM dd yyyy HH:mm:ss Z", "en_US_POSIX"},
      {zeb_APIUTCDateStringWithTimeAndYearAtEnd, "EEE MMM dd HH:mm:ss Z yyyy", "en_US_POSIX"},
      {zeb_RFC1123DateStringWithTime, "EEE',' dd MMM yyyy HH':'mm':'ss 'GMT'", "en_US"}};
  for (const auto& [ours, pattern, locale] : formats) {
    const Ref<NSDateFormatter> formatter = makeRef<NSDateFormatter>();
    formatter->setLocale(NSLocale::localeWithLocaleIdentifier(locale));
    formatter->setTimeZone(NSTimeZone::timeZoneWithName("UTC"));
    formatter->setDateFormat(pattern);
    EXPECT_TRUE(ours(nullptr).isNil());
    for (const double moment : moments)
      ASSERT_EQ(ours(since1970(moment)), formatter->stringFromDate(since1970(moment)))
          << std::to_string(moment);
  }
}

TEST(LocalizedDates, EightFormattersFollowTheSystemsZoneAndTwoDoNot) {
  const NSDate evening = since1970(1580508000);  // 2020-01-31 22:00 UTC
  const auto texts = [&] {
    std::vector<NSString> result;
    for (const auto& display : displays) result.push_back(display.ours(evening));
    return result;
  };
  setenv("TZ", "UTC", 1);
  NSTimeZone::systemTimeZoneDidChange();
  const FreshSettings settings("en_GB", nullptr);
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
  NSTimeZone::systemTimeZoneDidChange();
}

TEST(LocalizedDates, ReportedLocalesEmptyTheCacheBeforeThePost) {
  const FreshSettings settings("en_US", "UTC");
  const auto text = [] { return zeb_longDateStringNoYear(morning) + "; "; };
  NSString seen = text();
  NSLocale::setCurrentLocale(NSLocale::localeWithLocaleIdentifier("fr_FR"));
  seen = seen + text();
  const Ref<NSObject> token = NSNotificationCenter::defaultCenter()->addObserverForName(
      "ZEBDateFormatDidChangeNotification", nullptr, nullptr,
      [&](const Ref<NSNotification>&) { seen = seen + text(); });  // the queue is free again
  zeb_currentLocaleDidChange();
  NSNotificationCenter::defaultCenter()->removeObserver(token);
  EXPECT_EQ(seen, "January 31; January 31; 31 janvier; "_ns);
}

TEST(LocalizedDates, YearsAndDaysFollowTheCalendar) {
  const DateSettings settings("en_US", "America/Sao_Paulo");
  const NSDate leapDay = since1970(1582979696.25);
  EXPECT_EQ(zeb_dateWithYears(leapDay, 1), since1970(1582979696.25 + 365 * 86400));
  for (const std::int64_t years : {INT64_MAX, INT64_MIN, std::int64_t{10'000'000}})
    EXPECT_TRUE(zeb_dateWithYears(leapDay, years).isNil() && zeb_dateWithYears(nullptr, 1).isNil());
  EXPECT_TRUE(zeb_isAfter(zeb_dateWithYearsFromNow(1), zeb_dateWithDaysFromNow(364)));

  const NSDate noon = since1970(1541350800), begin = since1970(1541300400);  // midnight is skipped
  EXPECT_EQ(zeb_beginningOfDay(noon), begin);
  EXPECT_TRUE(zeb_isEqualToDateIgnoringTime(noon, begin));
  EXPECT_FALSE(zeb_isEqualToDateIgnoringTime(noon, since1970(1541300399)));
  // Without its era, a day of the year 44 before counts in the year 44.
  EXPECT_EQ(zeb_APIUTCDateStringWithTime(zeb_beginningOfDay(since1970(-63517305600))),
            "Sun Mar 22 0044 03:06:28 +0000"_ns);
  for (const NSDate& date : {NSDate(), since1970(NAN), since1970(-INFINITY)})
    EXPECT_TRUE(zeb_beginningOfDay(date).isNil() && !zeb_isEqualToDateIgnoringTime(noon, date));

  EXPECT_TRUE(zeb_isToday(NSDate::date()) && !zeb_isToday(zeb_dateTomorrow()));
  EXPECT_TRUE(zeb_isTomorrow(zeb_dateTomorrow()) && !zeb_isTomorrow(zeb_dateWithDaysFromNow(2)));
  EXPECT_TRUE(zeb_isYesterday(zeb_dateYesterday()) && !zeb_isYesterday(NSDate::date()));
}

TEST(LocalizedDates, OffsetsAndQueuesHaveTheirForms) {
  const DateSettings settings("ar_EG", "Asia/Kolkata");
  const auto offset = [](const char* zone) {
    return zeb_utcOffsetOfDate(morning, NSTimeZone::timeZoneWithName(zone));
  };
  EXPECT_EQ(offset("Europe/Berlin") + offset("America/St_Johns"), "+0100-0330"_ns);
  EXPECT_EQ(offset("UTC") + zeb_utcOffsetFromCurrentTime(), "+0000+0530"_ns);
  EXPECT_TRUE(offset("unknown").isNil() &&
              zeb_utcOffsetOfDate(nullptr, NSTimeZone::defaultTimeZone()).isNil());
  EXPECT_EQ(_zeb_dateQueue()->label(), "NSDate+ZEBLocalizedAdditions");
  EXPECT_EQ(_zeb_timezoneQueue()->label(), "NSTimeZone+ZEBAdditions");
}

TEST(LocalizedDates, ThreadsShareTheFormatters) {
  const FreshSettings settings("en_US", "UTC");
  std::vector<std::jthread> threads;
  for (const auto disturb : {zeb_currentLocaleDidChange, NSTimeZone::systemTimeZoneDidChange}) {
    threads.emplace_back([disturb] {
      for (int round = 0; round < 50; ++round) {
        disturb();
        for (const auto& display : displays) EXPECT_FALSE(display.ours(morning).empty());
      }
    });
  }
}

}  // namespace zeb::test
