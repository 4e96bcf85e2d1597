#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/DispatchTimersPrivate.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Linux/detail/Thread.h>

namespace zeb::detail {

constinit Lock DispatchTimers::lock;

DispatchTimers& DispatchTimers::shared() {
  static NeverDestroyed<DispatchTimers> timers;
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
  isEarlier_.notifyOne();
}

void DispatchTimers::disarm(DispatchTimer& timer) noexcept { heap_.remove(timer); }

void DispatchTimers::wait() noexcept {
  setExactTimeouts();
  std::vector<Ref<NSObject>> released;
  for (;;) {
    released.clear();
    const LockGuard guard(lock);
    const std::uint64_t now = mach_absolute_time();
    while (DeadlineNode* due = heap_.takeDue(now)) static_cast<DispatchTimer*>(due)->becomeDue(now);
    released.swap(released_);
    if (!released.empty()) continue;
    wakeUp_ = heap_.nextWakeUp();
    isEarlier_.waitUntil(lock, wakeUp_);
  }
}

}  // namespace zeb::detail
