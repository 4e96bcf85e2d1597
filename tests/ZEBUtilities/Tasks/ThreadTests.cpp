#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBUtilities/Tasks/ZEBMainThreadRunLoopDeferredTask.h>
#include <ZEBUtilities/Tasks/ZEBThread.h>
#include <gtest/gtest.h>

#include <functional>
#include <semaphore>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

namespace zeb::test {

namespace {

void runMainLoopUntil(const std::function<bool()>& isDone) {
  while (!isDone())
    NSRunLoop::mainRunLoop()->runMode(NSDefaultRunLoopMode, NSDate::distantFuture());
}

/// Runs the main loop until a thread's exit is told of, on the main thread; answers the notification's object.
Value objectOfNextExit() {
  std::vector<Value> objects;
  const auto token = NSNotificationCenter::defaultCenter()->addObserverForName(
      ZEBThreadWillExitNotification, nullptr, nullptr,
      [&](const Ref<NSNotification>& notification) {
        EXPECT_TRUE(NSThread::currentThread()->isMainThread());
        objects.push_back(notification->object());
      });
  runMainLoopUntil([&] { return !objects.empty(); });
  NSNotificationCenter::defaultCenter()->removeObserver(token);
  return objects.front();
}

}  // namespace

TEST(ZEBThread, RunsBlocksInOrderUntilItIsCancelled) {
  auto thread = makeRef<ZEBThread>();
  thread->setName("worker");
  EXPECT_FALSE(thread->isCurrentThread());
  std::string log;
  std::binary_semaphore fired(0), isHeld(0), mayGoOn(0);
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
  fired.acquire();
  EXPECT_EQ(log, "abcd");

  thread->performBlockAsync([&] {
    isHeld.release();
    mayGoOn.acquire();
  });
  isHeld.acquire();
  thread->performBlockAsync([&] { log += '!'; });
  std::thread waiter([&] { thread->performBlockSync([&] { log += '!'; }); });
  thread->cancel();
  EXPECT_TRUE(thread->isCancelled());
  thread->performBlockSync([&] { log += '!'; });
  mayGoOn.release();
  waiter.join();  // goes on although its block is skipped
  const WeakRef<ZEBThread> weakThread(std::exchange(thread, nullptr));
  EXPECT_EQ(objectOfNextExit(), Value("worker"));  // the name, not the thread
  EXPECT_EQ(log, "abcd");
  while (weakThread.lock()) std::this_thread::yield();  // nobody but its thread held it
}

TEST(ZEBThread, EndsWithinAboutASecondWhenCancelledWhileIdle) {
  const auto thread = makeRef<ZEBThread>();
  thread->performBlockSync([] {});
  thread->cancel();
  EXPECT_TRUE(objectOfNextExit().isNil());  // it had no name
}

using DeferredTask = ZEBMainThreadRunLoopDeferredTask;
static_assert(!std::is_default_constructible_v<DeferredTask>);

TEST(ZEBMainThreadRunLoopDeferredTask, RunsOnceWhenTheBurstIsOver) {
  const Ref<NSRunLoop>& loop = NSRunLoop::mainRunLoop();
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
  runMainLoopUntil([&] { return log.size() >= 4; });
  EXPECT_EQ(log, "abcT");

  // Scheduled on another thread's loop, it runs on the main queue all the same.
  const auto thread = makeRef<ZEBThread>();
  thread->performBlockAsync([&] {
    task = makeRef<DeferredTask>([&] {
      EXPECT_TRUE(NSThread::currentThread()->isMainThread());
      log += 'U';
    });
  });
  runMainLoopUntil([&] { return log.size() >= 5; });
  thread->cancel();

  // Released between the loop's idle moment and the main queue's turn: too early as well.
  task = makeRef<DeferredTask>([&] { log += '!'; });
  loop->addObserver(makeRef<RunLoopObserver>(RunLoopBeforeWaiting, false, 1,
                                             [&](auto&, auto) { task = nullptr; }),
                    NSDefaultRunLoopMode);
  runMainLoopUntil([&] { return !task; });
  loop->performBlock([] {});
  loop->runMode(NSDefaultRunLoopMode, NSDate::distantPast());
  EXPECT_EQ(log, "abcTU");
  (void)makeRef<DeferredTask>(nullptr);
}

}  // namespace zeb::test
