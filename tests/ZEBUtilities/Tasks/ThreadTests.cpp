#include <ZEBPlatform/Notifications.h>
#include <ZEBUtilities/Tasks.h>

#include <semaphore>

#include "Support/FakeClock.h"
#include "Support/LoopSupport.h"
#include "Support/Support.h"

namespace zeb::test {

void acquire(std::binary_semaphore& semaphore, FakeClock& clock, const char* expected) {
  waitUntil([&] { return semaphore.try_acquire(); }, expected, [&] { clock.advance(1); });
}

TEST(ZEBThread, RunsBlocksInOrderUntilItIsCancelled) {
  FakeClock clock;
  const auto& center = NSNotificationCenter::defaultCenter();
  std::vector<Value> ended;
  const auto token = center->addObserverForName(
      ZEBThreadWillExitNotification, nullptr, nullptr, [&](const auto& notification) {
        EXPECT_TRUE(NSThread::currentThread()->isMainThread());
        ended.push_back(notification->object());
      });
  // Also a thread of another test may end now.
  const auto hasEnded = [&](const Value& name) { return std::ranges::count(ended, name) > 0; };
  const auto pass = [&] { clock.advance(1), runOnce(); };
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
  thread->performBlockSync([&] { log += '!'; });
  mayContinue.release();
  acquire(isReleased, clock, "a caller continues although its block is skipped");
  const WeakRef<ZEBThread> weakThread(std::exchange(thread, nullptr));
  waitUntil([&] { return hasEnded("worker") && !weakThread.lock(); }, "the thread has ended", pass);
  EXPECT_EQ(log, "abcd");

  const auto idle = makeRef<ZEBThread>();
  idle->performBlockSync([] {});
  idle->cancel();
  waitUntil([&] { return hasEnded(nullptr); }, "the idle thread has ended", pass);
  center->removeObserver(token);
}

using DeferredTask = ZEBMainThreadRunLoopDeferredTask;

TEST(ZEBMainThreadRunLoopDeferredTask, RunsOnceWhenTheBurstIsOver) {
  const Ref<NSRunLoop>& loop = NSRunLoop::mainRunLoop();
  // Long enough that the loop gets to wait.
  const auto run = [&] { loop->runMode(NSDefaultRunLoopMode, std::chrono::milliseconds(1)); };
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
  waitUntil([&] { return log.size() >= 4; }, "the task runs", run);
  EXPECT_EQ(log, "abcT");

  // A task that another thread's loop schedules runs on the main queue too.
  const auto thread = makeRef<ZEBThread>();
  thread->performBlockAsync([&] {
    task = makeRef<DeferredTask>([&] {
      EXPECT_TRUE(NSThread::currentThread()->isMainThread());
      log += 'U';
    });
  });
  waitUntil([&] { return log.size() >= 5; }, "another thread's task runs", run);
  thread->cancel();

  // A task that is released between the loop's idle moment and the main queue's turn does not run.
  task = makeRef<DeferredTask>([&] { log += '!'; });
  loop->addObserver(makeRef<RunLoopObserver>(RunLoopBeforeWaiting, false, 1,
                                             [&](auto&, auto) { task = nullptr; }),
                    NSDefaultRunLoopMode);
  waitUntil([&] { return !task; }, "the loop is about to wait", run);
  loop->performBlock([] {});
  runOnce();
  EXPECT_EQ(log, "abcTU");
  (void)makeRef<DeferredTask>(nullptr);
}

}  // namespace zeb::test
