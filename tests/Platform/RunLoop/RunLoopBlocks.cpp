#include <Dispatch/DispatchQueue.h>
#include <gtest/gtest.h>

#include <atomic>
#include <semaphore>
#include <vector>

#include "../Support.h"
#include "LoopSupport.h"

namespace zeb::test {

TEST(RunLoopBlocks, StormsFromTwoThreadsKeepEachOnesOrder) {
  onNewThread([] {
    constexpr int each = 500'000;
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    int next[2] = {0, 0};
    bool isInOrder = true;
    const auto produce = [&](int producer) {
      for (int number = 0; number < each; ++number) {
        loop->performBlock([&, producer, number] {
          isInOrder &= next[producer]++ == number;
          if (next[0] + next[1] == 2 * each) loop->stop();
        });
      }
    };
    std::thread first(produce, 0);
    std::thread second(produce, 1);
    runUntilStopped();
    first.join();
    second.join();
    EXPECT_TRUE(isInOrder);
    EXPECT_EQ(next[0] + next[1], 2 * each);
  });
}

// A lost wake-up would hang this test: each thread sleeps whenever it waits for the other.
TEST(RunLoopBlocks, AWakeUpIsNeverLost) {
  onNewThread([] {
    const LoopThread other;
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    int left = 20'000;
    std::function<void()> ping = [&] {
      if (--left == 0) return loop->stop();
      other.loop->performBlock([&] { loop->performBlock([&] { ping(); }); });
    };
    loop->performBlock([&] { ping(); });
    runUntilStopped();
    EXPECT_EQ(left, 0);
  });
}

TEST(RunLoopBlocks, RunInTheirModesOnlyAndInOrderAcrossNestedRuns) {
  onNewThread([] {
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    std::string log;
    const auto note = [&](char letter) { return [&log, letter] { log += letter; }; };
    const NSArray inner{"inner"}, both{"inner", NSDefaultRunLoopMode}, common{NSRunLoopCommonModes};
    EXPECT_FALSE(runOnce());
    EXPECT_TRUE(loop->currentMode().isNil());

    loop->performBlock([&] {
      log += '[';
      EXPECT_EQ(loop->currentMode(), NSString(NSDefaultRunLoopMode));
      EXPECT_TRUE(runOnce("inner"));
      log += ']';
    });
    loop->performBlock(note('a'));
    loop->performBlock(inner, note('b'));
    loop->performBlock(both, note('c'));
    loop->performBlock(common, [&] {
      log += '(';
      EXPECT_TRUE(runOnce("third"));
      log += ')';
    });
    loop->performBlock(NSArray{"third"}, [&] {
      EXPECT_EQ(loop->currentMode(), "third"_ns);
      EXPECT_FALSE(runOnce("empty"));
      EXPECT_TRUE(runOnce());  // the innermost of three finishes what the outer ones have not begun
      log += '3';
    });
    loop->performBlock(note('d'));
    loop->performBlock(Block<void()>());
    loop->performBlock(NSArray::array(), note('x'));
    EXPECT_TRUE(runOnce());
    EXPECT_EQ(log, "[bc]a(d3)");
    EXPECT_FALSE(runOnce());

    loop->performBlock(common, note('e'));
    EXPECT_FALSE(runOnce("inner"));
    loop->addCommonMode("inner");
    EXPECT_TRUE(runOnce("inner"));
    EXPECT_EQ(log, "[bc]a(d3)e");
  });
}

// Looking through the waiting blocks once per pass would take minutes.
TEST(RunLoopBlocks, AStormForAnotherModeIsHeldBackAndKept) {
  onNewThread([] {
    constexpr int count = 200'000;
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    int held = 0, handled = 0;
    loop->performBlock([&] {
      for (int number = 0; number < count; ++number) {
        loop->performBlock([&held, number] { held += held == number; });
        loop->performBlock(NSArray{"inner"}, [&] { ++handled; });
        if (number % 10 == 0) runOnce("inner");
      }
      while (runOnce("inner")) {
      }
    });
    EXPECT_TRUE(runOnce());
    EXPECT_EQ(handled, count);
    while (runOnce()) {
    }
    EXPECT_EQ(held, count);
  });
}

TEST(RunLoopBlocks, CancellingByTargetReleasesThemUncalled) {
  onNewThread([] {
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    const NSArray modes{NSDefaultRunLoopMode};
    std::atomic<int> deaths{0};
    const int target = 0, other = 0;
    std::string log;
    loop->performBlock(modes, [&log, probe = makeRef<Probe>(deaths)] { log += 'x'; }, &target);
    loop->performBlock(modes, [&] { log += 'a'; }, &other);
    loop->performBlock(modes, [&] { loop->cancelPerformBlocksWithTarget(&target); });
    loop->performBlock(modes, [&log, probe = makeRef<Probe>(deaths)] { log += 'x'; }, &target);
    loop->performBlock([&] { log += 'b'; });
    loop->cancelPerformBlocksWithTarget(&target);
    EXPECT_EQ(deaths, 2);
    loop->performBlock(modes, [&log, probe = makeRef<Probe>(deaths)] { log += 'x'; }, &target);
    while (runOnce()) {
    }
    EXPECT_EQ(log, "ab");
    EXPECT_EQ(deaths, 3);
  });
}

TEST(RunLoopBlocks, StopEndsTheInnermostRunOnly) {
  onNewThread([] {
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    std::string log;
    loop->stop();  // nothing runs: no effect
    loop->performBlock([&] {
      runUntilStopped();
      log += 'b';
    });
    loop->performBlock([&] {
      std::thread([&] { loop->stop(); }).join();
      log += 'a';
    });
    loop->performBlock([&] {
      log += 'c';
      loop->stop();
    });
    loop->performBlock([&] { log += 'd'; });
    runUntilStopped();
    EXPECT_EQ(log, "abc");
    EXPECT_TRUE(runOnce());
    EXPECT_EQ(log, "abcd");
  });
}

TEST(RunLoopBlocks, RunModeReturnsAfterOneInputRunWhenNothingIsLeft) {
  onNewThread([] {
    const LoopThread other;
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    const Ref<NSPort> port = NSPort::port();
    EXPECT_FALSE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
    loop->addPort(port, NSDefaultRunLoopMode);
    int calls = 0;
    for (int round = 0; round < 3; ++round) {
      other.loop->performBlock([&] { loop->performBlock([&] { ++calls; }); });
      EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
      EXPECT_EQ(calls, round + 1);
    }
    EXPECT_TRUE(
        loop->runMode(NSDefaultRunLoopMode, nullptr));  // the port keeps it from being empty
    loop->performBlock([&] { port->invalidate(); });
    loop->run();
    EXPECT_FALSE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
  });
}

TEST(RunLoopBlocks, TheMainQueueRunsInCommonModesOfTheMainLoopOnly) {
  const Ref<NSRunLoop> loop = NSRunLoop::mainRunLoop();
  ASSERT_EQ(loop, NSRunLoop::currentRunLoop());
  std::string log;
  dispatch_async(dispatch_get_main_queue(), [&] {
    log += 'a';
    // Inside one of its blocks the next one has to wait.
    loop->performBlock([&] { log += 'b'; });
    runOnce();
  });
  dispatch_async(dispatch_get_main_queue(), [&] { log += 'c'; });
  loop->performBlock(NSArray{"private"}, [&] { log += 'p'; });
  EXPECT_TRUE(runOnce("private"));
  EXPECT_EQ(log, "p");
  EXPECT_TRUE(runOnce());
  EXPECT_EQ(log, "pabc");

  std::thread poster([&] { dispatch_async(dispatch_get_main_queue(), [&] { loop->stop(); }); });
  loop->run();
  poster.join();
}

TEST(RunLoopDeathTest, ALoopRunsOnItsOwnThreadOnly) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const LoopThread other;
  EXPECT_EXIT(other.loop->run(), testing::KilledBySignal(SIGABRT),
              "A run loop was used on a thread that is not its own.");
  EXPECT_EXIT(other.loop->performBlock([] { throw 1; });
              std::binary_semaphore(0).acquire(), testing::KilledBySignal(SIGABRT), "terminate");
}

TEST(RunLoopDeathTest, TheProcessExitsWithLoopsRunningAndWorkPending) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto exitAmidWork = [] {
    static std::atomic<bool> isOn{true};
    const LoopThread* const loops[] = {new LoopThread, new LoopThread};
    const Ref<NSRunLoop>& main = NSRunLoop::mainRunLoop();
    std::counting_semaphore started(0);
    for (const LoopThread* each : loops) {
      each->loop->performBlock([&, loop = each->loop] {
        started.release();
        while (isOn) {
          main->performBlock([] {});
          dispatch_async(dispatch_get_main_queue(), [] {});
          loop->performBlock([] {});
          NSTimer::scheduledTimerWithTimeInterval(0.0001, true, [](const Ref<NSTimer>&) {});
          runOnce();
        }
      });
    }
    started.acquire();
    started.acquire();
    main->performBlock([] { std::exit(0); });
    main->run();
  };
  EXPECT_EXIT(exitAmidWork(), testing::ExitedWithCode(0), "");
}

}  // namespace zeb::test
