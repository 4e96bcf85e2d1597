#include <ZEBUtilities/Timing.h>

#include "Support/FakeClock.h"
#include "Support/FakeSystem.h"
#include "Support/Storm.h"

namespace zeb::test {

using namespace std::chrono_literals;

const std::uint64_t launchSeenByStaticObject = ZEBLaunchStartTime();

TEST(ZEBStopwatch, CountsFromTheLaunchAndMeasuresLaps) {
  EXPECT_GT(launchSeenByStaticObject, 0u) << "noted before static objects of programs are made";
  YOVLoadProcessStartTime();
  EXPECT_EQ(ZEBLaunchStartTime(), launchSeenByStaticObject) << "noted once";
  EXPECT_DOUBLE_EQ(ZEBTimeIntervalBetweenMachTimes(0, UINT64_MAX), 18446744073.709551615);
  EXPECT_DOUBLE_EQ(ZEBTimeIntervalBetweenMachTimes(UINT64_MAX, 0), -18446744073.709551615);
  FakeClock clock(ZEBLaunchStartTime() + 1'000'000'000);
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
    std::fprintf(stderr, "<%s>", greetingAtLoad().c_str());
    std::_Exit(0);
  };
  const auto exited = testing::ExitedWithCode(0);
  EXPECT_EXIT(showGreeting(), exited, "<<14>zeb_test_.*\\[[0-9]+\\]: ZEBUtilities says hello>");
  setenv("ZEB_NO_GREETING", "1", true);
  EXPECT_EXIT(showGreeting(), exited, "<>");
  unsetenv("ZEB_NO_GREETING");
}

using Stopwatch = ZEBRecordingStopwatch;

struct ZEBRecordingStopwatchTest : testing::Test {
  FakeClock clock;
  void run(const Ref<Stopwatch>& stopwatch, double milliseconds) {
    Stopwatch::runBlock([&] { clock.advance(milliseconds / 1000); }, stopwatch);
  }
};

TEST_F(ZEBRecordingStopwatchTest, AddsUpWhatIsLongEnough) {
  const auto watch = makeRef<Stopwatch>("parse", 250ms);
  const std::string rest = "(name = \"parse\", count = 0, average = 0.000000 s)";
  EXPECT_EQ(watch->description(), watch->NSObject::description() + rest);
  for (const double milliseconds : {249, 250, 750}) run(watch, milliseconds);
  watch->runBlock(nullptr);
  const auto fails = [&] {
    clock.advance(1);
    throw 1;
  };
  EXPECT_THROW(watch->runBlock(fails), int);
  run(nullptr, 1000);
  EXPECT_EQ(watch->count(), 2u);
  EXPECT_DOUBLE_EQ(watch->total(), 1.0);
  EXPECT_DOUBLE_EQ(watch->average(), 0.5);
}

TEST_F(ZEBRecordingStopwatchTest, KnowsTheLivingAndTheSlow) {
  const auto never = makeRef<Stopwatch>("n");
  const auto slow = makeRef<Stopwatch>("s", 0, 0.5, 2u);
  const auto fast = makeRef<Stopwatch>("f", 0, 0.51, 0u);
  for (int i = 0; i < 1000; ++i) (void)makeRef<Stopwatch>("gone");
  using Watches = std::vector<Ref<Stopwatch>>;
  EXPECT_EQ(Stopwatch::recordingStopwatches(), (Watches{never, slow, fast}));
  for (const auto& watch : {never, slow, fast}) run(watch, 500);
  EXPECT_EQ(Stopwatch::tooSlowRecordingStopwatches(), Watches());
  run(slow, 500);
  EXPECT_EQ(Stopwatch::tooSlowRecordingStopwatches(), Watches{slow});
  const std::string rest = "(name = \"s\", count = 2, average = 0.500000 s, too slow = 0.500000 s)";
  EXPECT_EQ(slow->description(), slow->NSObject::description() + rest);
}

TEST_F(ZEBRecordingStopwatchTest, ReplacesOneOfManyAsOftenAsNeeded) {
  std::vector<Ref<Stopwatch>> watches(1 << 16);
  for (const char* name : {"first", "second"}) {
    for (auto& watch : watches) {
      watch = nullptr;
      watch = makeRef<Stopwatch>(name);
    }
  }
  EXPECT_EQ(Stopwatch::recordingStopwatches(), watches);
}

TEST_F(ZEBRecordingStopwatchTest, CountsFromManyThreads) {
  const auto watch = makeRef<Stopwatch>("all");
  storm(4, [&](int, std::mt19937&) {
    for (int runs = 0; runs < 500; ++runs) {
      watch->runBlock([] {});
      (void)makeRef<Stopwatch>("brief")->count();
    }
  });
  EXPECT_EQ(watch->count(), 2000u);
}

}  // namespace zeb::test
