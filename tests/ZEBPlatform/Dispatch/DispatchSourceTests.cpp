#include <ZEBPlatform/Dispatch.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <signal.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "Support/HeldQueue.h"
#include "Support/Storm.h"

namespace zeb::test {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

static dispatch_queue_t defaultQueue() {
  return dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
}

TEST(DispatchSource, ABusyQueueGetsOneLateFiringAndNoBurst) {
  const dispatch_queue_t queue = dispatch_queue_create("timer");
  const dispatch_source_t timer = dispatch_source_create_timer(queue);
  const dispatch_semaphore_t over = dispatch_semaphore_create(0);
  const std::uint64_t interval = NSEC_PER_MSEC, start = mach_absolute_time();
  std::uint64_t firings = 0, last = 0;
  dispatch_source_set_event_handler(timer, [&] {
    if (last >= start + 25 * interval) return;
    ++firings;
    if ((last = mach_absolute_time()) >= start + 25 * interval) dispatch_semaphore_signal(over);
  });
  dispatch_source_set_timer(timer, start, milliseconds(1));
  dispatch_sync(queue, [&] {
    dispatch_resume(timer);
    waitUntil([&] { return mach_absolute_time() >= start + 20 * interval; }, "20 ms pass");
  });
  dispatch_semaphore_wait(over, DISPATCH_TIME_FOREVER);
  dispatch_source_cancel(timer);
  dispatch_sync(queue, [] {});
  // The grid's points since then, and a few that were late: the queue's one, and the timers'.
  EXPECT_LE(firings, (last - start) / interval - 20 + 4);
}

TEST(DispatchSource, CancelSuspendAndReplaceFromInsideTheHandler) {
  const dispatch_queue_t queue = dispatch_queue_create("timer");
  dispatch_source_t timer = dispatch_source_create_timer(queue);
  const dispatch_semaphore_t cancelled = dispatch_semaphore_create(0);
  const auto captured = std::make_shared<int>(0);
  dispatch_source_set_event_handler(timer, [&timer, captured] {
    if (++*captured == 1) {  // once more, as a one-shot timer
      dispatch_source_set_timer(timer, milliseconds(-1), nanoseconds::max());
    } else if (*captured == 2) {
      dispatch_suspend(timer);
      dispatch_source_set_timer(timer, DISPATCH_TIME_NOW, 1, 0);
      dispatch_resume(timer);
    } else {
      dispatch_source_cancel(timer);
    }
  });
  dispatch_source_set_cancel_handler(timer, [&] { dispatch_semaphore_signal(cancelled); });
  dispatch_source_set_timer(timer, DISPATCH_TIME_NOW, 1, 0);
  dispatch_resume(timer);
  dispatch_semaphore_wait(cancelled, DISPATCH_TIME_FOREVER);
  EXPECT_TRUE(dispatch_source_testcancel(timer));
  for (const auto& source : {timer, dispatch_source_t()}) dispatch_source_cancel(source);
  dispatch_sync(queue, [] {});
  EXPECT_TRUE(*captured == 3 && captured.use_count() == 1) << *captured;
}

TEST(DispatchSource, TenThousandTimersAreMadeFiredAndReleasedByFourThreads) {
  std::atomic<int> fired{0}, released{0};
  storm(4, [&](int, std::mt19937& random) {
    std::vector<dispatch_source_t> timers;
    for (int count = 0; count < 2500; ++count) {
      const auto timer = dispatch_source_create_timer(defaultQueue());
      const std::shared_ptr<void> captured(nullptr, [&](void*) { ++released; });
      dispatch_source_set_event_handler(timer, [&, captured] { ++fired; });
      dispatch_source_set_timer(timer, nanoseconds(random() % 500'000),
                                nanoseconds(1'000'000 + random() % 5'000'000),
                                nanoseconds(random() % 1000));
      dispatch_resume(timer);
      timers.push_back(timer);
      if (random() % 4 == 0) timers[random() % timers.size()] = timer;
      // The released one may be firing, and its event then has the last reference.
      dispatch_source_t& ended = timers[random() % timers.size()];
      if (random() % 4 == 0) dispatch_source_cancel(std::exchange(ended, timer));
    }
    waitUntil([&] { return fired >= 1000; }, "a thousand timers have fired");
  });
  waitUntil([&] { return released == 10'000; }, "all handlers have been released");
}

TEST(DispatchSource, AfterKeepsToItsMoment) {
  const dispatch_queue_t queue = dispatch_queue_create("after");
  const dispatch_semaphore_t done = dispatch_semaphore_create(0);
  int ran = 0;
  for (const int delay : {30, 20, 10, -1}) {
    const dispatch_time_t moment = dispatch_time(DISPATCH_TIME_NOW, milliseconds(delay));
    const auto run = [&, moment] {
      EXPECT_GE(mach_absolute_time(), moment);
      if (++ran == 8) dispatch_semaphore_signal(done);
    };
    dispatch_after(moment, queue, run);
    dispatch_after(milliseconds(delay), queue, run);
  }
  dispatch_semaphore_wait(done, DISPATCH_TIME_FOREVER);

  // The last reference to a queue ends without a lock held: this queue runs its block only then.
  std::atomic<bool> isReleased{false};
  dispatch_after(milliseconds(10), makeRef<HeldQueue>(), [&] {
    isReleased = !dispatch_source_testcancel(dispatch_source_create_timer(nullptr));
  });
  waitUntil([&] { return isReleased.load(); }, "the queue is released");
}

TEST(DispatchTime, StaysWithinTheClocksRange) {
  using Moment = std::chrono::steady_clock::time_point;
  EXPECT_EQ(dispatch_time(DISPATCH_TIME_FOREVER, -5), DISPATCH_TIME_FOREVER);
  EXPECT_EQ(dispatch_time(100, milliseconds(-2)), 1u);
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
  const auto fail = [] {
    // Destroyed if the stack is unwound.
    const std::shared_ptr<void> local(nullptr, [](auto) { std::_Exit(1); });
    throw std::runtime_error("mine");
  };
  const auto runOn = [&](const dispatch_queue_t& queue, bool isTimer) {
    const dispatch_source_t timer = dispatch_source_create_timer(queue);
    dispatch_source_set_event_handler(timer, fail);
    dispatch_source_set_timer(timer, DISPATCH_TIME_NOW, DISPATCH_TIME_FOREVER, 0);
    isTimer ? dispatch_resume(timer) : dispatch_async(queue, fail);
    dispatch_semaphore_wait(dispatch_semaphore_create(0), DISPATCH_TIME_FOREVER);
  };
  for (const dispatch_queue_t& queue :
       {dispatch_queue_create("serial"), defaultQueue(),
        dispatch_queue_create("concurrent", DispatchQueueKind::concurrent)}) {
    for (const bool isTimer : {true, false})
      EXPECT_EXIT(runOn(queue, isTimer), testing::KilledBySignal(SIGABRT), "mine");
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
  dispatch_async(defaultQueue(), [] {});
  // Far away: a moment that passes during the call would need no timer and start no thread for it.
  dispatch_after(std::chrono::hours(1), defaultQueue(), [] {});
  // A thread sets its name and its mask itself, in its own time; a sanitizer may change the mask
  // for a moment.
  const auto areNamedAndMasked = [] {
    std::set<std::string> names;
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
        if (!(blocked >> (number - 1) & 1)) return false;
      }
      if (blocked >> (SIGSEGV - 1) & 1) return false;  // a crash would not be reported
    }
    names.erase("zeb-reserve");  // started only if needed
    return names == std::set<std::string>{"zeb-pool", "zeb-pool-watch", "zeb-timers"};
  };
  waitUntil(areNamedAndMasked, "the threads have their names and leave signals to others");
}

}  // namespace zeb::test
