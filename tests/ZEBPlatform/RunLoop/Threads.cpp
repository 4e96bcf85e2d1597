#include <ZEBPlatform/Linux/detail/Stack.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>

#include <semaphore>

#include "Support/LoopSupport.h"

namespace zeb::test {

static std::string systemName() {
  char name[16] = {};
  pthread_getname_np(pthread_self(), name, sizeof name);
  return name;
}

TEST(Threads, RunTheirBlockOnceAndEnd) {
  std::atomic<int> deaths{0}, exits{0};
  std::binary_semaphore started(0), mayEnd(0);
  auto thread = makeRef<NSThread>([&, probe = makeRef<Probe>(deaths)] {
    EXPECT_EQ(systemName(), "a thread with ");  // not half a character
    EXPECT_EQ(NSThread::currentThread()->runLoop(), NSRunLoop::currentRunLoop());
    NSThread::currentThread()->threadDictionary().setObject(makeRef<Probe>(deaths), "probe");
    EXPECT_LT(remainingStack(), 2'000'000U);  // the usual size is larger, sanitizers add to ours
    started.release();
    mayEnd.acquire();
    EXPECT_EQ(systemName(), "from elsewhere");
  });
  thread->setName("a thread with ä long name");
  thread->setStackSize(300'001);
  const auto& center = NSNotificationCenter::defaultCenter();
  const auto noteExit = [&](const auto&) { exits += !NSThread::currentThread()->isFinished(); };
  center->addObserver(thread, noteExit, NSThreadWillExitNotification, thread);
  thread->start();
  EXPECT_EQ(raisedName([&] { thread->start(); }), NSInvalidArgumentException);
  started.acquire();
  thread->setName("from elsewhere");
  mayEnd.release();
  performOnThread(thread, [] {}, true);  // returns when the thread has ended
  EXPECT_TRUE(thread->isFinished() && exits == 1 && deaths == 2);

  thread = makeRef<NSThread>([] { FAIL(); });
  thread->cancel();
  thread->start();
  performOnThread(thread, [] {}, true);
}

TEST(Threads, EveryThreadHasOneUntilItsEnd) {
  EXPECT_EQ(NSThread::currentThread(), NSThread::mainThread());
  const std::string name = systemName();
  NSThread::mainThread()->setName("main");
  EXPECT_EQ(systemName(), name);
  NSThread::sleepForTimeInterval(-1);
  NSThread::sleepUntilDate(NSDate::distantPast());

  // Also in destructors of thread-local objects, before and after that of its own.
  struct Local {
    ~Local() {
      NSRunLoop::currentRunLoop()->performBlock([] { FAIL(); });
      EXPECT_EQ(NSThread::currentThread()->isFinished(), isDestroyedLast);
    }
    bool isDestroyedLast;
  };
  for (const bool isDestroyedLast : {true, false}) {
    Ref<NSThread> foreign;
    std::thread([&] {
      if (!isDestroyedLast) NSThread::currentThread();
      static thread_local Local local;
      local.isDestroyedLast = isDestroyedLast;
      (foreign = NSThread::currentThread())->setName("foreign");
      EXPECT_EQ(systemName(), "foreign");
    }).join();
    EXPECT_TRUE(foreign->isFinished());
    foreign->setName("too late");
  }
}

TEST(Threads, PerformingOnThem) {
  const Ref<NSThread> self = NSThread::currentThread();
  std::string log;
  performOnThread(self, [&] { log += 'b'; }, false);
  performOnThread(self, [&] { log += 'a'; }, true);
  EXPECT_TRUE(runOnce() && log == "ab") << log;
  performOnThread(Ref<NSThread>(), [] { FAIL(); }, true);
  performOnThread(self, Block<void()>(), true);

  const LoopThread other;
  performOnThread(other.thread, [] { FAIL(); }, true, NSArray::array());  // in no mode
}

TEST(Threads, TheLoopEndsWithItsThread) {
  std::atomic<int> deaths{0};
  std::binary_semaphore isWaiting(0), mayEnd(0);
  Ref<NSTimer> timer;
  const auto probing = [&] { return [probe = makeRef<Probe>(deaths)](auto&&...) { FAIL(); }; };
  const auto thread = makeRef<NSThread>([&] {
    timer = NSTimer::scheduledTimerWithTimeInterval(1000, true, probing());
    isWaiting.release();
    mayEnd.acquire();
  });
  thread->runLoop()->performBlock(probing());  // before it has begun
  thread->start();
  isWaiting.acquire();
  performOnThread(thread, probing(), false);
  std::thread waiter([&] { performOnThread(thread, probing(), true); });
  mayEnd.release();
  waiter.join();  // released by the thread's end
  performOnThread(thread, probing(), true);
  EXPECT_TRUE(deaths == 5 && !timer->isValid());
  const auto late = NSTimer::timerWithTimeInterval(1, true, nullptr);
  thread->runLoop()->addTimer(late, NSDefaultRunLoopMode);
  EXPECT_FALSE(late->isValid());

  // Blocks whose release drops further ones, and waits for some.
  struct Link : NSObject {
    ~Link() override {
      performOnThread(ended, [] { FAIL(); }, true);
      if (next) ended->runLoop()->performBlock([held = std::move(next)] { FAIL(); });
    }
    Ref<NSThread> ended;
    Ref<Link> next;
  };
  runOnSmallStack([&] {
    Ref<Link> chain;
    for (int length = 0; length < 100'000; ++length) {
      const auto link = makeRef<Link>();
      link->ended = thread;
      link->next = std::exchange(chain, link);
    }
  });

  makeRef<NSThread>(nullptr)->runLoop()->performBlock(probing());  // never started
  EXPECT_EQ(deaths, 6);
}

}  // namespace zeb::test
