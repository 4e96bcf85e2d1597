#include <Foundation/NSException.h>
#include <RunLoop/NSNotificationCenter.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <semaphore>
#include <thread>

#include "../Support.h"
#include "LoopSupport.h"

namespace zeb::test {

namespace {

std::string systemName() {
  char name[16] = {};
  pthread_getname_np(pthread_self(), name, sizeof name);
  return name;
}

}  // namespace

TEST(Threads, RunTheirBlockOnceAndEnd) {
  std::atomic<int> deaths{0};
  std::binary_semaphore started(0), mayEnd(0);
  auto thread = makeRef<NSThread>([&, probe = makeRef<Probe>(deaths)] {
    const Ref<NSThread> self = NSThread::currentThread();
    EXPECT_EQ(self->name(), "a thread with ä long name"_ns);
    EXPECT_EQ(systemName(), "a thread with ");  // not half a character
    self->setName("renamed");
    EXPECT_EQ(systemName(), "renamed");
    EXPECT_FALSE(self->isMainThread());
    EXPECT_EQ(self->runLoop(), NSRunLoop::currentRunLoop());
    self->threadDictionary().setObject(makeRef<Probe>(deaths), "probe");
    EXPECT_TRUE(self->threadDictionary()["probe"].isObject());
    pthread_attr_t attributes;
    std::size_t stackSize = 0;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstacksize(&attributes, &stackSize);
    pthread_attr_destroy(&attributes);
    EXPECT_GE(stackSize, 300'001U);
    EXPECT_LT(stackSize, 2'000'000U);  // the usual size is larger, and sanitizers add to ours
    started.release();
    mayEnd.acquire();
  });
  thread->setName("a thread with ä long name");
  thread->setStackSize(300'001);
  EXPECT_FALSE(thread->isExecuting());
  std::binary_semaphore exited(0);
  const auto token = NSNotificationCenter::defaultCenter()->addObserverForName(
      NSThreadWillExitNotification, thread, nullptr, [&](const Ref<NSNotification>& notification) {
        EXPECT_EQ(notification->object().object<NSThread>(), NSThread::currentThread());
        EXPECT_FALSE(NSThread::currentThread()->isFinished());
        exited.release();
      });
  thread->start();
  EXPECT_EQ(raisedName([&] { thread->start(); }), NSInvalidArgumentException);
  started.acquire();
  EXPECT_TRUE(thread->isExecuting());
  std::thread([&] { thread->setName("from elsewhere"); }).join();
  EXPECT_FALSE(thread->isCancelled());
  thread->cancel();
  EXPECT_TRUE(thread->isCancelled());
  mayEnd.release();
  exited.acquire();
  performOnThread(thread, [] {}, true);  // returns when the thread has ended
  EXPECT_TRUE(thread->isFinished());
  EXPECT_FALSE(thread->isExecuting());
  EXPECT_EQ(deaths, 2);
  NSNotificationCenter::defaultCenter()->removeObserver(token);

  std::atomic<bool> didRun{false};
  thread = makeRef<NSThread>([&] { didRun = true; });
  thread->cancel();
  thread->start();
  performOnThread(thread, [] {}, true);
  EXPECT_FALSE(didRun);
}

TEST(Threads, EveryThreadHasOneAndTheMainThreadIsKnown) {
  EXPECT_EQ(NSThread::currentThread(), NSThread::mainThread());
  EXPECT_TRUE(NSThread::mainThread()->isMainThread());
  const std::string name = systemName();
  NSThread::mainThread()->setName("main");
  EXPECT_EQ(systemName(), name);
  NSThread::sleepForTimeInterval(-1);
  NSThread::sleepUntilDate(NSDate::distantPast());
  Ref<NSThread> foreign;
  std::thread([&] {
    foreign = NSThread::currentThread();
    EXPECT_EQ(NSThread::currentThread(), foreign);
    EXPECT_TRUE(foreign->isExecuting());
    EXPECT_EQ(NSRunLoop::mainRunLoop(), NSThread::mainThread()->runLoop());
    foreign->setName("foreign");
    EXPECT_EQ(systemName(), "foreign");
  }).join();
  EXPECT_TRUE(foreign->isFinished());
  foreign->setName("too late");
  EXPECT_EQ(foreign->name(), "too late"_ns);
}

TEST(Threads, PerformingOnThem) {
  const Ref<NSThread> self = NSThread::currentThread();
  std::string log;
  performOnThread(self, [&] { log += 'a'; }, true);
  EXPECT_EQ(log, "a");
  performOnThread(self, [&] { log += 'b'; }, false);
  EXPECT_EQ(log, "a");
  runOnce();
  EXPECT_EQ(log, "ab");
  performOnThread(Ref<NSThread>(), [&] { log += '!'; }, true);
  performOnThread(self, Block<void()>(), true);

  const LoopThread other;
  for (int round = 0; round < 1000; ++round) {
    int value = 0;  // on this stack: waiting must mean waiting
    performOnThread(other.thread, [&] { value = round; }, true);
    ASSERT_EQ(value, round);
  }
  std::binary_semaphore done(0);
  performOnThread(other.thread, [&] { done.release(); }, false, NSArray{NSDefaultRunLoopMode});
  done.acquire();
  performOnThread(other.thread, [&] { log += '!'; }, true, NSArray::array());  // in no mode
  EXPECT_EQ(log, "ab");
}

TEST(Threads, TheLoopEndsWithItsThread) {
  std::atomic<int> deaths{0};
  std::atomic<bool> wasCalled{false};
  std::binary_semaphore isWaiting(0), mayEnd(0);
  Ref<NSTimer> timer;
  const auto probing = [&] { return [&, probe = makeRef<Probe>(deaths)] { wasCalled = true; }; };
  const auto thread = makeRef<NSThread>([&] {
    timer = NSTimer::scheduledTimerWithTimeInterval(
        1000, true,
        [probe = makeRef<Probe>(deaths),
         self = Ref<NSObject>(NSThread::currentThread())](const Ref<NSTimer>&) {});
    NSRunLoop::currentRunLoop()->addPort(NSPort::port(), "other");
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
  EXPECT_EQ(deaths, 5);
  EXPECT_FALSE(timer->isValid());
  const auto late = NSTimer::timerWithTimeInterval(1, true, nullptr);
  thread->runLoop()->addTimer(late, NSDefaultRunLoopMode);
  EXPECT_FALSE(late->isValid());
  EXPECT_FALSE(wasCalled);

  // Never started: what was posted dies with it.
  makeRef<NSThread>(nullptr)->runLoop()->performBlock(probing());
  EXPECT_EQ(deaths, 6);
}

TEST(Threads, ThreadLocalObjectsMayUseTheLoopUntilTheEnd) {
  static std::atomic<int> destroyed{0};
  struct Local {
    ~Local() {
      NSRunLoop::currentRunLoop()->performBlock([] { FAIL(); });
      EXPECT_EQ(NSThread::currentThread()->isFinished(), isDestroyedLast);
      ++destroyed;
    }
    bool isDestroyedLast;
  };
  for (const bool isDestroyedLast : {true, false}) {
    std::thread([isDestroyedLast] {
      if (!isDestroyedLast) NSThread::currentThread();
      static thread_local Local local;
      local.isDestroyedLast = isDestroyedLast;
      NSThread::currentThread();
    }).join();
  }
  EXPECT_EQ(destroyed, 2);
}

}  // namespace zeb::test
