#include <ZEBUtilities/Dates/NSDate+ZEBAdditions.h>
#include <gtest/gtest.h>

#include <cmath>

namespace zeb::test {

namespace {

NSDate since1970(double seconds) { return NSDate::dateWithTimeIntervalSince1970(seconds); }

}  // namespace

TEST(NSDateAdditions, MillisecondsAreRoundedDownAndBounded) {
  EXPECT_EQ(zeb_dateFromMilliseconds(1500), since1970(1.5));
  for (const auto& [seconds, milliseconds] :
       {std::pair(1.5, 1500L), {-0.0005, -1L}, {1e300, INT64_MAX}, {-1e300, INT64_MIN}, {NAN, 0L}})
    EXPECT_EQ(zeb_epochMilliseconds(since1970(seconds)), NSNumber(milliseconds));
  EXPECT_EQ(zeb_epochMilliseconds(since1970(1)).objCType(), 'q');
  EXPECT_TRUE(zeb_epochMilliseconds(nullptr).isNil());
}

TEST(NSDateAdditions, DaysAreExactly86400Seconds) {
  EXPECT_EQ(zeb_dateWithDays(since1970(0.25), -3), since1970(0.25 - 3 * 86400));
  // Multiplied and added in one rounding; the product alone needs more than 53 bits.
  const std::int64_t many = (std::int64_t{1} << 53) - 1;
  EXPECT_EQ(zeb_dateWithDays(NSDate::dateWithTimeIntervalSinceReferenceDate(40000), many)
                .timeIntervalSinceReferenceDate(),
            static_cast<double>(static_cast<long double>(many) * 86400 + 40000));
  EXPECT_TRUE(zeb_dateWithDays(nullptr, 1).isNil());
  EXPECT_NEAR(zeb_timeIntervalSinceDate(zeb_dateTomorrow(), zeb_dateYesterday()), 172800, 60);
  EXPECT_NEAR(zeb_timeIntervalSinceDate(zeb_dateTomorrow(), NSDate::date()), 86400, 60);
}

TEST(NSDateAdditions, ComparesInEachWayAndWithTheEndsOfASpanAsAskedFor) {
  // Of each date with the one at 10, the four comparisons. Whether it lies between 10 and 20, with
  // the inclusions 0 to 4, of which 4 is not supported.
  for (const auto& [date, expected] : {std::pair(since1970(9), "1100 00000"),
                                       {since1970(10), "0101 01010"},
                                       {since1970(15), "0011 11110"},
                                       {since1970(20), "0011 00110"},
                                       {since1970(21), "0011 00000"},
                                       {NSDate(), "0000 00000"}}) {
    std::string results;
    for (const auto test :
         {zeb_isBefore, zeb_isBeforeOrEqualTo, zeb_isAfter, zeb_isAfterOrEqualTo}) {
      results += test(date, since1970(10)) ? '1' : '0';
      EXPECT_FALSE(test(date, nullptr));
    }
    results += ' ';
    for (std::uint64_t i = 0; i <= 4; ++i) {
      const auto includes = static_cast<ZEBDateRangeInclusion>(i);
      results += zeb_isBetweenBeginDate(date, since1970(10), since1970(20), includes) ? '1' : '0';
    }
    EXPECT_EQ(results, expected) << date;
  }
}

}  // namespace zeb::test
