#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBUtilities/Tasks/ZEBMainThreadRunLoopDeferredTask.h>
#include <ZEBUtilities/Tasks/ZEBThread.h>
#include <gtest/gtest.h>

#include <semaphore>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Support/FakeClock.h"
#include "Support/LoopSupport.h"
#include "Support/Support.h"

namespace zeb::test {

namespace {

/// Lets seconds pass until a thread's exit is announced; returns the notification's object.
Value objectOfNextExit(FakeClock& clock) {
  std::vector<Value> objects;
  const auto token = NSNotificationCenter::defaultCenter()->addObserverForName(
      ZEBThreadWillExitNotification, nullptr, nullptr,
      [&](const Ref<NSNotification>& notification) {
        EXPECT_TRUE(NSThread::currentThread()->isMainThread());
        objects.push_back(notification->object());
      });
  const auto isAnnounced = [&] {
    clock.advance(1);
    runOnce();
    return !objects.empty();
  };
  waitUntil(isAnnounced, "a thread's exit is announced");
  NSNotificationCenter::defaultCenter()->removeObserver(token);
  return objects.front();
}

void acquire(std::binary_semaphore& semaphore, FakeClock& clock, const char* expected) {
  const auto isAcquired = [&] {
    clock.advance(1);
    return semaphore.try_acquire();
  };
  waitUntil(isAcquired, expected);
}

}  // namespace

TEST(ZEBThread, RunsBlocksInOrderUntilItIsCancelled) {
  FakeClock clock;
  auto thread = makeRef<ZEBThread>();
  thread->setName("worker");
  EXPECT_FALSE(thread->isCurrentThread());
  std::string log;
  std::binary_semaphore fired(0), isHeld(0), mayContinue(0), isReleased(0);
  thread->performBlockAsync([&] { log += 'a'; });
  thread->performBlockSync(nullptr);
  thread->performBlockSync([&] {
    EXPECT_TRUE(thread->isCurrentThread());
    thread->performBlockAsync([&] {
      log += 'd';
      NSTimer::scheduledTimerWithTimeInterval(0, false, [&](auto&) { fired.release(); });
    });
    thread->performBlockSync([&] { log += 'b'; });  // at once
    log += 'c';
  });
  acquire(fired, clock, "the thread's run loop fires a timer");
  EXPECT_EQ(log, "abcd");

  thread->performBlockAsync([&] {
    isHeld.release();
    mayContinue.acquire();
  });
  acquire(isHeld, clock, "the thread calls a block");
  thread->performBlockAsync([&] { log += '!'; });
  std::jthread waiter([&] {
    thread->performBlockSync([&] { log += '!'; });
    isReleased.release();
  });
  thread->cancel();
  EXPECT_TRUE(thread->isCancelled());
  thread->performBlockSync([&] { log += '!'; });
  mayContinue.release();
  acquire(isReleased, clock, "a caller continues although its block is skipped");
  const WeakRef<ZEBThread> weakThread(std::exchange(thread, nullptr));
  EXPECT_EQ(objectOfNextExit(clock), Value("worker")) << "the name, not the thread";
  EXPECT_EQ(log, "abcd");
  waitUntil([&] { return !weakThread.lock(); }, "the thread has released its object");

  const auto idle = makeRef<ZEBThread>();
  idle->performBlockSync([] {});
  idle->cancel();
  EXPECT_TRUE(objectOfNextExit(clock).isNil()) << "it had no name";
}

using DeferredTask = ZEBMainThreadRunLoopDeferredTask;
static_assert(!std::is_default_constructible_v<DeferredTask>);

TEST(ZEBMainThreadRunLoopDeferredTask, RunsOnceWhenTheBurstIsOver) {
  const Ref<NSRunLoop>& loop = NSRunLoop::mainRunLoop();
  const auto runUntil = [&](const auto& condition, const char* expected) {
    const auto isDone = [&] {
      // Long enough that the loop gets to wait.
      loop->runMode(NSDefaultRunLoopMode, NSDate::date().dateByAddingTimeInterval(0.001));
      return condition();
    };
    waitUntil(isDone, expected);
  };
  std::string log;
  Ref<DeferredTask> task, dropped;
  loop->performBlock([&] {
    task = makeRef<DeferredTask>([&] { log += 'T'; });
    dropped = makeRef<DeferredTask>([&] { log += '!'; });
    log += 'a';
    loop->performBlock([&] {
      log += 'b';
      dropped = nullptr;
      loop->performBlock([&] { log += 'c'; });
    });
  });
  runUntil([&] { return log.size() >= 4; }, "the task runs");
  EXPECT_EQ(log, "abcT");

  // A task that another thread's loop schedules runs on the main queue too.
  const auto thread = makeRef<ZEBThread>();
  thread->performBlockAsync([&] {
    task = makeRef<DeferredTask>([&] {
      EXPECT_TRUE(NSThread::currentThread()->isMainThread());
      log += 'U';
    });
  });
  runUntil([&] { return log.size() >= 5; }, "another thread's task runs");
  thread->cancel();

  // A task that is released between the loop's idle moment and the main queue's turn does not run.
  task = makeRef<DeferredTask>([&] { log += '!'; });
  loop->addObserver(makeRef<RunLoopObserver>(RunLoopBeforeWaiting, false, 1,
                                             [&](auto&, auto) { task = nullptr; }),
                    NSDefaultRunLoopMode);
  runUntil([&] { return !task; }, "the loop is about to wait");
  loop->performBlock([] {});
  runOnce();
  EXPECT_EQ(log, "abcTU");
  (void)makeRef<DeferredTask>(nullptr);
}

}  // namespace zeb::test
