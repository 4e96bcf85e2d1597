#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Bundle.h>
#include <ZEBUtilities/Timing.h>

#include "Support/FakeClock.h"
#include "Support/LogRecorder.h"
#include "Support/LoopSupport.h"
#include "Support/Storm.h"

namespace zeb::test {

using namespace std::chrono_literals;

constexpr auto none = ZEBTimerBackgroundingBehaviorNone;
constexpr auto pause = ZEBTimerBackgroundingBehaviorPause;
constexpr auto reset = ZEBTimerBackgroundingBehaviorReset;

struct Player : NSObject {
  static Class* runtimeClass() {
    static Class* const cls =
        registerClass("Player", {method("fired:", &Player::fired), method("tick", &Player::tick)});
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }

  void fired(const Ref<ZEBTimer>& timer) { log += timer->userInfo().description().utf8(); }
  void tick() noexcept { log += " tick"; }
  std::string log;
};
using Lines = std::vector<std::string>;

void post(const char* notification) {
  NSNotificationCenter::defaultCenter()->postNotificationName(notification);
}
void goToBackground() { post("UIApplicationDidEnterBackgroundNotification"); }
void comeBack() { post("UIApplicationWillEnterForegroundNotification"); }
Ref<ZEBTimer> idleTimer(ZEBTimerBackgroundingBehavior behavior = none) {
  return ZEBTimer::timerWithTimeInterval(1h, [](const Ref<ZEBTimer>&) {}, true, behavior);
}
const dispatch_queue_t queue = dispatch_queue_create("timer");
bool isOnLoop(const char* mode) {
  return !NSRunLoop::currentRunLoop()->limitDateForMode(mode).isNil();
}

TEST(ZEBTimer, LogsEachFiringAndInvalidatesAfterTheLast) {
  LogRecorder log;
  OLGSetLevel(OLGLevelDebug);
  const auto player = makeRef<Player>();
  const ZEBTimerBlock block = [](const Ref<ZEBTimer>&) {};
  const std::string gone = "fired for deallocated target; invalidating";
  const SEL fired = "fired:"_sel;
  const std::tuple<bool, ZEBTimerAction, ZEBTimerBlock, std::string, const char*> cases[] = {
      {false, nullptr, block, "fired with block", "NULL"},
      {true, fired, block, "fired with block", "fired:"},
      {true, fired, nullptr, "fired", "fired:"},
      {true, &Player::tick, nullptr, "fired", "NULL"},
      {true, nullptr, nullptr, gone, "NULL"},
      {false, fired, nullptr, gone, "fired:"}};
  for (const auto& [hasTarget, action, givenBlock, event, selector] : cases) {
    for (const auto& [repeats, isSilent] :
         {std::pair(false, false), {true, false}, {false, true}}) {
      const auto timer =
          makeRef<ZEBTimer>(NSDate::date(), 2.25, hasTarget ? player : makeRef<Player>(), action,
                            nullptr, givenBlock, repeats, none);
      timer->setShouldSilenceLogging(isSilent);
      timer->fire();
      EXPECT_EQ(timer->isValid(), repeats && event != gone) << event;
      EXPECT_EQ(static_cast<bool>(timer->block()), timer->isValid() && givenBlock);
      timer->invalidate();
      timer->fire();
      const std::string line =
          "7|ZEBUtilitiesTimer|ZEBUtilities/ZEBUtilities/ZEBTimer|-[ZEBTimer _fireInternal]|(" +
          timer->description() + "): " + event +
          ": timeInterval=2.2 target=" + (hasTarget ? player->className() : "nil") +
          " selector=" + selector + " block=" + givenBlock.description();
      EXPECT_EQ(log.take(), isSilent ? Lines() : Lines{line});
    }
  }
}

TEST(ZEBTimer, CallsItsTargetWithOrWithoutItself) {
  const auto player = makeRef<Player>();
  const auto fire = [&player](ZEBTimerAction action) {
    ZEBTimer::timerWithTimeInterval(1, player, action, " info", true)->fire();
  };
  fire("fired:"_sel);
  fire(&Player::fired);
  fire("tick"_sel);
  fire(&Player::tick);
  EXPECT_EQ(player->log, " info info tick tick");
  struct Other : NSObject {
    void tick() {}
  };
  EXPECT_EQ(raisedName([&] { fire(&Other::tick); }), "NSInvalidArgumentException");
  EXPECT_DEATH(fire("gone"_sel), "unrecognized selector");
}

TEST(ZEBTimer, IsScheduledOnARunLoopOrAQueue) {
  const auto loop = NSRunLoop::currentRunLoop();
  const auto fresh = idleTimer();
  EXPECT_TRUE(fresh->isValid());
  fresh->invalidate();
  fresh->scheduleWithCurrentRunLoop();
  fresh->applyToQueue(queue);
  EXPECT_FALSE(fresh->isValid());
  EXPECT_TRUE(fresh->isUniquelyReferenced()) << "no run-loop timer was made";

  const auto looped = idleTimer();
  looped->scheduleWithRunLoop(loop, "special");
  looped->applyToQueue(queue);
  looped->scheduleWithCurrentRunLoop();  // in another mode too
  EXPECT_TRUE(isOnLoop("special"));
  EXPECT_LT(loop->limitDateForMode(NSDefaultRunLoopMode), NSDate::distantFuture());
  looped->invalidate();
  EXPECT_FALSE(isOnLoop("special")) << "only the first was there";

  const auto paused = idleTimer(reset);
  paused->scheduleWithRunLoop(loop, "special");
  onNewThread([&](auto&) { paused->scheduleWithCurrentRunLoop(); });
  goToBackground();
  comeBack();
  EXPECT_TRUE(isOnLoop("special")) << "the other loop was refused";
  paused->invalidate();
}

TEST(ZEBTimer, SubclassesCanScheduleTheSource) {
  struct Sooner : ZEBTimer {
    using ZEBTimer::applyGCDTimerToSource;
    using ZEBTimer::setUpGCDTimer;
    using ZEBTimer::ZEBTimer;
  };
  std::atomic<int> firings = 0;
  const auto timer =
      makeRef<Sooner>(NSDate::date(), 1h, [&](const Ref<ZEBTimer>&) { ++firings; }, true, none);
  timer->applyGCDTimerToSource();  // has none
  timer->setUpGCDTimer(queue);
  waitUntil([&] { return firings == 1; }, "the timer has fired");
  timer->applyGCDTimerToSource();  // once more from the date, which has passed
  waitUntil([&] { return firings == 2; }, "the timer has fired again");
  timer->invalidate();
  timer->setUpGCDTimer(nullptr);
  EXPECT_FALSE(timer->isValid()) << "for good";
}

TEST(ZEBTimer, OnARunLoopLivesUntilItIsInvalidated) {
  int firings = 0;
  const WeakRef<ZEBTimer> timer = ZEBTimer::scheduledTimerWithTimeInterval(
      1h,
      [&](const Ref<ZEBTimer>& self) {
        if (++firings < 3) return self->setFireDate(NSDate::date());
        self->invalidate();
        EXPECT_FALSE(self->block()) << "the running block survives";
        NSRunLoop::currentRunLoop()->stop();
      },
      true);
  timer.lock()->setFireDate(NSDate::date());
  NSRunLoop::currentRunLoop()->run();
  EXPECT_EQ(firings, 3);
  EXPECT_FALSE(timer.lock());
}

TEST(ZEBTimer, OnAQueueOnlyItsOwnerKeepsIt) {
  std::atomic<int> deaths = 0, firings = 0;
  Ref<ZEBTimer> timer;
  dispatch_sync(queue, [&] {
    timer = ZEBTimer::queuedTimerOnQueue(
        queue, 0.0001,
        [&, probe = makeRef<Probe>(deaths)](const Ref<ZEBTimer>&) {
          if (++firings < 3) return;
          timer = nullptr;  // the firing holds the last reference
          EXPECT_TRUE(probe->isAlive);
        },
        true);
  });
  waitUntil([&] { return deaths == 1; }, "the timer has released its block");
  EXPECT_EQ(firings, 3);
}

TEST(ZEBTimer, FiresOnceWhenThreadsCompete) {
  const auto pool = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> firings = 0;
    const auto timer = ZEBTimer::queuedTimerOnQueue(
        pool, 0,
        [&](const Ref<ZEBTimer>& self) {
          if (++firings < 3) self->fire();  // valid until the firing has ended
        },
        false);
    storm(2, [&](int, std::mt19937&) { timer->fire(); });
    waitUntil([&] { return !timer->isValid(); }, "the timer has fired");
    EXPECT_EQ(firings, 3) << "the two other threads do not fire";
  }
}

TEST(ZEBTimer, PausesAndContinuesOrStartsAgain) {
  using Case = std::tuple<ZEBTimerBackgroundingBehavior, double, double, double>;
  // How long after the fire date the pause begins, how long it takes, and the delay after it.
  const Case cases[] = {{pause, -4, 100, 4}, {pause, 13, 5, 3},    {pause, 0, 1, 0},
                        {pause, 30, 1, 0},   {reset, -4, 100, 10}, {reset, 13, 1, 10}};
  FakeClock clock;
  for (const auto& [behavior, overdue, background, delay] : cases) {
    for (const int kind : {0, 1, 2}) {  // not scheduled, on the run loop, on the queue
      const NSDate fireDate = NSDate::date().dateByAddingTimeInterval(-overdue);
      // Does not fire during the test; only its date calculation is tested.
      const auto timer = makeRef<ZEBTimer>(
          NSDate::distantFuture(), 10, [](const Ref<ZEBTimer>&) {}, true, behavior);
      if (kind == 1) timer->scheduleWithRunLoop(nullptr, "special");
      if (kind == 2) timer->applyToQueue(queue);
      goToBackground();
      EXPECT_TRUE(timer->isValid() && timer->backgroundDate() == NSDate::date());
      EXPECT_FALSE(isOnLoop("special"));
      timer->setFireDate(fireDate);
      clock.setWallClockForward(background);
      comeBack();
      EXPECT_EQ(timer->fireDate().timeIntervalSinceDate(NSDate::date()), delay);
      EXPECT_TRUE(timer->isValid() && timer->backgroundDate().isNil());
      EXPECT_EQ(isOnLoop("special"), kind == 1);
      timer->setFireDate(NSDate::distantFuture());
      comeBack();
      EXPECT_EQ(timer->fireDate(), NSDate::distantFuture()) << "only once";
      timer->invalidate();
      goToBackground();
      comeBack();
      EXPECT_FALSE(timer->isValid()) << "for good";
    }
  }
  const auto steady = idleTimer(), strange = idleTimer(ZEBTimerBackgroundingBehavior(3));
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
    const auto timer = idleTimer(pause);
    goToBackground();
    std::_Exit(timer->backgroundingBehavior() == none && timer->backgroundDate().isNil() ? 0 : 1);
  };
  EXPECT_EXIT(makeInExtension(), testing::ExitedWithCode(0), "");
  const auto makeWithoutTheFramework = [] {
    ZEBSetFrameworksDirectory("/nowhere");
    LogRecorder log;
    const auto steady = idleTimer();
    const bool isSilent = log.take().empty();
    const auto timer = idleTimer(pause), another = idleTimer(pause);
    goToBackground();
    const bool isPaused = !timer->backgroundDate().isNil();
    comeBack();
    const bool goesOn = timer->backgroundDate().isNil();
    std::_Exit(isSilent && log.lines.size() == 1 && isPaused && goesOn ? 0 : 1);
  };
  EXPECT_EXIT(makeWithoutTheFramework(), testing::ExitedWithCode(0), "");
  EXPECT_EQ(idleTimer(pause)->backgroundingBehavior(), pause);
}

TEST(ZEBTimer, SurvivesAllCallsAtOnce) {
  const auto pool = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  for (int round = 0; round < 30; ++round) {
    std::atomic<int> deaths = 0, firings = 0;
    auto timer = makeRef<ZEBTimer>(
        NSDate::date(), 10us,
        [&, probe = makeRef<Probe>(deaths)](const Ref<ZEBTimer>&) { ++firings; }, true, pause);
    timer->applyToQueue(pool);
    storm(4, [&](int thread, std::mt19937&) {
      for (int i = 0; i < 50; ++i) {
        if (thread == 0) {
          goToBackground();
          comeBack();
        } else if (thread == 1) {
          timer->setFireDate(NSDate::date());
          timer->setTolerance(timer->tolerance() + 0.001);
        } else if (thread == 2) {
          timer->fire();
          timer->applyToQueue(pool);
          timer->setBlock(timer->block());
        }
      }
      if (thread != 3) return;
      waitUntil([&] { return firings >= 50; }, "the timer has fired 50 times");
      timer->invalidate();
    });
    timer->setBlock(nullptr);
    timer = nullptr;
    waitUntil([&] { return deaths == 1; }, "the block is released");
  }
}

}  // namespace zeb::test
