#include <ZEBPlatform/Text/NSCalendar.h>
#include <gtest/gtest.h>

#include <cmath>

#include "Support/DateSettings.h"

namespace zeb::test {

namespace {

constexpr NSCalendarUnit allUnits =
    NSCalendarUnitEra | NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay |
    NSCalendarUnitHour | NSCalendarUnitMinute | NSCalendarUnitSecond | NSCalendarUnitNanosecond |
    NSCalendarUnitWeekday | NSCalendarUnitWeekOfYear | NSCalendarUnitYearForWeekOfYear;

std::string textOf(const NSDateComponents& parts) {
  return formattedText(
      "%lld/%lld-%lld-%lld %lld:%lld:%lld.%lld day %lld, week %lld of %lld",
      {parts.era, parts.year, parts.month, parts.day, parts.hour, parts.minute, parts.second,
       parts.nanosecond, parts.weekday, parts.weekOfYear, parts.yearForWeekOfYear});
}

constexpr double leapDay = 1582979696.25;  // 2020-02-29 12:34:56.25 UTC

}  // namespace

TEST(NSCalendar, TakesDatesApartAndPutsThemTogether) {
  const DateSettings settings("en_US", "UTC");
  const std::tuple<const char*, double, const char*> rows[] = {
      {"gregorian", leapDay, "1/2020-2-29 12:34:56.250000000 day 7, week 9 of 2020"},
      {"buddhist", leapDay, "0/2563-2-29 12:34:56.250000000 day 7, week 9 of 2020"},
      {"japanese", leapDay, "236/2-2-29 12:34:56.250000000 day 7, week 9 of 2020"},
      {"gregorian", -12219292801, "1/1582-10-4 23:59:59.0 day 5, week 40 of 1582"},
      {"gregorian", -62198755200, "0/2-1-3 0:0:0.0 day 6, week 1 of -1"}};
  for (const auto& [identifier, seconds, expected] : rows) {
    const Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier(identifier);
    const Ref<NSDateComponents> parts = calendar->components(allUnits, since1970(seconds));
    EXPECT_EQ(textOf(*parts), expected);
    EXPECT_EQ(calendar->dateFromComponents(parts), since1970(seconds));
  }
  const Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier("gregorian");
  EXPECT_EQ(calendar->components(NSCalendarUnitDay, since1970(0))->year, NSDateComponentUndefined);
  const Ref<NSDateComponents> parts = makeRef<NSDateComponents>();
  EXPECT_EQ(calendar->dateFromComponents(parts), since1970(-62135769600));
  parts->year = 2021;
  parts->month = 13;
  EXPECT_EQ(calendar->dateFromComponents(parts), since1970(1640995200));
  parts->year = 6'000'000;
  EXPECT_TRUE(calendar->dateFromComponents(parts).isNil());
  EXPECT_TRUE(calendar->dateFromComponents(nullptr).isNil() ||
              calendar->components(allUnits, nullptr));
  EXPECT_FALSE(NSCalendar::calendarWithIdentifier(nullptr) ||
               NSCalendar::calendarWithIdentifier("mayan"));
}

TEST(NSCalendar, AddsByTheCalendarAndTimesBySeconds) {
  const DateSettings settings("en_US", "Europe/Berlin");
  const Ref<NSCalendar> calendar = NSCalendar::calendarWithIdentifier("gregorian");
  const auto added = [&](NSDate date, auto... parts) {
    const Ref<NSDateComponents> amounts = makeRef<NSDateComponents>();
    ((*amounts.*parts.first = parts.second), ...);
    return calendar->dateByAddingComponents(amounts, date).timeIntervalSince1970();
  };
  using Parts = NSDateComponents;
  using Amount = std::pair<std::int64_t Parts::*, std::int64_t>;
  EXPECT_EQ(added(since1970(leapDay), Amount(&Parts::year, 1)), leapDay + 365 * 86400);
  EXPECT_EQ(added(since1970(leapDay), Amount(&Parts::month, 1), Amount(&Parts::day, 1)),
            leapDay + 30 * 86400 - 3600);
  EXPECT_EQ(added(since1970(leapDay), Amount(&Parts::weekOfYear, 5)), leapDay + 35 * 86400 - 3600);
  EXPECT_EQ(added(since1970(leapDay), Amount(&Parts::hour, 35 * 24),
                  Amount(&Parts::nanosecond, -250'000'000)),
            leapDay + 35 * 86400 - 0.25);
  for (const std::int64_t years : {std::int64_t{6'000'000}, INT64_MAX - 1, INT64_MIN})
    EXPECT_EQ(added(since1970(0), Amount(&Parts::year, years)), 0);  // nil
}

TEST(NSCalendar, DaysBeginAfterTheGapWhereMidnightIsSkipped) {
  const std::tuple<const char*, double, double> rows[] = {
      {"America/Sao_Paulo", 1541350800, 1541300400},  // 2018-11-04 began at 01:00 -02:00
      {"America/Havana", 1604250000, 1604203200},     // 2020-11-01 showed 00:00 twice
      {"Europe/Berlin", 1585483200, 1585436400},
      {"Asia/Kathmandu", 1585483200, 1585419300}};
  for (const auto& [zone, noon, begin] : rows) {
    const DateSettings settings("en_US", zone);
    const Ref<NSCalendar> calendar = NSCalendar::currentCalendar();
    EXPECT_EQ(calendar->startOfDayForDate(since1970(noon)), since1970(begin)) << zone;
    EXPECT_EQ(calendar->dateFromComponents(calendar->components(
                  NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay, since1970(noon))),
              since1970(begin))
        << zone;
  }
}

TEST(NSCalendar, ComparesDownToAUnit) {
  const DateSettings settings("en_US", "America/New_York");
  const Ref<NSCalendar> calendar = NSCalendar::currentCalendar();
  // How many of the units from era to second a date shares with the leap day.
  for (const auto& [other, shared] : {std::pair(leapDay + 0.5, 7),
                                      {leapDay + 10, 5},
                                      {leapDay + 1800, 4},
                                      {1582952400., 4},
                                      {1582952399., 3},
                                      {leapDay + 86400, 2},
                                      {leapDay + 365 * 86400, 1},
                                      {-1e11, 0},
                                      {NAN, 0}}) {
    int count = 0;
    for (const auto unit :
         {NSCalendarUnitEra, NSCalendarUnitYear, NSCalendarUnitMonth, NSCalendarUnitDay,
          NSCalendarUnitHour, NSCalendarUnitMinute, NSCalendarUnitSecond})
      count += calendar->isDate_equalToDate(since1970(leapDay), since1970(other), unit);
    EXPECT_EQ(count, shared) << std::to_string(other);
  }
  EXPECT_FALSE(calendar->isDate_equalToDate(nullptr, nullptr, NSCalendarUnitDay));
  EXPECT_FALSE(calendar->isDate_equalToDate(since1970(0), since1970(0), NSCalendarUnitNanosecond));
}

TEST(NSCalendar, TheAutoupdatingOneFollowsLocaleAndZone) {
  const Ref<NSCalendar> following = NSCalendar::autoupdatingCurrentCalendar();
  for (const auto& [locale, zone, expected] :
       {std::tuple("en_US", "UTC", "2020 12"), {"th_TH", "Asia/Bangkok", "2563 19"}}) {
    const DateSettings settings(locale, zone);
    const Ref<NSDateComponents> parts = following->components(allUnits, since1970(leapDay));
    EXPECT_EQ(formattedText("%lld %lld", {parts->year, parts->hour}), expected) << locale;
  }
}

}  // namespace zeb::test
