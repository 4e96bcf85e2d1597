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
  EXPECT_TRUE(calendar->dateFromComponents(nullptr).isNil());
  EXPECT_FALSE(calendar->components(allUnits, nullptr) ||
               NSCalendar::calendarWithIdentifier("mayan"));
}

TEST(NSCalendar, AddsByTheCalendarAndTimesBySeconds) {
  const DateSettings settings("en_US", "Europe/Berlin");
  using Parts = NSDateComponents;
  const auto added = [](std::int64_t Parts::* part, std::int64_t amount, std::int64_t days = 0) {
    const Ref<Parts> amounts = makeRef<Parts>();
    amounts->day = days;
    *amounts.*part = amount;
    return NSCalendar::currentCalendar()->dateByAddingComponents(amounts, since1970(leapDay));
  };
  EXPECT_EQ(added(&Parts::year, 1), since1970(leapDay + 365 * 86400));
  EXPECT_EQ(added(&Parts::month, 1, 1), since1970(leapDay + 30 * 86400 - 3600));
  EXPECT_EQ(added(&Parts::weekOfYear, 5), since1970(leapDay + 35 * 86400 - 3600));
  EXPECT_EQ(added(&Parts::hour, 35 * 24), since1970(leapDay + 35 * 86400));
  EXPECT_EQ(added(&Parts::nanosecond, -250'000'000), since1970(leapDay - 0.25));
  for (const std::int64_t years : {std::int64_t{6'000'000}, INT64_MAX - 1, INT64_MIN})
    EXPECT_TRUE(added(&Parts::year, years).isNil());
}

TEST(NSCalendar, DaysBeginAfterTheGapWhereMidnightIsSkipped) {
  const std::tuple<const char*, double, double> rows[] = {
      {"America/Sao_Paulo", 1541350800, 1541300400},  // 2018-11-04 began at 01:00 -02:00
      {"America/Havana", 1604250000, 1604203200},     // 2020-11-01 showed 00:00 twice
      {"Europe/Berlin", 1585483200, 1585436400}};
  for (const auto& [zone, noon, begin] : rows) {
    const DateSettings settings("en_US", zone);
    const Ref<NSCalendar> calendar = NSCalendar::currentCalendar();
    EXPECT_EQ(calendar->startOfDayForDate(since1970(noon)), since1970(begin)) << zone;
    constexpr auto day = NSCalendarUnitYear | NSCalendarUnitMonth | NSCalendarUnitDay;
    const Ref<NSDateComponents> parts = calendar->components(day, since1970(noon));
    EXPECT_EQ(calendar->dateFromComponents(parts), since1970(begin)) << zone;
  }
}

TEST(NSCalendar, ComparesDownToAUnit) {
  const DateSettings settings("en_US", "America/New_York");
  const Ref<NSCalendar> calendar = NSCalendar::currentCalendar();
  // How many of the units from era to second these dates share with the leap day.
  std::string shared;
  for (const double other : {leapDay + 0.5, leapDay + 10, leapDay + 1800, 1582952400., 1582952399.,
                             leapDay + 86400, leapDay + 365 * 86400, -1e11, double{NAN}}) {
    int count = 0;
    for (const auto unit :
         {NSCalendarUnitEra, NSCalendarUnitYear, NSCalendarUnitMonth, NSCalendarUnitDay,
          NSCalendarUnitHour, NSCalendarUnitMinute, NSCalendarUnitSecond})
      count += calendar->isDate_equalToDate(since1970(leapDay), since1970(other), unit);
    shared += std::to_string(count);
  }
  EXPECT_EQ(shared, "754432100");
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
