#include <Linux/Thread.h>

#include <unistd.h>

namespace zeb {

bool isMainThread() noexcept {
  // Asked anew after a fork, whose surviving thread becomes the child's main thread.
  thread_local pid_t askedIn = -1;
  thread_local bool isMain = false;
  const pid_t process = getpid();
  if (askedIn != process) {
    isMain = gettid() == process;
    askedIn = process;
  }
  return isMain;
}

}  // namespace zeb
