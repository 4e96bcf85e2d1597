#include <ZEBUtilities/Timing/ZEBLaunchTime.h>
#include <ZEBUtilities/Timing/ZEBStopwatch.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "Support/FakeClock.h"
#include "Support/FakeSystem.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

const std::uint64_t launchSeenByStaticObject = ZEBLaunchStartTime();

TEST(ZEBStopwatch, CountsFromTheLaunchAndMeasuresLaps) {
  EXPECT_GT(launchSeenByStaticObject, 0u) << "noted before static objects of programs are made";
  YOVLoadProcessStartTime();
  EXPECT_EQ(ZEBLaunchStartTime(), launchSeenByStaticObject) << "noted once";
  EXPECT_GT(ZEBTimeIntervalSinceLaunch(), 0.0);
  EXPECT_DOUBLE_EQ(ZEBTimeIntervalBetweenMachTimes(0, UINT64_MAX), 18446744073.709551615);
  EXPECT_DOUBLE_EQ(ZEBTimeIntervalBetweenMachTimes(UINT64_MAX, 0), -18446744073.709551615);
  test::FakeClock clock(ZEBLaunchStartTime() + 1'000'000'000);
  const auto fromNow = makeRef<ZEBStopwatch>();
  const auto fromBefore = makeRef<ZEBStopwatch>(4s);
  EXPECT_DOUBLE_EQ(fromBefore->intervalSinceLaunchForTimeIntervalMethod(), -3.0);
  clock.advance(2);
  EXPECT_DOUBLE_EQ(fromNow->timeInterval(), 2.0);
  EXPECT_DOUBLE_EQ(fromBefore->timeInterval(), 6.0) << "the first lap is from the start";
  clock.advance(0.5);
  EXPECT_DOUBLE_EQ(fromNow->timeIntervalSinceStart(), 2.5);
  EXPECT_DOUBLE_EQ(fromNow->timeInterval(), 0.5) << "only laps move the reference";
}

TEST(LaunchTimeDeathTest, GreetsUnlessTheEnvironmentSaysNot) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process that is loaded anew
  const auto showGreeting = [] {
    std::fprintf(stderr, "<%s>", test::greetingAtLoad().c_str());
    std::_Exit(0);
  };
  const auto exited = testing::ExitedWithCode(0);
  EXPECT_EXIT(showGreeting(), exited, "<<14>zeb_test_.*\\[[0-9]+\\]: ZEBUtilities says hello>");
  setenv("ZEB_NO_GREETING", "1", true);
  EXPECT_EXIT(showGreeting(), exited, "<>");
  unsetenv("ZEB_NO_GREETING");
}

}  // namespace
}  // namespace zeb
