#include <ZEBPlatform/Dispatch/DispatchTimersPrivate.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Linux/detail/Thread.h>

#include <algorithm>
#include <chrono>

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
  isEarlier_.notify_one();
}

void DispatchTimers::wait() noexcept {
  setExactTimeouts();
  std::unique_lock lock(mutex_);
  for (;;) {
    const std::uint64_t now = mach_absolute_time();
    while (DeadlineNode* due = heap_.takeDue(now)) static_cast<DispatchTimer*>(due)->becomeDue(now);
    wakeUp_ = heap_.nextWakeUp();
    if (wakeUp_ == UINT64_MAX) {
      isEarlier_.wait(lock);
    } else {
      const std::chrono::nanoseconds moment(std::min<std::uint64_t>(wakeUp_, INT64_MAX));
      isEarlier_.wait_until(lock, std::chrono::steady_clock::time_point(moment));
    }
  }
}

}  // namespace zeb::detail
