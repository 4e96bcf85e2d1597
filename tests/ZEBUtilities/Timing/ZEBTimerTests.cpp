#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Bundle/ZEBFrameworkLoading.h>
#include <ZEBUtilities/Timing/ZEBTimer.h>
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <type_traits>
#include <vector>

#include "Support/FakeClock.h"
#include "Support/LogRecorder.h"
#include "Support/Storm.h"
#include "Support/Support.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;

static_assert(!std::is_default_constructible_v<ZEBTimer>);

constexpr auto none = ZEBTimerBackgroundingBehaviorNone;
constexpr auto pause = ZEBTimerBackgroundingBehaviorPause;
constexpr auto reset = ZEBTimerBackgroundingBehaviorReset;
constexpr NSTimeInterval hour = 3600;

struct Player : NSObject {
  static Class* runtimeClass() {
    static Class* const cls =
        registerClass("Player", {method("fired:", &Player::fired), method("tick", &Player::tick)});
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }
  std::string className() const override { return "Player"; }

  void fired(const Ref<ZEBTimer>& timer) { lastTimer = timer.get(); }
  void tick() noexcept { ++ticks; }

  const ZEBTimer* lastTimer = nullptr;
  int ticks = 0;
};
struct Other : NSObject {
  void tick() {}
};

using Lines = std::vector<std::string>;

void post(const char* notification) {
  NSNotificationCenter::defaultCenter()->postNotificationName(notification);
}
void goToBackground() { post("UIApplicationDidEnterBackgroundNotification"); }
void comeBack() { post("UIApplicationWillEnterForegroundNotification"); }

void wait(const dispatch_semaphore_t& semaphore) {
  test::waitUntil([&] { return dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW) == 0; },
                  "the timer has fired");
}

TEST(ZEBTimer, LogsEachFiringAndInvalidatesAfterTheLast) {
  test::LogRecorder log;
  OLGSetLevel(OLGLevelDebug);
  const auto player = makeRef<Player>();
  const ZEBTimerBlock block = [](const Ref<ZEBTimer>&) {};
  EXPECT_EQ(block.description().find("<Block: 0x"), 0u);
  const std::string gone = "fired for deallocated target; invalidating";
  const SEL fired = "fired:"_sel;
  const struct {
    bool hasTarget;
    ZEBTimerAction action;
    ZEBTimerBlock block;
    std::string event;
    std::string properties;
  } cases[] = {
      {false, nullptr, block, "fired with block", "target=nil selector=NULL"},
      {true, fired, block, "fired with block", "target=Player selector=fired:"},
      {true, fired, nullptr, "fired", "target=Player selector=fired:"},
      {true, &Player::tick, nullptr, "fired", "target=Player selector=NULL"},
      {true, nullptr, nullptr, gone, "target=Player selector=NULL"},
      {false, fired, nullptr, gone, "target=nil selector=fired:"},
  };
  for (const auto& expected : cases) {
    for (const int variant : {0, 1, 2, 3}) {
      const bool repeats = variant & 1;
      const bool isSilent = variant & 2;
      const auto timer =
          makeRef<ZEBTimer>(NSDate::date(), 2.25, expected.hasTarget ? player : makeRef<Player>(),
                            expected.action, nullptr, expected.block, repeats, none);
      timer->setShouldSilenceLogging(isSilent);
      timer->fire();
      EXPECT_EQ(timer->isValid(), repeats && expected.event != gone) << expected.event;
      EXPECT_EQ(static_cast<bool>(timer->block()), timer->isValid() && expected.block);
      timer->invalidate();
      timer->fire();
      const std::string line =
          "7|ZEBUtilitiesTimer|ZEBUtilities/ZEBUtilities/ZEBTimer|-[ZEBTimer _fireInternal]|(" +
          timer->description() + "): " + expected.event + ": timeInterval=2.2 " +
          expected.properties + " block=" + expected.block.description();
      EXPECT_EQ(log.take(), isSilent ? Lines() : Lines{line});
    }
  }
}

TEST(ZEBTimer, CallsItsTargetWithOrWithoutItself) {
  const auto player = makeRef<Player>();
  const auto fire = [&player](ZEBTimerAction action) {
    const auto timer = ZEBTimer::timerWithTimeInterval(1, player, action, "info", true);
    EXPECT_EQ(timer->userInfo(), Value("info"));
    timer->fire();
    EXPECT_TRUE(timer->target() == player);
    return timer;
  };
  for (const ZEBTimerAction& action :
       {ZEBTimerAction("fired:"_sel), ZEBTimerAction(&Player::fired)}) {
    EXPECT_EQ(player->lastTimer, fire(action).get());
  }
  fire("tick"_sel);
  fire(&Player::tick);
  EXPECT_EQ(player->ticks, 2);
  const auto misled = ZEBTimer::timerWithTimeInterval(1, player, &Other::tick, nullptr, true);
  EXPECT_EQ(test::raisedName([&] { misled->fire(); }), "NSInvalidArgumentException");
  EXPECT_DEATH(fire("gone"_sel), "unrecognized selector");
  EXPECT_DEATH(send(misled, "init"_sel), "\\[ZEBTimer init\\]: unrecognized selector");
}

TEST(ZEBTimer, IsScheduledOnARunLoopOrAQueue) {
  const auto queue = dispatch_queue_create("timer");
  const auto loop = NSRunLoop::currentRunLoop();
  const auto make = [] {
    return ZEBTimer::timerWithTimeInterval(1h, [](const Ref<ZEBTimer>&) {}, true);
  };
  const auto fresh = make();
  EXPECT_TRUE(fresh->isValid());
  fresh->invalidate();
  EXPECT_FALSE(fresh->isValid());
  fresh->scheduleWithCurrentRunLoop();
  fresh->applyToQueue(queue);
  EXPECT_FALSE(fresh->isValid());
  EXPECT_TRUE(fresh->isUniquelyReferenced()) << "no run-loop timer was made";

  const auto looped = make();
  looped->scheduleWithRunLoop(loop, "special");
  looped->applyToQueue(queue);
  looped->scheduleWithCurrentRunLoop();  // in another mode too
  const auto queued = make();
  queued->applyToQueue(queue);
  queued->scheduleWithRunLoop(loop, "special");
  EXPECT_FALSE(loop->limitDateForMode("special").isNil());
  EXPECT_LT(loop->limitDateForMode(NSDefaultRunLoopMode), NSDate::distantFuture());
  looped->invalidate();
  EXPECT_TRUE(loop->limitDateForMode("special").isNil()) << "only the first was there";
  EXPECT_TRUE(queued->isValid());
}

TEST(ZEBTimer, SubclassesCanScheduleTheSource) {
  struct Sooner : ZEBTimer {
    using ZEBTimer::applyGCDTimerToSource;
    using ZEBTimer::setUpGCDTimer;
    using ZEBTimer::ZEBTimer;
  };
  const auto fired = dispatch_semaphore_create(0);
  const auto make = [&fired] {
    return makeRef<Sooner>(
        NSDate::date(), hour, [&fired](const Ref<ZEBTimer>&) { dispatch_semaphore_signal(fired); },
        true, none);
  };
  const auto timer = make();
  timer->applyGCDTimerToSource();  // has none
  timer->setUpGCDTimer(dispatch_queue_create("timer"));
  wait(fired);
  timer->applyGCDTimerToSource();  // once more from the date, which has passed
  wait(fired);
  timer->invalidate();
  timer->setUpGCDTimer(nullptr);
  EXPECT_FALSE(timer->isValid()) << "for good";

  const auto looped = make();
  looped->setFireDate(NSDate::distantFuture());
  looped->scheduleWithRunLoop(nullptr, "special");
  looped->setUpGCDTimer(nullptr);
  looped->setFireDate(NSDate::date());
  EXPECT_FALSE(NSRunLoop::currentRunLoop()->limitDateForMode("special").isNil());
  looped->invalidate();
  EXPECT_FALSE(looped->isValid()) << "no source was made beside the run loop's timer";
}

TEST(ZEBTimer, OnARunLoopLivesUntilItIsInvalidated) {
  int firings = 0;
  WeakRef<ZEBTimer> timer = ZEBTimer::scheduledTimerWithTimeInterval(
      0.0001,
      [&](const Ref<ZEBTimer>& self) {
        if (++firings < 3) return;
        self->invalidate();
        EXPECT_FALSE(self->block()) << "the running block survives";
        NSRunLoop::currentRunLoop()->stop();
      },
      true);
  timer.lock()->setTolerance(100us);
  NSRunLoop::currentRunLoop()->run();
  EXPECT_EQ(firings, 3);
  EXPECT_FALSE(timer.lock());

  // A timer that does not repeat, with a date that is moved.
  const auto once = ZEBTimer::scheduledTimerWithTimeInterval(
      1h, [](const Ref<ZEBTimer>&) { NSRunLoop::currentRunLoop()->stop(); }, false);
  once->setFireDate(NSDate::date());
  NSRunLoop::currentRunLoop()->run();
  EXPECT_FALSE(once->isValid());
}

TEST(ZEBTimer, OnAQueueOnlyItsOwnerKeepsIt) {
  const auto queue = dispatch_queue_create("timer");
  const auto fired = dispatch_semaphore_create(0);
  std::atomic<int> deaths = 0;
  int firings = 0;
  Ref<ZEBTimer> timer;
  dispatch_sync(queue, [&] {
    timer = ZEBTimer::queuedTimerOnQueue(
        queue, 0.0001,
        [&, probe = makeRef<test::Probe>(deaths)](const Ref<ZEBTimer>&) {
          if (++firings < 3) return;
          timer = nullptr;  // the firing holds the last reference
          EXPECT_TRUE(probe->isAlive);
          dispatch_semaphore_signal(fired);
        },
        true);
  });
  wait(fired);
  dispatch_sync(queue, [] {});
  EXPECT_EQ(deaths, 1);
  EXPECT_EQ(firings, 3);

  const auto once = ZEBTimer::queuedTimerOnQueue(
      queue, 1h, [&](const Ref<ZEBTimer>&) { dispatch_semaphore_signal(fired); }, false);
  once->setTolerance(0.001);
  EXPECT_TRUE(once->isValid());
  once->setFireDate(NSDate::date());
  wait(fired);
  dispatch_sync(queue, [] {});
  EXPECT_FALSE(once->isValid());
}

TEST(ZEBTimer, FiresOnceWhenThreadsCompete) {
  const auto queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> firings = 0;
    std::latch start(2);
    const auto timer = ZEBTimer::queuedTimerOnQueue(
        queue, 0,
        [&](const Ref<ZEBTimer>& self) {
          if (++firings < 3) self->fire();  // valid until the firing has ended
        },
        false);
    std::thread other([&] {
      start.arrive_and_wait();
      timer->fire();
    });
    start.arrive_and_wait();
    timer->fire();
    other.join();
    test::waitUntil([&] { return !timer->isValid(); }, "the timer has fired");
    EXPECT_EQ(firings, 3) << "the two other threads do not fire";
  }
}

TEST(ZEBTimer, PausesAndContinuesOrStartsAgain) {
  const struct {
    ZEBTimerBackgroundingBehavior behavior;
    double pausedAfterFireDate;
    double background;
    double delay;
  } cases[] = {
      {pause, -4, 100, 4}, {pause, 13, 5, 3},    {pause, 0, 1, 0},
      {pause, 30, 1, 0},   {reset, -4, 100, 10}, {reset, 13, 1, 10},
  };
  const auto queue = dispatch_queue_create("timer");
  test::FakeClock clock;
  for (const auto& expected : cases) {
    for (const int kind : {0, 1, 2}) {  // not scheduled, on the run loop, on the queue
      const NSDate fireDate =
          NSDate::date().dateByAddingTimeInterval(-expected.pausedAfterFireDate);
      // Does not fire during the test; only its date calculation is tested.
      const auto timer = makeRef<ZEBTimer>(
          NSDate::date().dateByAddingTimeInterval(hour), 10, [](const Ref<ZEBTimer>&) {}, true,
          expected.behavior);
      if (kind == 1) timer->scheduleWithRunLoop(nullptr, "special");
      if (kind == 2) timer->applyToQueue(queue);
      goToBackground();
      EXPECT_EQ(timer->backgroundDate(), NSDate::date());
      EXPECT_TRUE(timer->isValid());
      EXPECT_TRUE(NSRunLoop::currentRunLoop()->limitDateForMode("special").isNil());
      timer->setFireDate(fireDate);
      clock.setWallClockForward(expected.background);
      comeBack();
      EXPECT_EQ(timer->fireDate().timeIntervalSinceDate(NSDate::date()), expected.delay);
      EXPECT_TRUE(timer->backgroundDate().isNil());
      EXPECT_TRUE(timer->isValid());
      EXPECT_EQ(NSRunLoop::currentRunLoop()->limitDateForMode("special").isNil(), kind != 1);
      timer->setFireDate(NSDate::date().dateByAddingTimeInterval(hour));
      comeBack();
      EXPECT_EQ(timer->fireDate().timeIntervalSinceDate(NSDate::date()), hour) << "only once";
      timer->invalidate();
      goToBackground();
      comeBack();
      EXPECT_FALSE(timer->isValid()) << "for good";
    }
  }
  const auto steady = ZEBTimer::timerWithTimeInterval(hour, nullptr, true);
  constexpr auto unknown = static_cast<ZEBTimerBackgroundingBehavior>(3);
  const auto strange = ZEBTimer::timerWithTimeInterval(hour, nullptr, true, unknown);
  const NSDate fireDate = strange->fireDate();
  goToBackground();
  EXPECT_TRUE(steady->backgroundDate().isNil() && strange->backgroundDate().isNil());
  steady->setBackgroundDate(fireDate);
  strange->setBackgroundDate(fireDate);
  comeBack();
  EXPECT_TRUE(strange->backgroundDate().isNil() && strange->fireDate().isIdenticalTo(fireDate));
  EXPECT_EQ(steady->backgroundDate(), fireDate) << "does not observe backgrounding";
}

TEST(ZEBTimerDeathTest, IgnoresBackgroundingInExtensionsOnly) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process of its own
  const auto makeInExtension = [] {
    NSBundle::setMainBundle(
        NSBundle::bundleWithPath("/app", {{"NSExtension", NSDictionary::dictionary()}}));
    const auto timer = ZEBTimer::timerWithTimeInterval(1, nullptr, true, pause);
    goToBackground();
    std::_Exit(timer->backgroundingBehavior() == none && timer->backgroundDate().isNil() ? 0 : 1);
  };
  EXPECT_EXIT(makeInExtension(), testing::ExitedWithCode(0), "");
  const auto makeWithoutTheFramework = [] {
    ZEBSetFrameworksDirectory("/nowhere");
    test::LogRecorder log;
    const auto steady = ZEBTimer::timerWithTimeInterval(1, nullptr, true);
    const bool isSilent = log.take().empty();
    const auto timer = ZEBTimer::timerWithTimeInterval(1, nullptr, true, pause);
    const auto another = ZEBTimer::timerWithTimeInterval(1, nullptr, true, pause);
    goToBackground();
    const bool isPaused = !timer->backgroundDate().isNil();
    comeBack();
    const bool goesOn = timer->backgroundDate().isNil();
    std::_Exit(isSilent && log.lines.size() == 1 && isPaused && goesOn ? 0 : 1);
  };
  EXPECT_EXIT(makeWithoutTheFramework(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(ZEBTimer::timerWithTimeInterval(1, nullptr, true, pause)->backgroundingBehavior(),
            pause);
}

TEST(ZEBTimer, SurvivesAllCallsAtOnce) {
  const auto queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  for (int round = 0; round < 30; ++round) {
    std::atomic<int> deaths = 0;
    std::atomic<int> firings = 0;
    {
      const auto timer = makeRef<ZEBTimer>(
          NSDate::date(), 10us,
          [&, probe = makeRef<test::Probe>(deaths)](const Ref<ZEBTimer>&) { ++firings; }, true,
          pause);
      timer->applyToQueue(queue);
      test::storm(4, [&](int thread, std::mt19937&) {
        for (int i = 0; i < 50; ++i) {
          if (thread == 0) {
            goToBackground();
            comeBack();
          } else if (thread == 1) {
            timer->setFireDate(NSDate::date());
            timer->setTolerance(timer->tolerance() + 0.001);
          } else if (thread == 2) {
            timer->fire();
            timer->applyToQueue(queue);
            timer->setBlock(timer->block());
          }
        }
        if (thread != 3) return;
        test::waitUntil([&] { return firings >= 50; }, "the timer has fired 50 times");
        timer->invalidate();
        EXPECT_FALSE(timer->isValid());
      });
      EXPECT_FALSE(timer->isValid());
      timer->setBlock(nullptr);
    }
    test::waitUntil([&] { return deaths == 1; }, "the block is released");
  }
}

}  // namespace
}  // namespace zeb
