#include <ZEBPlatform/Memory/WeakRef.h>

#include <semaphore>

#include "Support/FakeClock.h"
#include "Support/LoopSupport.h"

namespace zeb::test {

using namespace std::chrono_literals;

const auto addTimer = [](NSTimeInterval interval, bool repeats, auto block) {
  return NSTimer::scheduledTimerWithTimeInterval(interval, repeats, std::move(block));
};

/// Seconds from now to the date, rounded to a microsecond.
static double distance(const NSDate& date) {
  return std::round(date.timeIntervalSinceDate(NSDate::date()) * 1e6) / 1e6;
}

LOOP_TEST(RunLoopTimers, RepeatOnTheirGridAndMissedFiringsBecomeOneLateOne) {
  FakeClock clock;
  int firings = 0;
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(1s, true, [&](auto&) { ++firings; });
  // In the fifth step six are missed: one late firing, and on with the grid.
  const std::tuple<double, int, double> steps[] = {{0.9, 0, 0.1}, {0.2, 1, 0.9}, {1.3, 2, 0.6},
                                                   {0.5, 2, 0.1}, {5.5, 3, 0.6}, {0.7, 4, 0.9}};
  for (const auto& [passes, expectedFirings, next] : steps) {
    clock.advance(passes);
    for (int turn = 0; turn < 2; ++turn) runOnce();
    EXPECT_EQ(firings, expectedFirings);
    for (const NSDate& date : {timer->fireDate(), loop->limitDateForMode(NSDefaultRunLoopMode)})
      EXPECT_EQ(distance(date), next) << firings;
  }
  clock.setWallClockForward(1000);  // the moment stays
  runOnce();
  EXPECT_EQ(firings, 4);
  // In several modes it fires once for all of them.
  loop->addTimer(timer, NSRunLoopCommonModes);
  for (const char* mode : {"other", "other", NSDefaultRunLoopMode}) {
    loop->addTimer(timer, mode);
    const int before = firings;
    clock.advance(1);
    EXPECT_FALSE(runOnce("third"));
    runOnce(mode);
    runOnce("other");
    EXPECT_EQ(firings, before + 1) << mode;
  }
  timer->invalidate();
  EXPECT_FALSE(runOnce());
  EXPECT_TRUE(loop->limitDateForMode("other").isNil());
}

LOOP_TEST(RunLoopTimers, OddArguments) {
  FakeClock clock;
  int firings = 0;
  const auto count = [&](const Ref<NSTimer>&) { ++firings; };
  for (const double tiny : {-1.0, 1e-10, std::nan("")})
    EXPECT_EQ(makeRef<NSTimer>(nullptr, tiny, true, count)->timeInterval(), 0.0001);
  const auto timer = makeRef<NSTimer>(nullptr, 1, true, count, "info");
  timer->fire();
  EXPECT_TRUE(timer->isValid() && timer->userInfo() == "info");
  timer->invalidate();
  timer->fire();
  timer->setFireDate(NSDate::distantFuture());
  EXPECT_EQ(distance(timer->fireDate()), 0);
  const auto once = makeRef<NSTimer>(NSDate::distantFuture(), NAN, false, count);
  EXPECT_EQ(once->timeInterval(), 0);
  for (int turn = 0; turn < 2; ++turn) once->fire();
  const auto never = makeRef<NSTimer>(NSDate::date(), INFINITY, true, count);
  for (const auto& added : {never, once, timer, Ref<NSTimer>()})
    loop->addTimer(added, NSDefaultRunLoopMode);
  addTimer(1, false, nullptr);
  for (int turn = 0; turn < 2; ++turn, clock.advance(1e9)) runOnce();
  EXPECT_EQ(firings, 3);
  never->invalidate();
  EXPECT_FALSE(runOnce());
}

LOOP_TEST(RunLoopTimers, ChangesMadeFromInsideAFiring) {
  FakeClock clock;
  std::string log;
  std::atomic<int> deaths{0};
  // Invalidated inside its firing: the block lives until it ends, and not longer.
  addTimer(1, true, [&, probe = makeRef<Probe>(deaths)](const Ref<NSTimer>& timer) {
    timer->invalidate();
    log += probe->isAlive && !timer->isValid() ? 'a' : '!';
  });
  // Invalidates another one that is due as well.
  const auto victim = addTimer(1.2, true, [&](auto&) { log += '!'; });
  addTimer(1.1, false, [&](const Ref<NSTimer>& timer) {
    log += timer->isValid() ? 'b' : '!';
    victim->invalidate();
  });
  // Set to the past again and again: once in each pass, so that others have their turn.
  const auto eager = addTimer(1.3, true, [&](const Ref<NSTimer>& timer) {
    log += 'c';
    timer->setFireDate(NSDate::distantPast());
  });
  // Adds one that is due at once.
  const auto add = [&](auto&) { addTimer(-1, false, [&](auto&) { log += 'e'; }); };
  addTimer(1.4, false, add);
  // Runs the loop: is left alone meanwhile, while the others are not.
  addTimer(1.5, true, [&](const Ref<NSTimer>& timer) {
    log += '<';
    clock.advance(10);
    runOnce();
    timer->invalidate();
    log += '>';
  });
  clock.advance(2);
  runOnce();
  EXPECT_TRUE(log == "abc<ce>" && deaths == 1) << log;
  eager->invalidate();
  EXPECT_FALSE(runOnce());
  // Drops the last reference to its timer, which is needed until the block is released.
  Ref<NSTimer> dropped;
  WeakRef<NSTimer> weak;
  std::shared_ptr<void> captured(nullptr, [&](void*) { log += weak.lock() ? 'f' : '!'; });
  dropped = makeRef<NSTimer>(NSDate::date(), 1, false,
                             [&, captured = std::move(captured)](auto&) { dropped = nullptr; });
  weak = dropped;
  dropped->fire();
  EXPECT_EQ(log.back(), 'f');
}

TEST(RunLoopTimers, WakeASleepingLoopAndToleranceSharesTheWakeUp) {
  FakeClock clock;
  std::counting_semaphore asleep(0), fired(0);
  const LoopThread other;
  const auto note = [&](auto&, auto) { asleep.release(); };
  const auto observer = makeRef<RunLoopObserver>(RunLoopBeforeWaiting, true, 0, note);
  const auto observe = [&] { other.loop->addObserver(observer, NSDefaultRunLoopMode); };
  performOnThread(other.thread, observe, true);
  asleep.acquire();
  const auto add = [&](std::chrono::duration<double> interval, auto tolerance) {
    const auto timer =
        NSTimer::timerWithTimeInterval(interval, false, [&](auto&) { fired.release(); });
    timer->setTolerance(tolerance);
    other.loop->addTimer(timer, NSDefaultRunLoopMode);
    asleep.acquire();  // wakes up once, to see when to wake next
    return timer;
  };
  add(1s, 500ms);
  add(1400ms, 0.0);
  for (const double seconds : {1.2, 0.25}) clock.advance(seconds);
  for (int timer = 0; timer < 2; ++timer) fired.acquire();
  asleep.acquire();
  EXPECT_FALSE(asleep.try_acquire());  // one wake-up for both

  // Moved nearer by another thread while the loop sleeps.
  add(1000s, 0s)->setFireDate(NSDate::date().dateByAddingTimeInterval(1));
  clock.advance(1.1);
  fired.acquire();
}

// Finds data races under the thread sanitizer, and what they would leave behind.
TEST(RunLoopItems, InvalidatingAndMovingRacesWithCalls) {
  const LoopThread other;
  std::atomic<int> deaths{0};
  for (int round = 0; round < 3000; ++round) {
    std::atomic<bool> isOver{false};
    const auto block = [&, probe = makeRef<Probe>(deaths)](auto&&...) { EXPECT_FALSE(isOver); };
    const auto timer = NSTimer::timerWithTimeInterval(0, round % 2, block);
    const auto observer = makeRef<RunLoopObserver>(RunLoopAllActivities, round % 2, 0, block);
    const auto source = makeRef<RunLoopSource>(block);
    other.loop->addTimer(timer, NSDefaultRunLoopMode);
    other.loop->addObserver(observer, NSRunLoopCommonModes);
    other.loop->addSource(source, NSDefaultRunLoopMode);
    if (round % 3 == 0) timer->setFireDate(NSDate::date());
    if (round % 5 == 0) timer->fire();
    source->signal();
    timer->invalidate();
    observer->invalidate();
    source->invalidate();
    performOnThread(other.thread, [&] { isOver = true; }, true);  // what was under way has ended
    performOnThread(other.thread, [] {}, true);
  }
  EXPECT_EQ(deaths, 3000);
}

}  // namespace zeb::test
