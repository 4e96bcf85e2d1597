#include <ZEBUtilities/ZEBLaunchTime.h>
#include <ZEBUtilities/ZEBStopwatch.h>
#include <gtest/gtest.h>

#include "FakeSystem.h"

namespace zeb {
namespace {

TEST(ZEBStopwatch, CountsFromTheLaunchAndMeasuresLaps) {
  EXPECT_EQ(test::greetingAtLoad(), "14:ZEBUtilities says hello") << "user, information";
  EXPECT_GT(ZEBTimeIntervalSinceLaunch(), 0.0);
  EXPECT_DOUBLE_EQ(ZEBTimeIntervalBetweenMachTimes(0, UINT64_MAX), 18446744073.709551615);
  EXPECT_DOUBLE_EQ(ZEBTimeIntervalBetweenMachTimes(UINT64_MAX, 0), -18446744073.709551615);
  test::fakeClock = ZEBLaunchStartTime() + 1'000'000'000;
  const auto fromNow = makeRef<ZEBStopwatch>();
  const auto fromBefore = makeRef<ZEBStopwatch>(4.0);
  EXPECT_DOUBLE_EQ(fromBefore->intervalSinceLaunchForTimeIntervalMethod(), -3.0);
  test::fakeClock += 2'000'000'000;
  EXPECT_DOUBLE_EQ(fromNow->timeInterval(), 2.0);
  EXPECT_DOUBLE_EQ(fromBefore->timeInterval(), 6.0) << "the first lap is from the start";
  test::fakeClock += 500'000'000;
  EXPECT_DOUBLE_EQ(fromNow->timeIntervalSinceStart(), 2.5);
  EXPECT_DOUBLE_EQ(fromNow->timeInterval(), 0.5) << "only laps move the reference";
  test::fakeClock = 0;
}

}  // namespace
}  // namespace zeb
