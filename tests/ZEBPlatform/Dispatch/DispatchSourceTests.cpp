#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Dispatch/DispatchSource.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <signal.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>

#include "Support/Storm.h"

namespace zeb::test {

namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

const dispatch_queue_t& defaultQueue() {
  static const dispatch_queue_t queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  return queue;
}

}  // namespace

TEST(DispatchSource, ABusyQueueGetsOneLateFiringAndNoBurst) {
  const dispatch_queue_t queue = dispatch_queue_create("timer");
  const dispatch_source_t timer = dispatch_source_create_timer(queue);
  const dispatch_semaphore_t fired = dispatch_semaphore_create(0);
  std::vector<std::uint64_t> moments;
  dispatch_source_set_event_handler(timer, [&] {
    moments.push_back(mach_absolute_time());
    dispatch_semaphore_signal(fired);
  });
  const std::uint64_t interval = NSEC_PER_MSEC;
  const dispatch_time_t start = dispatch_time(DISPATCH_TIME_NOW, 0);
  dispatch_source_set_timer(timer, start, milliseconds(1));
  dispatch_sync(queue, [&] {
    dispatch_resume(timer);
    waitUntil([&] { return mach_absolute_time() >= start + 20 * interval; }, "20 ms pass");
  });
  std::uint64_t firings = 0;
  std::uint64_t last = 0;
  while (last < start + 25 * interval) {
    dispatch_semaphore_wait(fired, DISPATCH_TIME_FOREVER);
    dispatch_sync(queue, [&] {
      firings = moments.size();
      last = moments.back();
    });
  }
  dispatch_source_cancel(timer);
  // The grid's points since then, and a few that were late: the queue's one, and the timers'.
  EXPECT_LE(firings, (last - start) / interval - 20 + 4);
}

TEST(DispatchSource, CancelSuspendAndReplaceFromInsideTheHandler) {
  const dispatch_queue_t queue = dispatch_queue_create("timer");
  dispatch_source_t timer = dispatch_source_create_timer(queue);
  const dispatch_semaphore_t cancelled = dispatch_semaphore_create(0);
  const auto captured = std::make_shared<int>(0);
  dispatch_source_set_event_handler(timer, [&timer, captured] {
    switch (++*captured) {
      case 1:  // once more, as a one-shot timer
        dispatch_source_set_timer(timer, milliseconds(-1), nanoseconds::max());
        break;
      case 2:
        dispatch_suspend(timer);
        dispatch_source_set_timer(timer, DISPATCH_TIME_NOW, 1, 0);
        dispatch_resume(timer);
        break;
      default:
        dispatch_source_cancel(timer);
    }
  });
  dispatch_source_set_cancel_handler(timer, [&] { dispatch_semaphore_signal(cancelled); });
  dispatch_source_set_timer(timer, DISPATCH_TIME_NOW, 1, 0);
  dispatch_resume(timer);
  dispatch_semaphore_wait(cancelled, DISPATCH_TIME_FOREVER);
  EXPECT_TRUE(dispatch_source_testcancel(timer));
  dispatch_source_cancel(timer);
  dispatch_source_cancel(nullptr);
  dispatch_sync(queue, [] {});
  EXPECT_EQ(*captured, 3);
  EXPECT_EQ(captured.use_count(), 1);
}

TEST(DispatchSource, TenThousandTimersAreMadeFiredAndReleasedByFourThreads) {
  std::atomic<int> fired{0}, released{0};
  storm(4, [&](int, std::mt19937& random) {
    std::vector<dispatch_source_t> timers;
    for (int count = 0; count < 2500; ++count) {
      const auto timer = dispatch_source_create_timer(defaultQueue());
      const std::shared_ptr<void> captured(nullptr, [&](void*) { ++released; });
      dispatch_source_set_event_handler(timer, [&, captured] { ++fired; });
      dispatch_source_set_timer(timer, std::chrono::nanoseconds(random() % 500'000),
                                std::chrono::nanoseconds(1'000'000 + random() % 5'000'000),
                                std::chrono::nanoseconds(random() % 1000));
      dispatch_resume(timer);
      timers.push_back(timer);
      if (random() % 4 == 0) timers[random() % timers.size()] = timer;
    }
    waitUntil([&] { return fired >= 1000; }, "a thousand timers have fired");
  });
  waitUntil([&] { return released == 10'000; }, "all handlers have been released");
}

TEST(DispatchSource, AfterKeepsToItsMoment) {
  const dispatch_queue_t queue = dispatch_queue_create("after");
  const dispatch_semaphore_t done = dispatch_semaphore_create(0);
  const dispatch_time_t now = dispatch_time(DISPATCH_TIME_NOW, 0);
  std::vector<int> order;
  const auto add = [&](int milliseconds) {
    const dispatch_time_t moment = dispatch_time(now, milliseconds * std::int64_t{NSEC_PER_MSEC});
    dispatch_after(moment, queue, [&, milliseconds, moment] {
      EXPECT_GE(mach_absolute_time(), moment);
      order.push_back(milliseconds);
      dispatch_semaphore_signal(done);
    });
  };
  for (const int milliseconds : {30, 20, 10, -1}) add(milliseconds);
  dispatch_after(milliseconds(1), queue, [&, moment = dispatch_time(now, milliseconds(1))] {
    EXPECT_GE(mach_absolute_time(), moment);
    dispatch_semaphore_signal(done);
  });
  for (int block = 0; block < 5; ++block) dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  EXPECT_EQ(std::set(order.begin(), order.end()), (std::set{-1, 10, 20, 30}));
}

TEST(DispatchTime, StaysWithinTheClocksRange) {
  using Moment = std::chrono::steady_clock::time_point;
  EXPECT_EQ(dispatch_time(DISPATCH_TIME_FOREVER, -5), DISPATCH_TIME_FOREVER);
  EXPECT_EQ(dispatch_time(100, milliseconds(2)), 2'000'100u);
  EXPECT_EQ(dispatch_time(100, milliseconds(-2)), 1u);
  EXPECT_EQ(dispatch_time(100, std::chrono::hours::max()), DISPATCH_TIME_FOREVER);
  EXPECT_EQ(dispatch_time(Moment(milliseconds(2))), 2'000'000u);
  EXPECT_EQ(dispatch_time(Moment::min()), 1u);
  EXPECT_EQ(dispatch_time(Moment::max()), DISPATCH_TIME_FOREVER);
  const dispatch_time_t before = mach_absolute_time();
  EXPECT_GE(dispatch_time(std::chrono::steady_clock::now()), before) << "the same clock";
  EXPECT_EQ(dispatch_time(100, INT64_MIN), 1u);
  EXPECT_EQ(dispatch_time(UINT64_MAX - 5, 10), DISPATCH_TIME_FOREVER);
}

TEST(DispatchSourceDeathTest, AnExceptionStopsTheProcessWhereItIsThrown) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  static std::atomic<bool> isUnwound{false};
  struct Local {
    ~Local() { isUnwound = true; }
  };
  const auto fail = [what = std::string(100, '.')] {
    const Local local;
    throw std::runtime_error("mine" + what);
  };
  const auto report = [] {
    std::fputs(isUnwound ? "unwound: " : "at the throw: ", stderr);
    try {
      std::rethrow_exception(std::current_exception());
    } catch (const std::exception& exception) {
      std::fputs(exception.what(), stderr);
    }
    std::_Exit(1);
  };
  const auto runOn = [&](const dispatch_queue_t& queue, bool isTimer) {
    std::set_terminate(report);
    const dispatch_source_t timer = dispatch_source_create_timer(queue);
    dispatch_source_set_event_handler(timer, fail);
    dispatch_source_set_timer(timer, DISPATCH_TIME_NOW, DISPATCH_TIME_FOREVER, 0);
    if (isTimer) {
      dispatch_resume(timer);
    } else {
      dispatch_async(queue, fail);
    }
    dispatch_semaphore_wait(dispatch_semaphore_create(0), DISPATCH_TIME_FOREVER);
  };
  const dispatch_queue_t serial = dispatch_queue_create("serial");
  const dispatch_queue_t concurrent =
      dispatch_queue_create("concurrent", DispatchQueueKind::concurrent);
  for (const dispatch_queue_t& queue : {serial, concurrent, defaultQueue()}) {
    EXPECT_EXIT(runOn(queue, true), testing::ExitedWithCode(1), "^at the throw: mine\\.");
    EXPECT_EXIT(runOn(queue, false), testing::ExitedWithCode(1), "^at the throw: mine\\.");
  }
}

TEST(DispatchSourceDeathTest, TheFirstTimerNeedsNoFileDescriptor) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "The sanitizer's own checks need file descriptors.";
#endif
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto useTimer = [] {
    const rlimit none{0, 0};
    setrlimit(RLIMIT_NOFILE, &none);
    dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 1000), defaultQueue(), [] { std::_Exit(7); });
    dispatch_semaphore_wait(dispatch_semaphore_create(0), DISPATCH_TIME_FOREVER);
  };
  EXPECT_EXIT(useTimer(), testing::ExitedWithCode(7), "");
}

TEST(DispatchSource, TheThreadsBehindItHaveNamesAndLeaveSignalsToTheApplication) {
  const dispatch_semaphore_t done = dispatch_semaphore_create(0);
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, 1000), defaultQueue(),
                 [&] { dispatch_semaphore_signal(done); });
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);
  std::set<std::string> names;
  // A thread sets its name itself, in its own time.
  for (int look = 0; look < 10'000 && names.size() < 3; ++look) {
    for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
      std::ifstream status(thread.path() / "status");
      std::string name;
      std::uint64_t blocked = 0;
      for (std::string field; status >> field; status.ignore(1000, '\n')) {
        if (field == "Name:") status >> name;
        if (field == "SigBlk:") status >> std::hex >> blocked;
      }
      if (!name.starts_with("zeb-")) continue;
      names.insert(name);
      for (const int number : {SIGHUP, SIGINT, SIGTERM, SIGCHLD, SIGALRM, SIGUSR1, SIGRTMIN}) {
        EXPECT_TRUE(blocked >> (number - 1) & 1) << name << " gets signal " << number;
      }
      EXPECT_FALSE(blocked >> (SIGSEGV - 1) & 1) << name << " would not report its crash";
    }
    names.erase("zeb-reserve");  // started only if needed
  }
  EXPECT_EQ(names, (std::set<std::string>{"zeb-pool", "zeb-pool-watch", "zeb-timers"}));
}

}  // namespace zeb::test
