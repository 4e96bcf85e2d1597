#include <ZEBPlatform/Linux/detail/ThreadState.h>
#include <ZEBUtilities/Device.h>
#include <dlfcn.h>
#include <signal.h>

#include <cerrno>
#include <mutex>
#include <regex>

#include "Support/LoopSupport.h"
#include "Support/Support.h"

namespace zeb::test {

// Exported from the program, so that stacks name them.
[[gnu::noinline]] void callNamed(const std::function<void()>& body) {
  body();
  asm volatile("");  // no tail call
}
[[gnu::noinline]] void recurse(int depth, const std::function<void()>& body) {
  depth == 0 ? body() : recurse(depth - 1, body);
  asm volatile("");  // so that the calls above return here
}

namespace {

/// Counts the lines that name the function.
int linesWith(const NSArray& stack, const NSString& function) {
  int count = 0;
  for (const Value& line : stack) count += NSString(line).containsString(function);
  return count;
}

void runOn(const LoopThread& target, FunctionView<void()> block) {
  performOnThread(target.thread, block, true);
}

/// A thread with a run loop whose stack other threads can see.
struct VisibleThread : LoopThread {
  VisibleThread() { enable(true); }
  ~VisibleThread() { enable(false); }
  void enable(bool enabled) {
    runOn(*this, [&] { zeb_setCallStackPeekEnabled(NSThread::currentThread(), enabled); });
  }
  NSArray stack() const { return zeb_callStackSymbols(thread); }
};

bool hasDefaultAction() {
  struct sigaction action;
  sigaction(SIGPROF, nullptr, &action);
  return !(action.sa_flags & SA_SIGINFO) && action.sa_handler == SIG_DFL;
}

}  // namespace

TEST(CallStackSymbols, LinesNameImageAddressAndFunction) {
  NSArray stack;
  callNamed([&] { stack = NSThread::callStackSymbols(); });
  const std::regex form(R"((\d+) +(\S+) +0x[0-9a-f]{16} \S.* \+ \d+)");
  int number = 0;
  for (const Value& line : stack) {
    std::smatch parts;
    const std::string text = NSString(line).utf8();
    ASSERT_TRUE(std::regex_match(text, parts, form)) << text;
    EXPECT_EQ(parts[1], std::to_string(number++));
  }
  EXPECT_TRUE(linesWith(stack, " zeb_test_ZEBUtilities_Device ") > 0 &&
              linesWith(stack, " libc.so.6 ") > 0);
  EXPECT_EQ(linesWith(stack, "zeb::test::callNamed(std::function<void ()> const&) + "), 1);
  EXPECT_EQ(linesWith(stack, "callStackSymbols"), 0) << "the caller comes first";
  recurse(500, [&] { stack = NSThread::callStackSymbols(); });
  EXPECT_TRUE(stack.count() == 128 && linesWith(stack, "zeb::test::recurse(") > 100);
  void* const nowhere = nullptr;
  EXPECT_EQ(ZEBStackTraceSampler::_stackWithProgramCounters(&nowhere, 1)[0],
            Value("0   ???" + std::string(33, ' ') + "0x0000000000000000 0x0 + 0"));
  EXPECT_TRUE(ZEBStackTraceSampler::_stackWithProgramCounters(nullptr, 1).isNil() &&
              ZEBStackTraceSampler::_stackWithProgramCounters(&nowhere, 0).isNil());
}

TEST(ZEBStackTraceSampler, OnlyTheThreadItselfChoosesToBeVisible) {
  {
    const VisibleThread target;
    const Ref<NSObject> sampler = associatedObject(*target.thread, kTraceSampler);
    zeb_setCallStackPeekEnabled(target.thread, false);
    runOn(target, [&] { zeb_setCallStackPeekEnabled(target.thread, true); });
    EXPECT_EQ(associatedObject(*target.thread, kTraceSampler), sampler);
    EXPECT_GT(target.stack().count(), 3);
    // On the thread itself there is no signal, and its run loop need not run.
    runOn(target, [&] {
      callNamed([&] { EXPECT_EQ(linesWith(target.stack(), "zeb::test::callNamed("), 1); });
    });
    const LoopThread other;
    runOn(other, [&] { zeb_setCallStackPeekEnabled(target.thread, true); });
    EXPECT_TRUE(zeb_callStackSymbols(other.thread).isNil());
  }
  EXPECT_TRUE(hasDefaultAction());
}

TEST(ZEBStackTraceSampler, DeliversTheStackAtTheSignal) {
  std::atomic<int> reached{0}, finished{0};  // depths; the thread reads them until it ends
  const VisibleThread target;
  for (const int depth : {20, 500}) {
    target.loop->performBlock([&, depth] {
      recurse(depth, [&] {
        reached = depth;
        while (finished < depth) {
          NSRunLoop::currentRunLoop()->runMode(NSDefaultRunLoopMode, NSDate::date());
        }
      });
    });
    waitUntil([&] { return reached == depth; }, "the thread is deep in calls");
    const NSArray stack = target.stack();
    finished = depth;
    runOn(target, [] {});
    const int calls = linesWith(stack, "zeb::test::recurse(");
    EXPECT_TRUE(depth < 128 ? calls == depth + 1 : stack.count() == 128 && calls > 90) << calls;
  }
}

TEST(ZEBStackTraceSampler, AnUndeliveredCaptureComesFirst) {
  const VisibleThread target;
  runOn(target, [] {
    errno = 1234;
    callNamed([] { raise(SIGPROF); });
    EXPECT_EQ(errno, 1234);
    raise(SIGPROF);  // the first capture is kept
  });
  EXPECT_EQ(linesWith(target.stack(), "zeb::test::callNamed("), 1);
  EXPECT_EQ(linesWith(target.stack(), "zeb::test::callNamed("), 0);

  const auto sampler = Ref<ZEBStackTraceSampler>(
      static_cast<ZEBStackTraceSampler*>(associatedObject(*target.thread, kTraceSampler).get()));
  sampler->setTargetThread(nullptr);
  EXPECT_TRUE(target.stack().isNil());  // captured, but nobody delivers it
  sampler->setTargetThread(target.thread);
  EXPECT_GT(target.stack().count(), 3);
}

TEST(ZEBStackTraceSampler, TheLastSamplerDecidesAboutTheSignal) {
  VisibleThread target;
  {
    const VisibleThread other;
  }
  EXPECT_TRUE(hasDefaultAction() && target.stack().isNil()) << "blind, but not deadly";
  std::jthread asking;
  runOn(target, [&] {
    zeb_setCallStackPeekEnabled(target.thread, false);
    zeb_setCallStackPeekEnabled(target.thread, true);
    std::atomic<int> requester{0};
    asking = std::jthread([&] {
      requester = currentThreadIdentifier();
      EXPECT_GT(target.stack().count(), 3);
    });
    waitUntil([&] { return requester && isThreadBlocked(requester); }, "a sample is wanted");
    zeb_setCallStackPeekEnabled(target.thread, false);
    EXPECT_TRUE(hasDefaultAction()) << "although the sampler is still in use";
    zeb_setCallStackPeekEnabled(target.thread, true);
  });
  asking.join();
  EXPECT_GT(target.stack().count(), 3) << "the old sampler is gone";
}

TEST(ZEBStackTraceSampler, AThreadThatEndsKeepsNobodyWaiting) {
  for (int round = 0; round < 200; ++round) {
    std::atomic<bool> isVisible{false}, isOver{false};
    std::atomic<int> requester{0};
    const auto thread = makeRef<NSThread>([&] {
      zeb_setCallStackPeekEnabled(NSThread::currentThread(), true);
      isVisible = true;
      while (!isOver) usleep(10);
    });
    thread->start();
    waitUntil([&] { return isVisible.load(); }, "the thread is visible");
    std::jthread asking([&] {
      requester = currentThreadIdentifier();
      EXPECT_TRUE(zeb_callStackSymbols(thread).isNil());
      requester = -1;
    });
    // In half of the rounds the thread ends while it is being interrupted.
    if (round % 2) waitUntil([&] { return requester && isThreadBlocked(requester); }, "it waits");
    isOver = true;
    waitUntil([&] { return requester == -1 && thread->isFinished(); }, "both have ended");
  }
  const VisibleThread target;
  EXPECT_GT(target.stack().count(), 3) << "captures of ended threads are dropped";
}

TEST(ZEBStackTraceSampler, SurvivesStormsOfAllocationsThrowsAndLoading) {
  const VisibleThread target;
  // ThreadSanitizer does not see the loader's own lock.
  std::mutex loading;
  const auto load = [&] {
    std::unique_lock guard(loading);
    void* const library = dlopen("libutil.so.1", RTLD_LAZY);
    guard.unlock();
    ASSERT_TRUE(library) << dlerror();
    guard.lock();
    dlclose(library);
  };
  std::atomic<bool> isOver{false};
  int passes = 0;
  std::function<void()> work = [&] {
    for (std::size_t i = 0; i < 5; ++i) {
      std::vector<std::string> texts(i, std::string(i * 100, 'x'));
      try {
        recurse(static_cast<int>(i), [] { throw std::runtime_error("thrown in a storm"); });
      } catch (const std::runtime_error& error) {
        texts.emplace_back(error.what());
      }
    }
    if (++passes % 8 == 0) load();
    if (!isOver) target.loop->performBlock([&] { work(); });
  };
  target.loop->performBlock([&] { work(); });
  std::jthread loader([&] {
    while (!isOver) {
      load();
      usleep(100);  // the others need the loader's lock, too
    }
  });
  for (int i = 0; i < 10'000; ++i) {
    const NSArray stack = target.stack();
    // One line if the signal met the unwinder.
    const std::size_t count = stack.count();
    ASSERT_TRUE(count == 1 || (count > 3 && count <= 128)) << i << stack;
  }
  isOver = true;
  runOn(target, [] {});
}

}  // namespace zeb::test
