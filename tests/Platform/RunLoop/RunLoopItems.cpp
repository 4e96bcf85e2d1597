#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <semaphore>
#include <vector>

#include "../Support.h"
#include "FakeClock.h"
#include "LoopSupport.h"

namespace zeb::test {

namespace {

/// Two connected sockets.
struct Pair {
  Pair() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends.data()), 0); }
  ~Pair() {
    close(ends[0]);
    close(ends[1]);
  }
  void send(char letter) { EXPECT_EQ(write(ends[1], &letter, 1), 1); }
  char receive() {
    char letter = 0;
    return read(ends[0], &letter, 1) == 1 ? letter : '-';
  }
  std::array<int, 2> ends;
};

using Source = RunLoopDescriptorSource;

}  // namespace

TEST(RunLoopObservers, AreToldOfEveryStepInTheirOrder) {
  onNewThread([] {
    FakeClock clock;
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    std::string log;
    const auto addNoting = [&](std::uint32_t activities, std::int64_t order, std::string letters,
                               const NSString& mode) {
      const auto note = [&log, letters](auto&, RunLoopActivity activity) {
        log += letters[static_cast<std::size_t>(std::countr_zero<std::uint32_t>(activity))];
      };
      const auto observer = makeRef<RunLoopObserver>(activities, true, order, note);
      loop->addObserver(observer, mode);
      loop->addObserver(observer, mode);
      return observer;
    };
    EXPECT_FALSE(runOnce());
    const auto all = addNoting(RunLoopAllActivities, 0, "ets..wax", NSDefaultRunLoopMode);
    EXPECT_FALSE(runOnce());  // observers keep no loop running
    loop->performBlock([&] {
      log += 'B';
      NSTimer::scheduledTimerWithTimeInterval(1, false, [&](auto&) {
        log += 'T';
        loop->performBlock([&] { log += 'C'; });
      });
    });
    // Lets the time pass in which the loop sleeps.
    const auto waiter = makeRef<RunLoopObserver>(RunLoopBeforeWaiting, true, 9,
                                                 [&](auto&, auto) { clock.advance(1.1); });
    loop->addObserver(waiter, NSDefaultRunLoopMode);
    loop->run();
    EXPECT_EQ(log, "etsBwatTsCx");

    log.clear();
    addNoting(RunLoopEntry, 5, "4", NSDefaultRunLoopMode);
    addNoting(RunLoopEntry, -1, "1", NSRunLoopCommonModes);
    addNoting(RunLoopEntry, 5, "5", NSRunLoopCommonModes);
    addNoting(RunLoopEntry, 1, "3", NSDefaultRunLoopMode);
    addNoting(RunLoopEntry, 1, "!", "other");
    loop->removeObserver(all, NSDefaultRunLoopMode);
    EXPECT_TRUE(all->isValid());
    loop->performBlock([] {});
    runOnce();
    EXPECT_EQ(log, "1345");
  });
}

TEST(RunLoopObservers, MayBeInvalidatedDuringDelivery) {
  onNewThread([] {
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    std::string log;
    std::atomic<int> deaths{0};
    Ref<RunLoopObserver> later;
    const auto add = [&](bool repeats, std::int64_t order, auto block) {
      const auto observer = makeRef<RunLoopObserver>(
          RunLoopBeforeSources, repeats, order,
          [block, probe = makeRef<Probe>(deaths)](const Ref<RunLoopObserver>& self, auto) {
            block(self);
            EXPECT_TRUE(probe->isAlive);
          });
      loop->addObserver(observer, NSDefaultRunLoopMode);
      return observer;
    };
    add(true, 0, [&](const Ref<RunLoopObserver>& self) {
      self->invalidate();
      later->invalidate();
      log += 'a';
    });
    later = add(true, 1, [&](auto&) { log += '!'; });
    const auto once = add(false, 2, [&](auto&) {
      log += 'b';
      runOnce();  // not from within itself
    });
    for (int round = 0; round < 3; ++round) {
      loop->performBlock([] {});
      loop->performBlock(NSArray{"other"}, [] {});
      runOnce();
    }
    EXPECT_EQ(log, "ab");
    EXPECT_FALSE(once->isValid());
    EXPECT_EQ(deaths, 3);
  });
}

TEST(RunLoopObservers, InvalidatingRacesWithDelivery) {
  std::atomic<int> calls{0}, deaths{0};
  constexpr int rounds = 2000;
  {
    const LoopThread other;
    for (int round = 0; round < rounds; ++round) {
      const auto observer = makeRef<RunLoopObserver>(
          RunLoopAllActivities, round % 2, 0,
          [&calls, probe = makeRef<Probe>(deaths)](auto&, auto) { ++calls; });
      other.loop->addObserver(observer, NSRunLoopCommonModes);
      other.loop->performBlock([] {});
      observer->invalidate();
    }
  }
  EXPECT_EQ(deaths, rounds);
}

TEST(RunLoopSources, SignalsFromAnyThreadCountOnceAndInTheirModesOnly) {
  onNewThread([] {
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    int calls = 0;
    Ref<RunLoopSource> source;
    source = makeRef<RunLoopSource>([&] {
      if (++calls != 2) return;
      source->signal();
      EXPECT_FALSE(loop->runMode("other", NSDate::distantPast()));
      EXPECT_TRUE(runOnce());  // not from within itself
      EXPECT_EQ(calls, 2);
    });
    source->signal();  // before it is in any loop
    loop->addSource(source, NSDefaultRunLoopMode);
    EXPECT_TRUE(runOnce());
    EXPECT_EQ(calls, 1);
    for (int thread = 0; thread < 3; ++thread) std::thread([&] { source->signal(); }).join();
    EXPECT_FALSE(runOnce("other"));
    EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
    EXPECT_EQ(calls, 2);
    EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
    EXPECT_EQ(calls, 3);
    std::thread late([&] { source->signal(); });
    EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
    late.join();
    EXPECT_EQ(calls, 4);
    source->signal();
    loop->removeSource(source, NSDefaultRunLoopMode);
    EXPECT_FALSE(runOnce());
    loop->addSource(source, "other");
    EXPECT_TRUE(runOnce("other"));
    EXPECT_EQ(calls, 5);
    source->invalidate();
    source->signal();
    EXPECT_FALSE(runOnce("other"));
    EXPECT_EQ(calls, 5);
  });
}

TEST(RunLoopDescriptors, CallWhileReadyForWhatIsWatchedAndInTheirModesOnly) {
  onNewThread([] {
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    Pair pair;
    std::string log;
    const auto add = [&](std::uint32_t events, auto block, const NSString& mode) {
      const auto source = Source::source(pair.ends[0], events, block);
      loop->addDescriptorSource(source, mode);
      return source;
    };
    const auto reader = add(
        DescriptorReadable, [&](auto&, std::uint32_t) { log += pair.receive(); },
        NSDefaultRunLoopMode);
    const auto writer = add(
        DescriptorReadable | DescriptorWritable,
        [&](auto&, std::uint32_t events) {
          log += events & DescriptorReadable ? "R" : "";
          log += events & DescriptorWritable ? "W" : "";
        },
        "other");
    EXPECT_TRUE(runOnce());
    EXPECT_EQ(log, "");
    EXPECT_TRUE(runOnce("other"));
    EXPECT_EQ(log, "W");
    std::thread sender([&] { pair.send('a'); });
    EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
    sender.join();
    EXPECT_EQ(log, "Wa");
    pair.send('b');
    runOnce("other");
    runOnce("other");  // again while it is ready
    EXPECT_EQ(log, "WaRWRW");
    // Both in one mode, on one descriptor.
    loop->addDescriptorSource(writer, NSRunLoopCommonModes);
    writer->setEvents(DescriptorReadable);
    runOnce();
    EXPECT_EQ(log, "WaRWRWbR");
    writer->setEvents(0);
    reader->setEvents(0);
    pair.send('c');
    runOnce();
    EXPECT_EQ(log, "WaRWRWbR");
    std::thread([&] { reader->setEvents(DescriptorReadable); }).join();
    loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture());
    shutdown(pair.ends[1], SHUT_RDWR);  // a hang-up reads as the end
    loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture());
    EXPECT_EQ(log, "WaRWRWbRc-");
    reader->invalidate();
    writer->invalidate();
    EXPECT_FALSE(runOnce());
  });
}

TEST(RunLoopDescriptors, SurviveClosingReuseAndRunsFromInsideTheirBlocks) {
  EXPECT_FALSE(Source::source(-1, DescriptorReadable, nullptr));
  std::FILE* const file = std::tmpfile();
  EXPECT_FALSE(Source::source(fileno(file), DescriptorReadable, nullptr));
  std::fclose(file);
  onNewThread([] {
    FakeClock clock;
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    std::string log;
    std::array<Pair, 2> pairs;
    Ref<Source> sources[2];
    for (std::size_t index = 0; index < 2; ++index) {
      const auto block = [&, index](const Ref<Source>& source, std::uint32_t) {
        log += index ? 'b' : 'a';
        if (index == 1) return void(pairs[1].receive());
        // Its own descriptor stays ready, which must not keep this run from sleeping: the timer alone
        // ends it, and time passes only while it sleeps. The other one is handled here, and only here.
        const auto observer = makeRef<RunLoopObserver>(RunLoopBeforeWaiting, true, 0,
                                                       [&](auto&, auto) { clock.advance(1); });
        loop->addObserver(observer, NSDefaultRunLoopMode);
        NSTimer::scheduledTimerWithTimeInterval(0.5, false, [&](auto&) { loop->stop(); });
        loop->run();
        observer->invalidate();
        pairs[0].receive();
        source->invalidate();
        log += '.';
      };
      sources[index] = Source::source(pairs[index].ends[0], DescriptorReadable, block);
      loop->addDescriptorSource(sources[index], NSDefaultRunLoopMode);
      pairs[index].send('x');
    }
    EXPECT_TRUE(runOnce());
    EXPECT_EQ(log, "ab.");

    // Closed without a word, and its number used again.
    const int number = std::exchange(pairs[1].ends[0], -1);
    close(number);
    Pair fresh;
    ASSERT_EQ(fresh.ends[0], number);
    const auto again = Source::source(number, DescriptorReadable, [&](auto&, auto) {
      log += fresh.receive();
    });
    loop->addDescriptorSource(again, NSDefaultRunLoopMode);
    fresh.send('f');
    loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture());
    EXPECT_EQ(log.back(), 'f');
    again->invalidate();
    sources[1]->invalidate();
    EXPECT_FALSE(runOnce());
  });
}

}  // namespace zeb::test
