#include <ZEBPlatform/Dispatch.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>
#include <ZEBPlatform/Memory/WeakRef.h>

#include <filesystem>
#include <latch>
#include <set>

#include "Support/Storm.h"

namespace zeb::test {

/// Waits until all have counted down.
static void await(const std::latch& latch) {
  waitUntil([&] { return latch.try_wait(); }, "all blocks have run");
}

constexpr DispatchQueueKind concurrentKind = DispatchQueueKind::concurrent;

TEST(DispatchQueue, RunsAMillionPostsOfTwoProducersOneByOneAndInEachOnesOrder) {
  const dispatch_queue_t queue = dispatch_queue_create("order");
  int next[2] = {}, outOfOrder = 0;  // plain: the queue runs one block at a time
  storm(2, [&](int producer, std::mt19937&) {
    for (int number = 0; number < 500'000; ++number)
      dispatch_async(queue, [&, producer, number] { outOfOrder += next[producer]++ != number; });
  });
  dispatch_sync(queue, [] {});
  EXPECT_TRUE(next[0] + next[1] == 1'000'000 && outOfOrder == 0) << outOfOrder;
}

TEST(DispatchQueue, MixedSyncAndAsyncFromFourThreadsExcludeEachOther) {
  const dispatch_queue_t serial = dispatch_queue_create("serial");
  const dispatch_queue_t concurrent = dispatch_queue_create("concurrent", concurrentKind);
  int serialSum = 0, concurrentSum = 0;  // the latter is written in barriers, read in shared blocks
  std::atomic<int> torn{0};
  storm(4, [&](int, std::mt19937&) {
    for (int round = 0; round < 1000; ++round) {
      dispatch_async(serial, [&] { ++serialSum; });
      dispatch_sync(serial, [&] { ++serialSum; });
      dispatch_barrier_async(concurrent, [&] { concurrentSum += 2; });
      dispatch_async(concurrent, [&] { torn += concurrentSum % 2; });
      dispatch_sync(concurrent, [&] { torn += concurrentSum % 2; });
      if (round % 8 == 0) dispatch_barrier_sync(concurrent, [&] { concurrentSum += 2; });
    }
  });
  dispatch_sync(serial, [&] { EXPECT_EQ(serialSum, 4 * 1000 * 2); });
  dispatch_barrier_sync(concurrent, [&] { EXPECT_EQ(concurrentSum, 4 * (1000 + 125) * 2); });
  EXPECT_EQ(torn, 0);
}

TEST(DispatchQueue, ABarrierRunsAloneAfterEarlierBlocksAndBeforeLaterOnes) {
  const dispatch_queue_t queue = dispatch_queue_create("barriers", concurrentKind);
  std::latch bothInside(2);
  std::atomic<int> done{0};
  const auto meet = [&] {
    bothInside.arrive_and_wait();  // returns only if the two run at once
    ++done;
  };
  for (int block = 0; block < 2; ++block) dispatch_async(queue, meet);
  int seen = -1;  // plain: the barriers alone protect it
  dispatch_barrier_async(queue, [&] { seen = done; });
  dispatch_async(queue, [&] { EXPECT_EQ(seen, 2); });
  dispatch_barrier_sync(queue, [] {});
}

TEST(DispatchQueue, MakesProgressBehindTwoHundredBlocksWhoseWaitsItDoesNotKnow) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const dispatch_queue_t queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  const auto waitForTheLast = [&](int blocks) {
    std::latch done(blocks + 1);
    const auto readByte = [&] {
      char byte;
      EXPECT_EQ(read(ends[0], &byte, 1), 1);
      done.count_down();
    };
    for (int block = 0; block < blocks; ++block) dispatch_async(queue, readByte);
    const std::string bytes(static_cast<std::size_t>(blocks), '!');
    dispatch_async(queue, [&] {
      EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), blocks);
      done.count_down();
    });
    await(done);
  };
  waitForTheLast(200);
  // As many blocked threads as processors, while others sleep or have just stopped to look for
  // work.
  for (int round = 0; round < 200; ++round) waitForTheLast(round % 8);
  for (const int end : ends) close(end);
}

// There are more blocks than the pool may have threads: a thread that waits for a queue must not
// wait for the blocks that were submitted to the pool before the queue's.
TEST(DispatchQueue, ThreadsThatWaitForQueuesDoNotWaitForTheRestOfThePool) {
  const dispatch_queue_t global = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  const dispatch_queue_t shared = dispatch_queue_create("shared", concurrentKind);
  std::latch done(1500);
  std::atomic<int> sum{0};
  const auto useQueues = [&](std::latch& latch) {
    const dispatch_queue_t serial = dispatch_queue_create("serial");
    const dispatch_queue_t concurrent = dispatch_queue_create("concurrent", concurrentKind);
    const auto count = [&] { ++sum; };
    dispatch_async(serial, count);
    dispatch_sync(serial, count);
    dispatch_barrier_async(concurrent, count);
    dispatch_sync(concurrent, count);
    for (int reader = 0; reader < 3; ++reader) dispatch_async(concurrent, count);
    dispatch_barrier_sync(concurrent, count);
    dispatch_barrier_async(shared, count);
    dispatch_sync(shared, count);
    latch.count_down();
  };
  for (int block = 0; block < 1500; ++block) dispatch_async(global, [&] { useQueues(done); });
  await(done);

  // The same while the pool is used up by blocks that wait for this thread, inside and outside of
  // it.
  const dispatch_semaphore_t goOn = dispatch_semaphore_create(0);
  std::latch over(600), inside(2);
  for (int block = 0; block < 600; ++block) {
    dispatch_async(global, [&, block] {
      if (block == 500) useQueues(inside);
      dispatch_semaphore_wait(goOn, DISPATCH_TIME_FOREVER);
      over.count_down();
    });
  }
  useQueues(inside);
  await(inside);
  for (int block = 0; block < 600; ++block) dispatch_semaphore_signal(goOn);
  await(over);
  EXPECT_EQ(sum, (1500 + 2) * 10);
}

TEST(DispatchQueue, LeavesSurplusThreadsAsleepAfterABurst) {
  constexpr int burst = 64;
  const dispatch_queue_t global = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  const auto awaitSleep = [](int thread) {
    const std::string folder = "/proc/self/task/" + std::to_string(thread);
    waitUntil([&] { return isThreadBlocked(thread) || !std::filesystem::exists(folder); },
              "a thread without work sleeps or has ended");
  };
  const dispatch_semaphore_t goOn = dispatch_semaphore_create(0);
  std::latch inside(burst), over(burst);
  int threads[burst];
  for (int& thread : threads) {
    dispatch_async(global, [&] {
      thread = currentThreadIdentifier();
      inside.count_down();
      dispatch_semaphore_wait(goOn, DISPATCH_TIME_FOREVER);
      over.count_down();
    });
  }
  await(inside);
  for (int block = 0; block < burst; ++block) dispatch_semaphore_signal(goOn);
  await(over);
  for (const int thread : threads) awaitSleep(thread);
  std::set<int> used;
  for (int block = 0; block < burst; ++block) {
    std::atomic<int> thread = 0;
    dispatch_async(global, [&] { thread = currentThreadIdentifier(); });
    waitUntil([&] { return thread != 0; }, "the block has run");
    used.insert(thread);
    awaitSleep(thread);
  }
  EXPECT_LE(used.size(), burst / 4);
}

TEST(DispatchQueue, KeepsAReleasedQueueUntilItsWorkIsDoneAndThenLetsItGo) {
  for (const auto kind : {DispatchQueueKind::serial, concurrentKind}) {
    dispatch_queue_t queue = dispatch_queue_create("short-lived", kind);
    const WeakRef<DispatchQueue> weak(queue);
    std::latch done(100);
    for (int block = 0; block < 99; ++block) dispatch_async(queue, [&] { done.count_down(); });
    dispatch_sync(queue, [&] {
      queue = nullptr;  // the last reference, from inside
      done.count_down();
    });
    await(done);
    waitUntil([&] { return !weak.lock(); }, "the queue has been released");
  }
}

TEST(DispatchQueue, SyncNestsAcrossQueuesAndPassesExceptionsOn) {
  const dispatch_queue_t outer = dispatch_queue_create("outer");
  const dispatch_queue_t inner = dispatch_queue_create("inner", concurrentKind);
  int depth = 0;
  dispatch_sync(outer, [&] {
    dispatch_sync(inner, [&] {
      dispatch_barrier_async(inner, [] {});
      // The thread is inside already, so it must not wait behind the barrier.
      dispatch_sync(inner, [&] { ++depth; });
    });
  });
  for (const dispatch_queue_t& queue : {outer, inner}) {
    EXPECT_THROW(dispatch_sync(queue, [] { throw 1; }), int);
    EXPECT_THROW(dispatch_barrier_sync(queue, [] { throw 1; }), int);
    dispatch_sync(queue, [&] { ++depth; });  // still usable
  }
  EXPECT_EQ(depth, 3);
}

TEST(DispatchQueueDeathTest, MisuseIsReportedByFunctionAndExitNeedsNoEndOfTheWork) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const dispatch_queue_t mine = dispatch_queue_create("mine");
  const dispatch_queue_t ours = dispatch_queue_create("ours", concurrentKind);
  const Block<void()> block = [] {}, none;
  const dispatch_time_t later = dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC);
  const auto waitOn = [&](const dispatch_queue_t& queue, auto wait) {
    const auto inside = [&] { wait(queue, block); };
    dispatch_barrier_sync(queue, [&] { dispatch_sync(dispatch_queue_create("between"), inside); });
  };
  const auto sync = [](auto&... arguments) { dispatch_sync(arguments...); };
  const auto barrier = [](auto&... arguments) { dispatch_barrier_sync(arguments...); };
  const std::pair<const char*, std::function<void()>> calls[] = {
      {"sync onto the queue \"mine\"", [&] { waitOn(mine, sync); }},
      {"sync onto the queue \"ours\"", [&] { waitOn(ours, sync); }},
      {"barrier_sync onto the queue \"ours\"", [&] { waitOn(ours, barrier); }},
      {"sync .*\"main-thread\"", [&] { dispatch_sync(dispatch_get_main_queue(), block); }},
      {"async .* queue", [&] { dispatch_async(nullptr, block); }},
      {"sync .* queue", [&] { dispatch_sync(nullptr, block); }},
      {"barrier_async .* queue", [&] { dispatch_barrier_async(nullptr, block); }},
      {"barrier_sync .* queue", [&] { dispatch_barrier_sync(nullptr, block); }},
      {"after .* queue", [&] { dispatch_after(later, nullptr, block); }},
      {"semaphore_wait .* semaphore", [] { dispatch_semaphore_wait(nullptr, 0); }},
      {"semaphore_signal .* semaphore", [] { dispatch_semaphore_signal(nullptr); }},
      {"source_set_timer .* source", [] { dispatch_source_set_timer(nullptr, 0, 1, 0); }},
      {"source_set_event_handler ", [&] { dispatch_source_set_event_handler(nullptr, block); }},
      {"source_set_cancel_handler ", [&] { dispatch_source_set_cancel_handler(nullptr, block); }},
      {"resume .* source", [] { dispatch_resume(nullptr); }},
      {"suspend .* source", [] { dispatch_suspend(nullptr); }},
  };
  for (const auto& [message, call] : calls)
    EXPECT_DEATH(call(), std::string("^dispatch_") + message);
  for (const dispatch_queue_t& queue : {dispatch_queue_create(nullptr), dispatch_queue_t()}) {
    dispatch_async(queue, none);
    dispatch_sync(queue, none);
    dispatch_barrier_async(queue, none);
    dispatch_barrier_sync(queue, none);
    dispatch_after(later, queue, none);
  }
  const auto exitBusy = [&] {
    for (int number = 0; number < 200'000; ++number)
      dispatch_async(number % 2 ? mine : ours, block);
    dispatch_async(dispatch_get_main_queue(), block);
    std::exit(7);
  };
  EXPECT_EXIT(exitBusy(), testing::ExitedWithCode(7), "");
}

TEST(DispatchQueue, GlobalQueuesAnswerToPrioritiesAndQualities) {
  const dispatch_queue_t background = dispatch_get_global_queue(QOS_CLASS_BACKGROUND);
  EXPECT_EQ(background, dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_BACKGROUND));
  EXPECT_NE(background, dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_LOW));
  EXPECT_FALSE(dispatch_get_global_queue(12345) || dispatch_get_global_queue(0, 1));
  EXPECT_STREQ(dispatch_queue_get_label(nullptr), "");
}

TEST(DispatchSemaphore, GivesUpInTimeAndHandsOverEachSignalOnce) {
  EXPECT_FALSE(dispatch_semaphore_create(-1));
  const dispatch_semaphore_t semaphore = dispatch_semaphore_create(1);
  EXPECT_EQ(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
  EXPECT_NE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
  EXPECT_NE(dispatch_semaphore_wait(semaphore, dispatch_time(DISPATCH_TIME_NOW, 1000)), 0);
  EXPECT_NE(dispatch_semaphore_wait(semaphore, std::chrono::hours::min()), 0);
  EXPECT_EQ(dispatch_semaphore_signal(semaphore), 0) << "no thread waits";
  EXPECT_EQ(dispatch_semaphore_wait(semaphore, std::chrono::hours::max()), 0);

  const dispatch_semaphore_t taken = dispatch_semaphore_create(0);
  dispatch_once_t once;
  dispatch_once(once, Block<void()>());  // does not count
  int initialised = 0;
  for (int block = 0; block < 10; ++block) {
    dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT), [&] {
      dispatch_once(once, [&] { ++initialised; });
      dispatch_semaphore_wait(semaphore, DISPATCH_TIME_FOREVER);
      dispatch_semaphore_signal(taken);
    });
  }
  for (int block = 0; block < 10; ++block) {
    dispatch_semaphore_signal(semaphore);
    dispatch_semaphore_wait(taken, DISPATCH_TIME_FOREVER);
  }
  EXPECT_EQ(initialised, 1);
  EXPECT_NE(dispatch_semaphore_wait(semaphore, DISPATCH_TIME_NOW), 0);
}

}  // namespace zeb::test
