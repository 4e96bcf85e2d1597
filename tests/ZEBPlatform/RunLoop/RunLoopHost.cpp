#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Linux/detail/EventDescriptor.h>
#include <poll.h>

#include "Support/FakeClock.h"
#include "Support/LoopSupport.h"

namespace zeb::test {

/// The loop of an application that knows nothing of ours but the descriptor.
struct Host {
  bool isReadable(int milliseconds = 0) const {
    pollfd waiting{descriptor, POLLIN, 0};
    return poll(&waiting, 1, milliseconds) == 1;
  }
  void run() {
    for (isOver = false; !isOver;) {
      ASSERT_TRUE(isReadable(300'000)) << "a wake-up was lost";
      loop->runPending();
    }
  }

  const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  const int descriptor = loop->pollableDescriptor();
  bool isOver = false;
};

LOOP_TEST(RunLoopHost, TheDescriptorIsReadableExactlyWhenThereIsSomethingToDo) {
  FakeClock clock;
  std::string log;
  const auto note = [&](char letter) { return [&log, letter](auto&&...) { log += letter; }; };
  loop->performBlock(note('a'));
  const Host host;
  const auto expectWork = [&](const char* logAfterwards) {
    EXPECT_TRUE(host.isReadable()) << log;
    loop->runPending();
    EXPECT_EQ(log, logAfterwards);
    EXPECT_FALSE(host.isReadable()) << log;
  };
  expectWork("a");
  std::thread([&] { loop->performBlock(note('b')); }).join();
  expectWork("ab");
  const auto timer = NSTimer::scheduledTimerWithTimeInterval(1, true, note('c'));
  expectWork("ab");  // wakes the host once, to see when
  clock.advance(0.9);
  EXPECT_FALSE(host.isReadable());
  for (const char* logAfterwards : {"abc", "abcc"}) {
    clock.advance(1);
    expectWork(logAfterwards);
  }
  timer->invalidate();

  // Work that makes work is left for the next turn, so that the host has its own.
  loop->performBlock([&] {
    loop->performBlock([&] { loop->performBlock(note('f')); });
    log += 'e';
  });
  for (int turn = 0; turn < 2; ++turn) {
    loop->runPending();
    EXPECT_TRUE(host.isReadable() && log == "abcce") << log;
  }
  expectWork("abccef");

  // Other uses of the loop in between leave the descriptor right as well.
  loop->performBlock([&] { loop->stop(); });
  loop->performBlock(note('g'));
  loop->run();
  expectWork("abccefg");

  log.clear();
  const auto hear = [&](auto&, RunLoopActivity activity) {
    log += activity == RunLoopBeforeWaiting ? 'w' : activity == RunLoopAfterWaiting ? 'a' : '!';
    if (log == "aw") loop->performBlock(note('B'));
  };
  const auto heard = RunLoopBeforeWaiting | RunLoopAfterWaiting | RunLoopEntry | RunLoopExit;
  loop->addObserver(makeRef<RunLoopObserver>(heard, true, 0, hear), NSRunLoopCommonModes);
  loop->runPending();
  expectWork("awaBw");
}

// The main queue, timers and blocks continue while a callback of any kind runs the application's
// loop, as dialogs do.
TEST(RunLoopHost, CallbacksMayRunTheApplicationsLoop) {
  for (const std::string caller : {"block", "main queue", "descriptor"}) {
    const bool isInMainQueue = caller == "main queue";
    Host host;
    Host* dialog = nullptr;
    std::string log;
    const auto block = [&] {
      log += "block ";
      NSTimer::scheduledTimerWithTimeInterval(0.001, false, [&](auto&) {
        log += "timer ";
        dispatch_async(dispatch_get_main_queue(), [&] {
          log += "queue ";
          (isInMainQueue ? host : *dialog).isOver = true;  // must not run in another such block
        });
        if (isInMainQueue) host.loop->performBlock([&] { dialog->isOver = true; });
      });
    };
    const auto runDialog = [&] {
      Host ofDialog{.descriptor = host.descriptor};  // asking for it again would wake the loop
      dialog = &ofDialog;
      if (caller != "block") host.loop->performBlock(block);
      ofDialog.run();
      log += "closed";
      host.isOver = !isInMainQueue;
    };
    EventDescriptor event;
    const auto serve = [&](const Ref<RunLoopDescriptorSource>& itself, auto) {
      itself->invalidate();
      runDialog();
    };
    const auto source =
        RunLoopDescriptorSource::source(event.descriptor(), DescriptorReadable, serve);
    host.loop->addDescriptorSource(source, NSDefaultRunLoopMode);
    if (caller == "descriptor") event.signal();
    if (isInMainQueue) dispatch_async(dispatch_get_main_queue(), runDialog);
    if (caller == "block") {
      host.loop->performBlock(runDialog);
      host.loop->performBlock(block);
    }
    host.run();
    source->invalidate();
    EXPECT_EQ(log, isInMainQueue ? "block timer closedqueue " : "block timer queue closed");
  }
}

LOOP_TEST(RunLoopHost, NoWakeUpIsLost) {
  playPingPong(20'000, runUntilStopped, [] { NSRunLoop::currentRunLoop()->stop(); });
  Host host;
  playPingPong(20'000, [&] { host.run(); }, [&] { host.isOver = true; });
  EXPECT_FALSE(host.isReadable());
}

}  // namespace zeb::test
