// Timers that pause while the application is in the background. The host posts a notification when
// the application goes to the background and one when it comes back: here at the signals of the
// terminal's job control, in a desktop application at events of the window system.
//
//     example_lifecycle             goes and comes back by itself, as a test
//     example_lifecycle terminal    Ctrl-Z sends it to the background, fg brings it back

#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBUtilities/ZEBUtilities.h>
#include <signal.h>

#include <cstring>
#include <iostream>

#include "SignalSource.h"

using namespace zeb;

namespace {

/// Posts one of the two notifications that the framework UIKit names.
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
  // Fires while the application is in the background, and brings it back.
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
