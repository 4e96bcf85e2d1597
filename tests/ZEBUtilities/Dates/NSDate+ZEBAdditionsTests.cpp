#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>
#include <gtest/gtest.h>

#include <limits>

namespace zeb::test {

namespace {

NSDate since1970(double seconds) { return NSDate::dateWithTimeIntervalSince1970(seconds); }

}  // namespace

TEST(NSDateAdditions, MillisecondsAreRoundedDownAndBounded) {
  EXPECT_EQ(zeb_dateFromMilliseconds(1500), since1970(1.5));
  using Limits = std::numeric_limits<std::int64_t>;
  const std::pair<double, std::int64_t> rows[] = {{1.5, 1500},
                                                  {-0.0005, -1},
                                                  {0, 0},
                                                  {1e300, Limits::max()},
                                                  {-1e300, Limits::min()},
                                                  {std::numeric_limits<double>::quiet_NaN(), 0}};
  for (const auto& [seconds, milliseconds] : rows) {
    const NSNumber number = zeb_epochMilliseconds(since1970(seconds));
    EXPECT_EQ(number, NSNumber(milliseconds)) << seconds;
    EXPECT_EQ(number.objCType(), 'q');
  }
  EXPECT_TRUE(zeb_epochMilliseconds(nullptr).isNil());
}

TEST(NSDateAdditions, DaysAreExactly86400Seconds) {
  const NSDate date = since1970(0.25);
  EXPECT_EQ(zeb_dateWithDays(date, -3), since1970(0.25 - 3 * 86400));
  // Multiplied and added in one rounding; the product alone needs more than 53 bits.
  const std::int64_t many = (std::int64_t{1} << 53) - 1;
  EXPECT_EQ(zeb_dateWithDays(NSDate::dateWithTimeIntervalSinceReferenceDate(40000), many)
                .timeIntervalSinceReferenceDate(),
            static_cast<double>(static_cast<long double>(many) * 86400 + 40000));
  EXPECT_TRUE(zeb_dateWithDays(nullptr, 1).isNil());
  EXPECT_NEAR(zeb_timeIntervalSinceDate(zeb_dateTomorrow(), zeb_dateYesterday()), 172800, 60);
  EXPECT_NEAR(zeb_timeIntervalSinceDate(zeb_dateTomorrow(), NSDate::date()), 86400, 60);
}

TEST(NSDateAdditions, ComparesInEachWay) {
  const NSDate early = since1970(1), late = since1970(2);
  const std::tuple<NSDate, NSDate, const char*> rows[] = {
      {early, late, "1100"},   {early, early, "0101"},  {late, early, "0011"},
      {nullptr, late, "0000"}, {late, nullptr, "0000"}, {nullptr, nullptr, "0000"}};
  for (const auto& [date, other, expected] : rows) {
    std::string results;
    for (const auto test : {zeb_isBefore, zeb_isBeforeOrEqualTo, zeb_isAfter, zeb_isAfterOrEqualTo})
      results += test(date, other) ? '1' : '0';
    EXPECT_EQ(results, expected) << date << " and " << other;
  }
}

TEST(NSDateAdditions, TheEndsOfASpanBelongToItAsAskedFor) {
  // For each date, the results with the inclusions 0 to 4, of which 4 is not supported.
  const std::pair<NSDate, const char*> rows[] = {{since1970(9), "00000"},  {since1970(10), "01010"},
                                                 {since1970(15), "11110"}, {since1970(20), "00110"},
                                                 {since1970(21), "00000"}, {nullptr, "00000"}};
  for (const auto& [date, expected] : rows) {
    std::string results;
    for (std::uint64_t includes = 0; includes <= 4; ++includes)
      results += zeb_isBetweenBeginDate(date, since1970(10), since1970(20),
                                        static_cast<ZEBDateRangeInclusion>(includes))
                     ? '1'
                     : '0';
    EXPECT_EQ(results, expected) << date;
  }
}

}  // namespace zeb::test
