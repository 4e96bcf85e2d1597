#include <Dispatch/DispatchTimers.h>
#include <Linux/Clock.h>
#include <Linux/Console.h>
#include <Linux/Thread.h>

namespace zeb::detail {

DispatchTimers& DispatchTimers::shared() {
  static auto* timers = new DispatchTimers;
  return *timers;
}

DispatchTimers::DispatchTimers() {
  const auto wait = [](void* timers) { static_cast<DispatchTimers*>(timers)->wait(); };
  if (!startServiceThread("zeb-timers", wait, this)) {
    fatal("No thread is left to wait for the dispatch timers.");
  }
}

void DispatchTimers::arm(DispatchTimer& timer) {
  heap_.put(timer);
  // A later first deadline needs no system call: the thread wakes up once for nothing.
  if (heap_.nextWakeUp() >= wakeUp_) return;
  wakeUp_ = heap_.nextWakeUp();
  descriptor_.setMoment(wakeUp_);
}

void DispatchTimers::wait() noexcept {
  for (;;) {
    descriptor_.wait();
    std::lock_guard guard(mutex_);
    const std::uint64_t now = mach_absolute_time();
    while (DeadlineNode* due = heap_.takeDue(now)) static_cast<DispatchTimer*>(due)->becomeDue(now);
    wakeUp_ = heap_.nextWakeUp();
    descriptor_.setMoment(wakeUp_);
  }
}

}  // namespace zeb::detail
