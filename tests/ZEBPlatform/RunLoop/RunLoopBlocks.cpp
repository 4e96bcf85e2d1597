#include <ZEBPlatform/Dispatch/DispatchQueue.h>

#include <latch>

#include "Support/LoopSupport.h"
#include "Support/Storm.h"

namespace zeb::test {

TEST(RunLoopBlocks, StormsFromTwoThreadsKeepEachOnesOrder) {
  const LoopThread other;
  int next[2] = {0, 0}, outOfOrder = 0;
  storm(2, [&](int producer, std::mt19937&) {
    for (int number = 0; number < 500'000; ++number)
      other.loop->performBlock([&, producer, number] { outOfOrder += next[producer]++ != number; });
  });
  performOnThread(other.thread, [&] { outOfOrder += next[0] + next[1] != 1'000'000; }, true);
  EXPECT_EQ(outOfOrder, 0);
}

LOOP_TEST(RunLoopBlocks, RunInTheirModesOnlyAndInOrderAcrossNestedRuns) {
  std::string log;
  const auto note = [&](char letter) { return [&log, letter] { log += letter; }; };
  const NSArray inner{"inner"}, both{"inner", NSDefaultRunLoopMode}, common{NSRunLoopCommonModes};
  const int target = 0;
  loop->performBlock([&] {
    EXPECT_TRUE(loop->currentMode() == NSDefaultRunLoopMode && runOnce("inner"));
    log += ']';
  });
  loop->performBlock(note('a'));
  loop->performBlock(inner, note('b'));
  loop->performBlock(both, note('c'));
  loop->performBlock(common, [&] { EXPECT_TRUE(runOnce("third")); });
  loop->performBlock(NSArray{"third"}, [&] {
    EXPECT_FALSE(runOnce("empty"));
    EXPECT_TRUE(runOnce());  // the innermost of three finishes what the outer ones have not begun
    loop->cancelPerformBlocksWithTarget(&target);
    log += '3';
  });
  loop->performBlock(note('d'));
  loop->performBlock(Block<void()>());
  loop->performBlock(NSArray::array(), note('!'));
  std::atomic<int> deaths{0};
  for (const NSArray& modes : {inner, NSArray{"third"}})
    loop->performBlock(modes, [&log, probe = makeRef<Probe>(deaths)] { log += '!'; }, &target);
  EXPECT_TRUE(runOnce() && log == "bc!]ad3") << log;  // one ran before it was cancelled
  EXPECT_EQ(deaths, 2);
  EXPECT_FALSE(runOnce());
  loop->performBlock(common, note('e'));
  EXPECT_FALSE(runOnce("inner"));
  loop->addCommonMode("inner");
  EXPECT_TRUE(runOnce("inner"));
}

// If each run looked through all waiting blocks, this would take minutes.
LOOP_TEST(RunLoopBlocks, AStormForAnotherModeIsHeldBackAndKept) {
  int held = 0, handled = 0;
  for (int number = 0; number < 200'000; ++number) {
    loop->performBlock([&held, number] { held += held == number; });
    loop->performBlock(NSArray{"inner"}, [&] { ++handled; });
    if (number % 10 == 0) runOnce("inner");
  }
  while (runOnce("inner")) continue;
  EXPECT_TRUE(handled == 200'000 && held == 0);
  while (runOnce()) continue;
  EXPECT_EQ(held, 200'000);
}

LOOP_TEST(RunLoopBlocks, RunsEndAtTheirLimitAndWhenStopped) {
  const NSDate never = NSDate::distantFuture();
  std::string log;
  loop->stop();  // nothing runs: no effect
  loop->performBlock([&] {
    runUntilStopped();
    log += 'b';
  });
  loop->performBlock([&] {
    std::thread([&] { loop->stop(); }).join();  // ends the innermost run only
    log += 'a';
  });
  loop->performBlock([&] { loop->stop(); });
  loop->performBlock([&] { log += 'c'; });
  runUntilStopped();
  EXPECT_TRUE(log == "ab" && runOnce()) << log;
  EXPECT_FALSE(loop->runMode(NSDefaultRunLoopMode, never));  // empty
  const LoopThread other;
  const Ref<NSPort> port = NSPort::port();
  loop->addPort(port, NSDefaultRunLoopMode);
  for (const char letter : {'d', 'e'}) {
    other.loop->performBlock([&] { loop->performBlock([&] { log += letter; }); });
    EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, never));  // after one input
    EXPECT_EQ(log.back(), letter);
  }
  EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, nullptr));
  loop->runFor(std::chrono::milliseconds(1));  // although the port would keep it running
  loop->performBlock([&] { port->invalidate(); });
  loop->run();  // until nothing is left
}

TEST(RunLoopBlocks, TheMainQueueRunsInCommonModesOfTheMainLoopOnly) {
  const Ref<NSRunLoop> loop = NSRunLoop::mainRunLoop();
  std::string log;
  dispatch_async(dispatch_get_main_queue(), [&] {
    log += 'a';
    // Inside one of its blocks the next one has to wait.
    loop->performBlock([&] { log += 'b'; });
    runOnce();
  });
  dispatch_async(dispatch_get_main_queue(), [&] { log += 'c'; });
  loop->performBlock(NSArray{"private"}, [&] { log += 'p'; });
  EXPECT_TRUE(runOnce("private") && runOnce());
  EXPECT_EQ(log, "pabc");
}

TEST(RunLoopDeathTest, MisuseAndExitAmidWork) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const LoopThread other;
  EXPECT_EXIT(other.loop->run(), testing::KilledBySignal(SIGABRT),
              "A run loop was used on a thread that is not its own.");

  const auto exitAmidWork = [] {
    const Ref<NSRunLoop>& main = NSRunLoop::mainRunLoop();
    std::latch started(3);
    const auto work = [&] {
      for (started.arrive_and_wait();; runOnce()) {
        main->performBlock([] {});
        dispatch_async(dispatch_get_main_queue(), [] {});
        NSRunLoop::currentRunLoop()->performBlock([] {});
        NSTimer::scheduledTimerWithTimeInterval(0.0001, true, [](auto&) {});
      }
    };
    for (int thread = 0; thread < 2; ++thread) NSThread::detachNewThreadWithBlock(work);
    started.arrive_and_wait();
    main->performBlock([] { std::exit(0); });
    main->run();
  };
  EXPECT_EXIT(exitAmidWork(), testing::ExitedWithCode(0), "");
}

}  // namespace zeb::test
