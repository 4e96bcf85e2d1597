#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <gtest/gtest.h>

#include <cmath>

namespace zeb::test {

TEST(NSDate, ConvertsBetweenEpochsAndClocks) {
  using namespace std::chrono_literals;
  using Moment = std::chrono::system_clock::time_point;
  const auto since1970 = NSDate::dateWithTimeIntervalSince1970;
  EXPECT_EQ(since1970(0).timeIntervalSinceReferenceDate(), -978307200.0);
  EXPECT_EQ(since1970(0).dateByAddingTimeInterval(86400.5).timeIntervalSince1970(), 86400.5);
  EXPECT_EQ(NSDate(Moment(1500ms)), since1970(1.5));
  EXPECT_EQ(since1970(-1.5).timePoint(), Moment(-1500ms));
  EXPECT_EQ(since1970(1e300).timePoint(), Moment::max());
  EXPECT_EQ(since1970(-1e300).timePoint(), Moment::min());
  EXPECT_TRUE(since1970(0) < since1970(1e-6) && !since1970(978307201).isEqual(1));
  const NSDate minusZero = NSDate::dateWithTimeIntervalSinceReferenceDate(-0.0);
  EXPECT_TRUE(since1970(978307200) == minusZero && since1970(978307200).hash() == minusZero.hash());
}

TEST(NSDate, DescribesItself) {
  const std::pair<double, const char*> cases[] = {
      {0, "1970-01-01 00:00:00 +0000"},           {-0.25, "1969-12-31 23:59:59 +0000"},
      {951782400.9, "2000-02-29 00:00:00 +0000"}, {253402300800, "10000-01-01 00:00:00 +0000"},
      {1e300, "1e+300 s since 2001-01-01"},       {-HUGE_VAL, "-inf s since 2001-01-01"}};
  for (const auto& [seconds, text] : cases) {
    EXPECT_EQ(NSDate::dateWithTimeIntervalSince1970(seconds).description(), text);
  }
}

}  // namespace zeb::test
