#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <map>
#include <semaphore>

#include "Support/FakeClock.h"
#include "Support/LoopSupport.h"
#include "Support/Support.h"

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

TEST(RunLoopObservers, AreCalledAtEveryStepInTheirOrder) {
  onNewThread([](const Ref<NSRunLoop>& loop) {
    FakeClock clock;
    std::string log;
    const auto add = [&](std::uint32_t activities, std::int64_t order, auto note,
                         const NSString& mode = NSDefaultRunLoopMode) {
      const auto observer = makeRef<RunLoopObserver>(activities, true, order, note);
      loop->addObserver(observer, mode);
      loop->addObserver(observer, mode);
      return observer;
    };
    std::map<RunLoopActivity, const char*> names{
        {RunLoopEntry, "entry "},           {RunLoopBeforeTimers, "timers "},
        {RunLoopBeforeSources, "sources "}, {RunLoopBeforeWaiting, "waiting "},
        {RunLoopAfterWaiting, "awake "},    {RunLoopExit, "exit"}};
    const auto all = add(RunLoopAllActivities, 0,
                         [&](auto&, RunLoopActivity activity) { log += names.at(activity); });
    EXPECT_FALSE(runOnce());  // observers keep no loop running
    loop->performBlock([&] {
      log += "BLOCK ";
      NSTimer::scheduledTimerWithTimeInterval(1, false, [&](auto&) {
        log += "TIMER ";
        loop->performBlock([&] {
          log += "SECOND ";
          loop->performBlock([&] { log += "THIRD "; });
        });
      });
    });
    add(RunLoopBeforeWaiting, 9,
        [&](auto&, auto) { clock.advance(1.1); });  // while the loop sleeps
    loop->run();
    EXPECT_EQ(log,
              "entry timers sources BLOCK waiting awake timers TIMER sources SECOND "
              "timers sources THIRD exit");

    log.clear();
    const auto note = [&](const char* name) { return [&log, name](auto&, auto) { log += name; }; };
    add(RunLoopEntry, 5, note("third"));
    add(RunLoopEntry, -1, note("first "), NSRunLoopCommonModes);
    add(RunLoopEntry, 1, note("second "));
    add(RunLoopEntry, 1, note("unexpected"), "other");
    loop->removeObserver(all, NSDefaultRunLoopMode);
    loop->performBlock([] {});
    runOnce();
    EXPECT_EQ(log, "first second third");
  });
}

TEST(RunLoopSources, SignalsFromAnyThreadCountOnceAndInTheirModesOnly) {
  onNewThread([](const Ref<NSRunLoop>& loop) {
    int calls = 0;
    Ref<RunLoopSource> source;
    source = makeRef<RunLoopSource>([&] {
      if (++calls != 2) return;
      source->signal();
      EXPECT_TRUE(runOnce());  // not from within itself
      EXPECT_EQ(calls, 2);
    });
    source->signal();  // before it is in any loop
    loop->addSource(source, NSDefaultRunLoopMode);
    EXPECT_FALSE(runOnce("other"));
    std::thread late;
    for (int call = 1; call <= 3; ++call) {
      EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
      EXPECT_EQ(calls, call);
      if (call == 1) late = std::thread([&] { source->signal(); });
    }
    late.join();
    source->signal();
    source->signal();
    loop->removeSource(source, NSDefaultRunLoopMode);
    EXPECT_FALSE(runOnce());
    loop->addSource(source, "other");
    for (int turn = 0; turn < 2; ++turn) runOnce("other");
    EXPECT_EQ(calls, 4);
  });
}

/// If modes were kept, each search for one would look through all of them and take minutes.
TEST(RunLoopModes, MayBeMadeUpForOneUse) {
  onNewThread([](const Ref<NSRunLoop>& loop) {
    int calls = 0;
    const auto source = makeRef<RunLoopSource>([&] { ++calls; });
    constexpr int count = 60'000;
    for (int number = 0; number < count; ++number) {
      const NSString mode = NSString::stringWithFormat("mode %d", number);
      const auto timer = NSTimer::timerWithTimeInterval(1000, false, nullptr);
      loop->addTimer(timer, mode);
      loop->addSource(source, mode);
      source->signal();
      EXPECT_TRUE(runOnce(mode));
      loop->removeSource(source, mode);
      timer->invalidate();
    }
    EXPECT_EQ(calls, count);
  });
}

TEST(RunLoopModes, AreForgottenTogetherWithWhatTheyWatched) {
  onNewThread([](const Ref<NSRunLoop>& loop) {
    Pair pair;
    pair.send('a');
    const auto reader =
        Source::source(pair.ends[0], DescriptorReadable,
                       [](const Ref<Source>& source, auto) { source->setEvents(0); });
    loop->addDescriptorSource(reader, "private");
    EXPECT_TRUE(runOnce("private"));
    reader->setEvents(DescriptorReadable);
    reader->invalidate();
    pollfd waiting{loop->pollableDescriptor(), POLLIN, 0};
    loop->runPending();
    EXPECT_EQ(poll(&waiting, 1, 0), 0) << "the loop still waits for the descriptor";
  });
}

TEST(RunLoopDescriptors, CallWhileReadyForWhatIsWatchedAndInTheirModesOnly) {
  onNewThread([](const Ref<NSRunLoop>& loop) {
    Pair pair;
    std::string log;
    const auto reader = Source::source(pair.ends[0], DescriptorReadable,
                                       [&](auto&, auto) { log += pair.receive(); });
    const auto watcher = Source::source(pair.ends[0], DescriptorReadable | DescriptorWritable,
                                        [&](auto&, std::uint32_t events) {
                                          log += events & DescriptorReadable ? "R" : "";
                                          log += events & DescriptorWritable ? "W" : "";
                                        });
    const auto run = [&] { loop->runMode(NSDefaultRunLoopMode, std::chrono::hours(1)); };
    loop->addDescriptorSource(reader, NSDefaultRunLoopMode);
    loop->addDescriptorSource(watcher, "other");
    runOnce();
    runOnce("other");
    EXPECT_EQ(log, "W");
    std::thread sender([&] { pair.send('a'); });
    run();
    sender.join();
    pair.send('b');
    runOnce("other");
    runOnce("other");  // again while it is ready
    EXPECT_EQ(log, "WaRWRW");
    // Both in one mode, on one descriptor.
    loop->addDescriptorSource(watcher, NSRunLoopCommonModes);
    watcher->setEvents(DescriptorReadable);
    runOnce();
    watcher->setEvents(0);
    shutdown(pair.ends[1], SHUT_RDWR);  // a hang-up reads as the end
    run();
    EXPECT_EQ(log, "WaRWRWbR-");
    reader->setEvents(0);
    runOnce();
    EXPECT_EQ(log, "WaRWRWbR-");
  });
}

TEST(RunLoopDescriptors, SurviveClosingReuseAndRunsFromInsideTheirBlocks) {
  EXPECT_FALSE(Source::source(-1, DescriptorReadable, nullptr));
  std::FILE* const file = std::tmpfile();
  EXPECT_FALSE(Source::source(fileno(file), DescriptorReadable, nullptr));
  std::fclose(file);
  const int device = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const auto unwatchable = Source::source(device, DescriptorReadable, nullptr);
  NSRunLoop::currentRunLoop()->addDescriptorSource(unwatchable, NSDefaultRunLoopMode);
  EXPECT_FALSE(unwatchable->isValid());
  close(device);
  onNewThread([](const Ref<NSRunLoop>& loop) {
    FakeClock clock;
    std::string log;
    Pair outer, inner;
    const auto add = [&](int descriptor, auto block) {
      const auto source = Source::source(descriptor, DescriptorReadable, block);
      loop->addDescriptorSource(source, NSDefaultRunLoopMode);
      return source;
    };
    add(outer.ends[0], [&](const Ref<Source>& source, auto) {
      log += '(';
      // This descriptor stays ready, which must not keep the run from sleeping: only a timer ends
      // the run, and time passes only while it sleeps. The other descriptor is handled there, and
      // only there.
      const auto observer = makeRef<RunLoopObserver>(RunLoopBeforeWaiting, true, 0,
                                                     [&](auto&, auto) { clock.advance(1); });
      loop->addObserver(observer, NSDefaultRunLoopMode);
      NSTimer::scheduledTimerWithTimeInterval(0.5, false, [&](auto&) { loop->stop(); });
      loop->run();
      observer->invalidate();
      source->invalidate();
      log += ')';
    });
    const auto closed = add(inner.ends[0], [&](auto&, auto) { log += inner.receive(); });
    outer.send('o');
    inner.send('i');
    EXPECT_TRUE(runOnce());
    EXPECT_EQ(log, "(i)");

    // Closed without a word, and its number used again.
    const int number = std::exchange(inner.ends[0], -1);
    close(number);
    Pair fresh;
    ASSERT_EQ(fresh.ends[0], number);
    const auto again = add(number, [&](auto&, auto) { log += fresh.receive(); });
    fresh.send('f');
    loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture());
    EXPECT_EQ(log.back(), 'f');
    again->invalidate();
    closed->invalidate();
    EXPECT_FALSE(runOnce());
    // A mode that the loop has run in becomes common: what is common is watched there from then on.
    const auto common =
        Source::source(number, DescriptorReadable, [&](auto&, auto) { log += fresh.receive(); });
    loop->addPort(NSPort::port(), "late");
    EXPECT_TRUE(loop->runMode("late", NSDate::distantPast()));
    loop->addDescriptorSource(common, NSRunLoopCommonModes);
    loop->addCommonMode("late");
    fresh.send('c');
    EXPECT_TRUE(loop->runMode("late", NSDate::distantFuture()));
    EXPECT_EQ(log.back(), 'c');
  });
}

/// In a process of its own, which runs out of descriptors before the library has used any.
TEST(RunLoopDescriptors, NothingStopsWhenTheProcessHasNoneLeft) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "UndefinedBehaviorSanitizer, which goes with it, opens a pipe to check a type";
#endif
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto runOutOfDescriptors = [] {
    int step = 0;
    const auto require = [&](bool isTrue) {
      if (++step; !isTrue) std::_Exit(step);
    };
    Pair pair;
    rlimit usual;
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none{.rlim_cur = 3, .rlim_max = usual.rlim_max};
    require(setrlimit(RLIMIT_NOFILE, &none) == 0);

    std::binary_semaphore done(0);
    const LoopThread other;
    playPingPong(100, [] { runUntilStopped(); }, [] { NSRunLoop::currentRunLoop()->stop(); });
    other.loop->addTimer(
        NSTimer::timerWithTimeInterval(0.001, false, [&](auto&) { done.release(); }),
        NSDefaultRunLoopMode);
    done.acquire();
    const auto newSource = [&] {
      const auto source =
          Source::source(pair.ends[0], DescriptorReadable, [&](const Ref<Source>& itself, auto) {
            itself->invalidate();
            done.release();
          });
      require(source && source->isValid());
      return source;
    };
    const auto refused = newSource();
    other.loop->addDescriptorSource(refused, NSDefaultRunLoopMode);
    require(!refused->isValid());
    require(NSRunLoop::currentRunLoop()->pollableDescriptor() == -1);
    NSRunLoop::currentRunLoop()->runPending();

    setrlimit(RLIMIT_NOFILE, &usual);
    const auto taken = newSource();
    other.loop->addDescriptorSource(taken, NSDefaultRunLoopMode);  // while it sleeps
    require(taken->isValid());
    pair.send('a');
    done.acquire();
    require(NSRunLoop::currentRunLoop()->pollableDescriptor() >= 0);
    std::_Exit(0);
  };
  EXPECT_EXIT(runOutOfDescriptors(), testing::ExitedWithCode(0), "");
}

}  // namespace zeb::test
