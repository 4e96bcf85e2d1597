// What it takes for timers to pause while an application is away: somebody has to say when it leaves and when
// it returns. Here the terminal's job control does. A desktop application would ask its window system.
//
//     example_lifecycle             leaves and returns by itself, as a test
//     example_lifecycle terminal    press Ctrl-Z to leave, and enter fg to return; Ctrl-C ends it

#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBUtilities/ZEBUtilities.h>
#include <signal.h>

#include <cstring>
#include <iostream>

#include "SignalSource.h"

using namespace zeb;

namespace {

/// The names that the framework UIKit exports.
void post(const char* notification) {
  NSNotificationCenter::defaultCenter()->postNotificationName(notification);
}

void handleSignal(int signal, bool stopsReally) {
  if (signal == SIGTSTP) {
    std::cout << "leaving\n";
    post("UIApplicationDidEnterBackgroundNotification");
    std::cout.flush();
    if (stopsReally) raise(SIGSTOP);
  } else {
    std::cout << "returning\n";
    post("UIApplicationWillEnterForegroundNotification");
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bool isInTerminal = argc == 2 && std::strcmp(argv[1], "terminal") == 0;
  handleSignals({SIGTSTP, SIGCONT},
                [isInTerminal](int signal) { handleSignal(signal, isInTerminal); });

  int ticks = 0;
  // Fires although the application is away, and calls it back.
  const auto alarm = ZEBTimer::timerWithTimeInterval(
      0.2,
      [&](const Ref<ZEBTimer>&) {
        std::cout << "alarm after " << ticks << " ticks\n";
        raise(SIGCONT);
      },
      false);
  const auto clock = ZEBTimer::scheduledTimerWithTimeInterval(
      isInTerminal ? 1.0 : 0.02,
      [&](const Ref<ZEBTimer>& timer) {
        std::cout << "tick " << ++ticks << "\n";
        if (isInTerminal) return;
        if (ticks == 2) {
          alarm->scheduleWithCurrentRunLoop();
          raise(SIGTSTP);
        }
        if (ticks == 4) {
          timer->invalidate();
          NSRunLoop::currentRunLoop()->stop();
        }
      },
      true, ZEBTimerBackgroundingBehaviorPause);
  NSRunLoop::currentRunLoop()->run();
}
