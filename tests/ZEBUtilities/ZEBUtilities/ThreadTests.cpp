#include <Memory/WeakRef.h>
#include <RunLoop/NSNotificationCenter.h>
#include <ZEBUtilities/ZEBMainThreadRunLoopDeferredTask.h>
#include <ZEBUtilities/ZEBThread.h>
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <semaphore>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

namespace zeb::test {

namespace {

void runMainLoopUntil(const std::function<bool()>& isDone) {
  while (!isDone())
    NSRunLoop::mainRunLoop()->runMode(NSDefaultRunLoopMode, NSDate::distantFuture());
}

/// Collects the objects of the exit notifications, which must arrive on the main thread.
class Exits {
 public:
  Exits() {
    NSNotificationCenter::defaultCenter()->addObserver(
        token_,
        [this](const Ref<NSNotification>& notification) {
          EXPECT_TRUE(NSThread::currentThread()->isMainThread());
          objects.push_back(notification->object());
        },
        ZEBThreadWillExitNotification);
  }
  std::vector<Value> objects;

 private:
  struct Token : NSObject {};
  Ref<NSObject> token_ = makeRef<Token>();
};

}  // namespace

TEST(ZEBThread, RunsBlocksInOrderUntilItIsCancelled) {
  Exits exits;
  auto thread = makeRef<ZEBThread>();
  thread->setName("worker");
  EXPECT_EQ(thread->name(), "worker"_ns);
  EXPECT_FALSE(thread->isCurrentThread());
  std::string log;
  thread->performBlockAsync([&] { log += 'a'; });
  thread->performBlockSync(nullptr);
  thread->performBlockSync([&] {
    EXPECT_TRUE(thread->isCurrentThread());
    thread->performBlockAsync([&] { log += 'd'; });
    thread->performBlockSync([&] { log += 'b'; });  // at once
    log += 'c';
  });
  std::binary_semaphore fired(0);
  thread->performBlockAsync(
      [&] { NSTimer::scheduledTimerWithTimeInterval(0, false, [&](auto&) { fired.release(); }); });
  fired.acquire();
  EXPECT_EQ(log, "abcd");

  std::binary_semaphore isHeld(0), mayGoOn(0);
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
  runMainLoopUntil([&] { return !exits.objects.empty(); });
  EXPECT_EQ(exits.objects, std::vector<Value>{"worker"});  // the name, not the thread
  EXPECT_EQ(log, "abcd");
  while (weakThread.lock()) std::this_thread::yield();  // nobody but its thread held it
}

TEST(ZEBThread, EndsWithinAboutASecondWhenCancelledWhileIdle) {
  Exits exits;
  const auto thread = makeRef<ZEBThread>();
  thread->performBlockSync([] {});
  thread->cancel();
  runMainLoopUntil([&] { return !exits.objects.empty(); });
  EXPECT_EQ(exits.objects, std::vector<Value>{nullptr});  // it had no name
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
    EXPECT_TRUE(task->task());
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
  EXPECT_EQ(log, "abcTU");

  // Released between the loop's idle moment and the main queue: too early as well.
  task = makeRef<DeferredTask>([&] { log += '!'; });
  const auto atTheLast = makeRef<RunLoopObserver>(RunLoopBeforeWaiting, false, 1,
                                                  [&](auto&, auto) { task = nullptr; });
  loop->addObserver(atTheLast, NSDefaultRunLoopMode);
  runMainLoopUntil([&] { return !task; });
  loop->performBlock([] {});
  loop->runMode(NSDefaultRunLoopMode, NSDate::distantPast());
  EXPECT_EQ(log, "abcTU");

  makeRef<DeferredTask>(nullptr);
  thread->cancel();
}

}  // namespace zeb::test
