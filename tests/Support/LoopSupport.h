#pragma once

#include <ZEBPlatform/RunLoop.h>

#include "Support/Support.h"

namespace zeb::test {

/// Calls the body on a new thread with its loop.
inline void onNewThread(FunctionView<void(const Ref<NSRunLoop>& loop)> body) {
  std::thread([&] { body(NSRunLoop::currentRunLoop()); }).join();
}

/// A test that runs on a new thread, so that it has a loop of its own: `loop`.
#define LOOP_TEST(suite, name)                         \
  static void suite##name(const Ref<NSRunLoop>& loop); \
  TEST(suite, name) { onNewThread(suite##name); }      \
  static void suite##name([[maybe_unused]] const Ref<NSRunLoop>& loop)

/// A thread that runs its loop as long as the object lives, and has ended after that.
class LoopThread {
 public:
  LoopThread() { thread->start(); }
  ~LoopThread() {
    loop->performBlock([itself = loop.get()] { itself->stop(); });
    performOnThread(thread, [] {}, true);  // dropped when the thread ends
  }

  const Ref<NSThread> thread = makeRef<NSThread>([] {
    NSRunLoop::currentRunLoop()->addPort(NSPort::port(), NSDefaultRunLoopMode);
    NSRunLoop::currentRunLoop()->run();
  });
  const Ref<NSRunLoop> loop = thread->runLoop();
};

/// One pass of the calling thread's loop, without waiting.
inline bool runOnce(const NSString& mode = NSDefaultRunLoopMode) {
  return NSRunLoop::currentRunLoop()->runMode(mode, NSDate::distantPast());
}

/// Runs the calling thread's loop until it is stopped.
inline void runUntilStopped() {
  const Ref<NSPort> port = NSPort::port();
  NSRunLoop::currentRunLoop()->addPort(port, NSDefaultRunLoopMode);
  NSRunLoop::currentRunLoop()->run();
  port->invalidate();
}

/// The calling thread's loop and another one wake each other for this number of rounds, while `run`
/// runs the former; then calls `end`. If a wake-up is lost, it never returns.
inline void playPingPong(int rounds, const std::function<void()>& run,
                         const std::function<void()>& end) {
  const LoopThread other;
  const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  std::function<void()> serve = [&] {
    if (--rounds == 0) return end();
    other.loop->performBlock([&] { loop->performBlock([&] { serve(); }); });
  };
  loop->performBlock([&] { serve(); });
  run();
}

}  // namespace zeb::test
