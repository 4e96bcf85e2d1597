#include "Work.h"

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/RunLoop/NSThread.h>

#include <iostream>
#include <string>
#include <utility>

using namespace zeb;

namespace {

void say(const std::string& step) {
  std::cout << step << (NSThread::currentThread()->isMainThread() ? "" : " on the wrong thread!")
            << "\n";
}

void callFromAnotherThread(const std::function<void()>& quit) {
  NSThread::detachNewThreadWithBlock([quit] {
    int answer = 0;
    performOnThread(NSThread::mainThread(), [&] { answer = 42; }, true);
    performOnThread(
        NSThread::mainThread(),
        [quit, answer] {
          say("another thread got " + std::to_string(answer) + " from here");
          quit();
        },
        false);
  });
}

void startTimer(const std::function<void()>& quit) {
  NSTimer::scheduledTimerWithTimeInterval(0.01, true,
                                          [quit, ticks = 0](const Ref<NSTimer>& timer) mutable {
                                            say("tick " + std::to_string(++ticks));
                                            if (ticks < 3) return;
                                            timer->invalidate();
                                            callFromAnotherThread(quit);
                                          });
}

}  // namespace

void startWork(std::function<void()> quit) {
  dispatch_async(dispatch_get_main_queue(), [quit = std::move(quit)] {
    say("first block of the main queue");
    dispatch_async(dispatch_get_main_queue(), [quit] {
      say("second block of the main queue");
      startTimer(quit);
    });
  });
}
