#include <ZEBUtilities/Timing/ZEBRecordingStopwatch.h>
#include <gtest/gtest.h>

#include <thread>

#include "Support/FakeClock.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

struct ZEBRecordingStopwatchTest : testing::Test {
  test::FakeClock clock;
  void run(ZEBRecordingStopwatch& stopwatch, double milliseconds) {
    stopwatch.runBlock([&] { clock.advance(milliseconds / 1000); });
  }
};

TEST_F(ZEBRecordingStopwatchTest, AddsUpWhatIsLongEnough) {
  const auto watch = makeRef<ZEBRecordingStopwatch>("parse", 250ms);
  EXPECT_EQ(watch->average(), 0);
  run(*watch, 249);
  EXPECT_EQ(watch->count(), 0u);
  run(*watch, 250);
  run(*watch, 750);
  watch->runBlock(nullptr);
  EXPECT_THROW(watch->runBlock([&] {
    clock.advance(1);
    throw 1;
  }),
               int);
  EXPECT_EQ(watch->count(), 2u);
  EXPECT_DOUBLE_EQ(watch->total(), 1.0);
  EXPECT_DOUBLE_EQ(watch->average(), 0.5);
  int runs = 0;
  for (const auto& optional : {Ref<ZEBRecordingStopwatch>(), watch}) {
    ZEBRecordingStopwatch::runBlock([&] { ++runs, clock.advance(0.5); }, optional);
  }
  EXPECT_EQ(runs, 2);
  EXPECT_EQ(watch->count(), 3u);
}

TEST_F(ZEBRecordingStopwatchTest, DescribesItself) {
  const auto watch = makeRef<ZEBRecordingStopwatch>("a");
  const auto judged = makeRef<ZEBRecordingStopwatch>("b", 0s, 500ms, 1u);
  run(*judged, 1250);
  const auto text = [](const NSObject& object, const std::string& rest) {
    EXPECT_EQ(object.description(), object.NSObject::description() + rest);
  };
  text(*watch, "(name = \"a\", count = 0, average = 0.000000 s)");
  text(*judged, "(name = \"b\", count = 1, average = 1.250000 s, too slow = 0.500000 s)");
}

TEST_F(ZEBRecordingStopwatchTest, KnowsTheLivingAndTheSlow) {
  const auto names = [](const std::vector<Ref<ZEBRecordingStopwatch>>& stopwatches) {
    std::string text;
    for (const auto& stopwatch : stopwatches) text += stopwatch->name().utf8();
    return text;
  };
  const auto never = makeRef<ZEBRecordingStopwatch>("n");
  const auto slow = makeRef<ZEBRecordingStopwatch>("s", 0, 0.5, 2u);
  const auto fast = makeRef<ZEBRecordingStopwatch>("f", 0, 0.51, 0u);
  for (int i = 0; i < 1000; ++i) (void)makeRef<ZEBRecordingStopwatch>("gone");
  EXPECT_EQ(names(ZEBRecordingStopwatch::recordingStopwatches()), "nsf");
  for (const auto& watch : {never, slow, fast}) run(*watch, 500);
  EXPECT_EQ(names(ZEBRecordingStopwatch::tooSlowRecordingStopwatches()), "");
  run(*slow, 500);
  EXPECT_EQ(names(ZEBRecordingStopwatch::tooSlowRecordingStopwatches()), "s");
}

TEST_F(ZEBRecordingStopwatchTest, ReplacesOneOfManyAsOftenAsNeeded) {
  std::vector<Ref<ZEBRecordingStopwatch>> watches(1 << 16);
  for (const char* name : {"first", "second"}) {
    for (auto& watch : watches) {
      watch = nullptr;
      watch = makeRef<ZEBRecordingStopwatch>(name);
    }
  }
  EXPECT_EQ(ZEBRecordingStopwatch::recordingStopwatches(), watches);
}

TEST_F(ZEBRecordingStopwatchTest, CountsFromManyThreads) {
  auto watch = makeRef<ZEBRecordingStopwatch>("all");
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      for (int runs = 0; runs < 500; ++runs) {
        watch->runBlock([] {});
        (void)makeRef<ZEBRecordingStopwatch>("brief")->count();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(watch->count(), 2000u);
}

}  // namespace
}  // namespace zeb
