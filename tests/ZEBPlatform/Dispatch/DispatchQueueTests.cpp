#include <ZEBPlatform/Dispatch.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>
#include <ZEBPlatform/Memory/WeakRef.h>

#include <filesystem>
#include <latch>
#include <set>

#include "Support/Storm.h"

namespace zeb::test {

namespace {

/// Waits until all have counted down.
void await(const std::latch& latch) {
  waitUntil([&] { return latch.try_wait(); }, "all blocks have run");
}

constexpr DispatchQueueKind serialKind = DispatchQueueKind::serial;
constexpr DispatchQueueKind concurrentKind = DispatchQueueKind::concurrent;

}  // namespace

TEST(DispatchQueue, RunsAMillionPostsOfTwoProducersOneByOneAndInEachOnesOrder) {
  constexpr int perProducer = 500'000;
  const dispatch_queue_t queue = dispatch_queue_create("order");
  std::array<int, 2> next{};  // plain: the queue runs one block at a time
  int outOfOrder = 0;
  storm(2, [&](int producer, std::mt19937&) {
    int& expected = next[static_cast<std::size_t>(producer)];
    for (int number = 0; number < perProducer; ++number) {
      dispatch_async(queue, [&, number] { outOfOrder += expected++ != number; });
    }
  });
  dispatch_sync(queue, [] {});
  EXPECT_TRUE(next[0] + next[1] == 2 * perProducer && outOfOrder == 0) << outOfOrder;
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
  for (int block = 0; block < 2; ++block) {
    dispatch_async(queue, [&] {
      bothInside.arrive_and_wait();  // returns only if the two run at once
      ++done;
    });
  }
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
    for (int block = 0; block < blocks; ++block) {
      dispatch_async(queue, [&] {
        char byte;
        EXPECT_EQ(read(ends[0], &byte, 1), 1);
        done.count_down();
      });
    }
    dispatch_async(queue, [&] {
      const std::string bytes(static_cast<std::size_t>(blocks), '!');
      EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), blocks);
      done.count_down();
    });
    await(done);
  };
  waitForTheLast(200);
  // As many blocked threads as processors, while others sleep or have just stopped to look for
  // work.
  for (int round = 0; round < 200; ++round) waitForTheLast(round % 8);
  close(ends[0]);
  close(ends[1]);
}

// There are more blocks than the pool may have threads: a thread that waits for a queue must not
// wait for the blocks that were submitted to the pool before the queue's.
TEST(DispatchQueue, ThreadsThatWaitForQueuesDoNotWaitForTheRestOfThePool) {
  constexpr int blocks = 1500;
  const dispatch_queue_t global = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
  const dispatch_queue_t shared = dispatch_queue_create("shared", concurrentKind);
  std::latch done(blocks);
  std::atomic<int> sum{0};
  const auto useQueues = [&] {
    const dispatch_queue_t serial = dispatch_queue_create("serial");
    const dispatch_queue_t concurrent = dispatch_queue_create("concurrent", concurrentKind);
    dispatch_async(serial, [&] { ++sum; });
    dispatch_sync(serial, [&] { ++sum; });
    dispatch_barrier_async(concurrent, [&] { ++sum; });
    dispatch_sync(concurrent, [&] { ++sum; });
    for (int reader = 0; reader < 3; ++reader) dispatch_async(concurrent, [&] { ++sum; });
    dispatch_barrier_sync(concurrent, [&] { ++sum; });
    dispatch_barrier_async(shared, [&] { ++sum; });
    dispatch_sync(shared, [&] { ++sum; });
  };
  for (int block = 0; block < blocks; ++block) {
    dispatch_async(global, [&] {
      useQueues();
      done.count_down();
    });
  }
  await(done);
  EXPECT_EQ(sum, blocks * 10);

  // The same while the pool is used up by blocks that wait for this thread, inside and outside of
  // it.
  const dispatch_semaphore_t goOn = dispatch_semaphore_create(0);
  std::latch over(600), inside(1);
  for (int block = 0; block < 600; ++block) {
    dispatch_async(global, [&, block] {
      if (block == 500) {
        useQueues();
        inside.count_down();
      }
      dispatch_semaphore_wait(goOn, DISPATCH_TIME_FOREVER);
      over.count_down();
    });
  }
  useQueues();
  await(inside);
  for (int block = 0; block < 600; ++block) dispatch_semaphore_signal(goOn);
  await(over);
  EXPECT_EQ(sum, (blocks + 2) * 10);
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
  std::array<int, burst> threads;
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
  for (const DispatchQueueKind kind : {serialKind, concurrentKind}) {
    dispatch_queue_t queue = dispatch_queue_create("short-lived", kind);
    const WeakRef<DispatchQueue> weak(queue);
    std::latch done(100);
    for (int block = 0; block < 99; ++block) {
      dispatch_async(queue,
                     [&, captured = std::make_shared<int>(1)] { done.count_down(*captured); });
    }
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

TEST(DispatchQueueDeathTest, WaitingForOneselfStopsTheProcess) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto waitOn = [](const dispatch_queue_t& queue, auto wait) {
    dispatch_barrier_sync(
        queue, [&] { dispatch_sync(dispatch_queue_create("between"), [&] { wait(queue); }); });
  };
  const auto sync = [](const dispatch_queue_t& queue) { dispatch_sync(queue, [] {}); };
  const auto barrier = [](const dispatch_queue_t& queue) { dispatch_barrier_sync(queue, [] {}); };
  const dispatch_queue_t mine = dispatch_queue_create("mine");
  const dispatch_queue_t ours = dispatch_queue_create("ours", concurrentKind);
  EXPECT_DEATH(waitOn(mine, sync), "^dispatch_sync onto the queue \"mine\"");
  EXPECT_DEATH(waitOn(ours, sync), "onto the queue \"ours\"");
  EXPECT_DEATH(waitOn(ours, barrier), "^dispatch_barrier_sync onto the queue \"ours\"");
  EXPECT_DEATH(dispatch_sync(dispatch_get_main_queue(), [] {}), "onto the queue \"main-thread\"");
}

TEST(DispatchQueueDeathTest, NilArgumentsAreReportedByFunctionAndNilBlocksAreNothingToDo) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const Block<void()> block = [] {};
  const dispatch_time_t later = dispatch_time(DISPATCH_TIME_NOW, NSEC_PER_SEC);
  const std::pair<const char*, std::function<void()>> calls[] = {
      {"dispatch_async .* queue", [&] { dispatch_async(nullptr, block); }},
      {"dispatch_sync .* queue", [&] { dispatch_sync(nullptr, block); }},
      {"dispatch_barrier_async .* queue", [&] { dispatch_barrier_async(nullptr, block); }},
      {"dispatch_barrier_sync .* queue", [&] { dispatch_barrier_sync(nullptr, block); }},
      {"dispatch_after .* queue", [&] { dispatch_after(later, nullptr, block); }},
      {"dispatch_semaphore_wait .* semaphore", [] { dispatch_semaphore_wait(nullptr, 0); }},
      {"dispatch_semaphore_signal .* semaphore", [] { dispatch_semaphore_signal(nullptr); }},
      {"dispatch_source_set_timer .* source", [] { dispatch_source_set_timer(nullptr, 0, 1, 0); }},
      {"dispatch_source_set_event_handler .* source",
       [&] { dispatch_source_set_event_handler(nullptr, block); }},
      {"dispatch_source_set_cancel_handler .* source",
       [&] { dispatch_source_set_cancel_handler(nullptr, block); }},
      {"dispatch_resume .* source", [] { dispatch_resume(nullptr); }},
      {"dispatch_suspend .* source", [] { dispatch_suspend(nullptr); }},
  };
  for (const auto& [message, call] : calls) EXPECT_DEATH(call(), std::string("^") + message);

  const Block<void()> none;
  for (const dispatch_queue_t& queue : {dispatch_queue_create(nullptr), dispatch_queue_t()}) {
    dispatch_async(queue, none);
    dispatch_sync(queue, none);
    dispatch_barrier_async(queue, none);
    dispatch_barrier_sync(queue, none);
    dispatch_after(later, queue, none);
  }
}

TEST(DispatchQueueDeathTest, ExitWithWorkPendingNeitherHangsNorCrashes) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";
  const auto exitBusy = [] {
    const dispatch_queue_t queues[]{dispatch_queue_create("busy"),
                                    dispatch_queue_create("many", concurrentKind)};
    for (int block = 0; block < 200'000; ++block) dispatch_async(queues[block % 2], [] {});
    dispatch_async(dispatch_get_main_queue(), [] {});
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
