#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <bit>
#include <semaphore>

#include "Support/FakeClock.h"
#include "Support/LoopSupport.h"

namespace zeb::test {

/// Two connected sockets.
struct Pair {
  Pair() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0, ends), 0); }
  ~Pair() { close(ends[0]), close(ends[1]); }
  void send(char letter) { EXPECT_EQ(write(ends[1], &letter, 1), 1); }
  char receive() {
    char letter = 0;
    return read(ends[0], &letter, 1) == 1 ? letter : '-';
  }
  int ends[2];
};

using Source = RunLoopDescriptorSource;

LOOP_TEST(RunLoopObservers, AreCalledAtEveryStepInTheirOrder) {
  FakeClock clock;
  std::string log;
  const auto note = [&](char letter) { return [&log, letter](auto&&...) { log += letter; }; };
  const auto add = [&](std::uint32_t activities, std::int64_t order, auto block,
                       const NSString& mode = NSDefaultRunLoopMode) {
    const auto observer = makeRef<RunLoopObserver>(activities, true, order, block);
    for (int time = 0; time < 2; ++time) loop->addObserver(observer, mode);
    return observer;
  };
  // Entry, timers, sources, waiting, awake, exit. Capital letters are callbacks.
  const auto noteActivity = [&](auto&, RunLoopActivity activity) {
    log += "ets--wax"[std::countr_zero(static_cast<unsigned>(activity))];
  };
  const auto all = add(RunLoopAllActivities, 0, noteActivity);
  EXPECT_FALSE(runOnce());  // observers keep no loop running
  loop->performBlock([&] {
    log += 'A';
    NSTimer::scheduledTimerWithTimeInterval(1, false, [&](auto&) {
      log += 'B';
      loop->performBlock([&] {
        log += 'C';
        loop->performBlock(note('D'));
      });
    });
  });
  add(RunLoopBeforeWaiting, 9, [&](auto&, auto) { clock.advance(1.1); });  // while it sleeps
  loop->run();
  EXPECT_EQ(log, "etsAwatBsCtsDx");

  log.clear();
  add(RunLoopEntry, 5, note('3'));
  add(RunLoopEntry, -1, note('1'), NSRunLoopCommonModes);
  add(RunLoopEntry, 1, note('2'));
  add(RunLoopEntry, 1, note('!'), "other");
  loop->removeObserver(all, NSDefaultRunLoopMode);
  loop->performBlock([] {});
  runOnce();
  EXPECT_EQ(log, "123");
}

LOOP_TEST(RunLoopSources, SignalsFromAnyThreadCountOnceAndInTheirModesOnly) {
  int calls = 0;
  Ref<RunLoopSource> source;
  source = makeRef<RunLoopSource>([&] {
    if (++calls != 2) return;
    source->signal();
    EXPECT_TRUE(runOnce() && calls == 2);  // not from within itself
  });
  source->signal();  // before it is in any loop
  loop->addSource(source, NSDefaultRunLoopMode);
  EXPECT_FALSE(runOnce("other"));
  std::jthread late;
  for (int call = 1; call <= 3; ++call) {
    EXPECT_TRUE(loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture()));
    EXPECT_EQ(calls, call);
    if (call == 1) late = std::jthread([&] { source->signal(); });
  }
  for (int time = 0; time < 2; ++time) source->signal();
  loop->removeSource(source, NSDefaultRunLoopMode);
  EXPECT_FALSE(runOnce());
  loop->addSource(source, "other");
  for (int turn = 0; turn < 2; ++turn) runOnce("other");
  EXPECT_EQ(calls, 4);
}

/// If modes were kept, each search for one would look through all of them and take minutes.
LOOP_TEST(RunLoopModes, MayBeMadeUpForOneUse) {
  const auto source = makeRef<RunLoopSource>([] {});
  for (int number = 0; number < 60'000; ++number) {
    const NSString mode = NSString::stringWithFormat("mode %d", number);
    const auto timer = NSTimer::timerWithTimeInterval(1000, false, nullptr);
    loop->addTimer(timer, mode);
    loop->addSource(source, mode);
    source->signal();
    EXPECT_TRUE(runOnce(mode));
    loop->removeSource(source, mode);
    timer->invalidate();
  }
}

LOOP_TEST(RunLoopModes, AreForgottenTogetherWithWhatTheyWatched) {
  Pair pair;
  pair.send('a');
  const auto ignore = [](const Ref<Source>& source, auto) { source->setEvents(0); };
  const auto reader = Source::source(pair.ends[0], DescriptorReadable, ignore);
  loop->addDescriptorSource(reader, "private");
  EXPECT_TRUE(runOnce("private"));
  reader->setEvents(DescriptorReadable);
  reader->invalidate();
  pollfd waiting{loop->pollableDescriptor(), POLLIN, 0};
  loop->runPending();
  EXPECT_EQ(poll(&waiting, 1, 0), 0) << "the loop still waits for the descriptor";
}

LOOP_TEST(RunLoopDescriptors, CallWhileReadyForWhatIsWatchedAndInTheirModesOnly) {
  Pair pair;
  std::string log;
  const auto read = [&](auto&&...) { log += pair.receive(); };
  const auto note = [&](auto&, std::uint32_t events) {
    log += events & DescriptorReadable ? "R" : "";
    log += events & DescriptorWritable ? "W" : "";
  };
  const int end = pair.ends[0];
  const auto reader = Source::source(end, DescriptorReadable, read);
  const auto watcher = Source::source(end, DescriptorReadable | DescriptorWritable, note);
  const auto run = [&] { loop->runMode(NSDefaultRunLoopMode, std::chrono::hours(1)); };
  loop->addDescriptorSource(reader, NSDefaultRunLoopMode);
  loop->addDescriptorSource(watcher, "other");
  runOnce();
  runOnce("other");
  const std::jthread sender([&] { pair.send('a'); });
  run();
  pair.send('b');
  for (int turn = 0; turn < 2; ++turn) runOnce("other");  // again while it is ready
  // Both in one mode, on one descriptor.
  loop->addDescriptorSource(watcher, NSRunLoopCommonModes);
  watcher->setEvents(DescriptorReadable);
  runOnce();
  watcher->setEvents(0);
  shutdown(pair.ends[1], SHUT_RDWR);  // a hang-up reads as the end
  run();
  reader->setEvents(0);
  runOnce();
  EXPECT_EQ(log, "WaRWRWbR-");
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
      const auto pass = [&](auto&, auto) { clock.advance(1); };
      const auto observer = makeRef<RunLoopObserver>(RunLoopBeforeWaiting, true, 0, pass);
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
    EXPECT_TRUE(runOnce() && log == "(i)") << log;

    // Closed without a word, and its number used again.
    const int number = std::exchange(inner.ends[0], -1);
    close(number);
    Pair fresh;
    ASSERT_EQ(fresh.ends[0], number);
    const auto read = [&](auto&, auto) { log += fresh.receive(); };
    const auto again = add(number, read);
    fresh.send('f');
    loop->runMode(NSDefaultRunLoopMode, NSDate::distantFuture());
    EXPECT_EQ(log.back(), 'f');
    again->invalidate();
    closed->invalidate();
    EXPECT_FALSE(runOnce());
    // A mode that the loop has run in becomes common: what is common is watched there from then on.
    const auto common = Source::source(number, DescriptorReadable, read);
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
    const auto end = [&](const auto& item, auto...) {
      item->invalidate();
      done.release();
    };
    const LoopThread other;
    const Ref<NSRunLoop> mine = NSRunLoop::currentRunLoop();
    playPingPong(100, runUntilStopped, [&] { mine->stop(); });
    other.loop->addTimer(NSTimer::timerWithTimeInterval(0.001, true, end), NSDefaultRunLoopMode);
    done.acquire();
    const auto add = [&] {  // while the other loop sleeps
      const auto source = Source::source(pair.ends[0], DescriptorReadable, end);
      require(source && source->isValid());
      other.loop->addDescriptorSource(source, NSDefaultRunLoopMode);
      return source;
    };
    require(!add()->isValid());
    require(mine->pollableDescriptor() == -1);
    mine->runPending();

    setrlimit(RLIMIT_NOFILE, &usual);
    require(add()->isValid());
    pair.send('a');
    done.acquire();
    require(mine->pollableDescriptor() >= 0);
    std::_Exit(0);
  };
  EXPECT_EXIT(runOutOfDescriptors(), testing::ExitedWithCode(0), "");
}

}  // namespace zeb::test
