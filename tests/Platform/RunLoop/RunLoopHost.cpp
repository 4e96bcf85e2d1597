#include <Dispatch/DispatchQueue.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <atomic>
#include <functional>
#include <semaphore>

#include "FakeClock.h"
#include "LoopSupport.h"

namespace zeb::test {

namespace {

/// The loop of an application that knows nothing of ours but the descriptor.
struct Host {
  explicit Host(const Ref<NSRunLoop>& itsLoop)
      : loop(itsLoop), descriptor(itsLoop->pollableDescriptor()) {}

  bool isReadable(int milliseconds = 0) const {
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, milliseconds) == 1;
  }
  void run() {
    for (isOver = false; !isOver;) {
      EXPECT_TRUE(isReadable(-1));
      loop->runPending();
    }
  }

  const Ref<NSRunLoop> loop;
  const int descriptor;
  bool isOver = false;
};

}  // namespace

TEST(RunLoopHost, TheDescriptorIsReadableExactlyWhenThereIsSomethingToDo) {
  onNewThread([] {
    FakeClock clock;
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    std::string log;
    loop->performBlock([&] { log += 'a'; });
    const Host host(loop);
    const auto expectWork = [&](const char* logAfterwards) {
      EXPECT_TRUE(host.isReadable()) << log;
      loop->runPending();
      EXPECT_EQ(log, logAfterwards);
      EXPECT_FALSE(host.isReadable()) << log;
    };
    expectWork("a");
    loop->runPending();  // for nothing
    EXPECT_FALSE(host.isReadable());

    loop->performBlock([&] { log += 'b'; });
    expectWork("ab");
    std::thread([&] { loop->performBlock([&] { log += 'c'; }); }).join();
    expectWork("abc");

    const auto timer = NSTimer::scheduledTimerWithTimeInterval(1, true, [&](auto&) { log += 'd'; });
    expectWork("abc");  // wakes the host once, to see when
    clock.advance(0.9);
    EXPECT_FALSE(host.isReadable());
    clock.advance(0.2);
    expectWork("abcd");
    clock.advance(1);
    expectWork("abcdd");
    timer->invalidate();
    clock.advance(1);
    loop->runPending();

    const auto source = makeRef<RunLoopSource>([&] { log += 'e'; });
    loop->addSource(source, NSRunLoopCommonModes);
    loop->runPending();
    source->signal();
    expectWork("abcdde");

    // Work that makes work is left for the next turn, so that the host has its own.
    int left = 3;
    std::function<void()> more = [&] {
      if (--left) loop->performBlock([&] { more(); });
    };
    loop->performBlock([&] { more(); });
    for (int turn = 0; turn < 3; ++turn) {
      EXPECT_TRUE(host.isReadable());
      loop->runPending();
      EXPECT_EQ(left, 2 - turn);
    }
    EXPECT_FALSE(host.isReadable());

    // A run of the loop in between leaves the descriptor right as well.
    loop->performBlock([&] { loop->stop(); });
    loop->performBlock([&] { log += 'f'; });
    loop->run();
    expectWork("abcddef");
    EXPECT_FALSE(runOnce("empty"));
    loop->cancelPerformBlocksWithTarget(&log);
    EXPECT_FALSE(host.isReadable());
    loop->performBlock([&] { log += 'g'; });
    expectWork("abcddefg");
  });
}

TEST(RunLoopHost, ObserversHearOfTheWaiting) {
  onNewThread([] {
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    const Host host(loop);
    std::string log;
    const auto note = [&](auto&, RunLoopActivity activity) {
      log += activity == RunLoopBeforeWaiting ? 'w' : activity == RunLoopAfterWaiting ? 'a' : '?';
      if (log == "w") loop->performBlock([&] { log += 'B'; });
    };
    const auto waiting = RunLoopBeforeWaiting | RunLoopAfterWaiting | RunLoopEntry | RunLoopExit;
    loop->addObserver(makeRef<RunLoopObserver>(waiting, true, 0, note), NSRunLoopCommonModes);
    loop->runPending();
    EXPECT_TRUE(host.isReadable());  // for what the observer posted
    loop->runPending();
    EXPECT_EQ(log, "waBw");
  });
}

// The main queue, timers and blocks go on while a callback runs the application's loop, as dialogs do.
TEST(RunLoopHost, CallbacksMayRunTheApplicationsLoop) {
  const Ref<NSRunLoop>& loop = NSRunLoop::mainRunLoop();
  Host host(loop);
  std::string log;
  loop->performBlock([&] {
    log += '(';
    Host dialog(loop);
    std::thread poster;
    NSTimer::scheduledTimerWithTimeInterval(0.001, false, [&](auto&) {
      log += 't';
      poster = std::thread([&] {
        dispatch_async(dispatch_get_main_queue(), [&] {
          log += 'q';
          dialog.isOver = true;
        });
      });
    });
    dialog.run();
    poster.join();
    log += ')';
    host.isOver = true;
  });
  loop->performBlock([&] { log += 'b'; });
  loop->performBlock([&] { log += 'c'; });
  host.run();
  EXPECT_EQ(log, "(bctq)");

  log.clear();
  dispatch_async(dispatch_get_main_queue(), [&] {
    // Inside a block of the main queue its next one has to wait, the rest has not.
    Host dialog(loop);
    dispatch_async(dispatch_get_main_queue(), [&] {
      log += 'n';
      host.isOver = true;
    });
    loop->performBlock([&] {
      log += 'b';
      dialog.isOver = true;
    });
    dialog.run();
    log += '.';
  });
  host.run();
  EXPECT_EQ(log, "b.n");
}

TEST(RunLoopHost, NoWakeUpIsLostAndNoneIsMadeUp) {
  onNewThread([] {
    const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
    Host host(loop);
    const LoopThread other;
    int left = 20'000;
    std::function<void()> ping = [&] {
      if (--left == 0) return void(host.isOver = true);
      other.loop->performBlock([&] { loop->performBlock([&] { ping(); }); });
    };
    loop->performBlock([&] { ping(); });
    host.run();
    EXPECT_EQ(left, 0);
    EXPECT_FALSE(host.isReadable());
  });
}

}  // namespace zeb::test
