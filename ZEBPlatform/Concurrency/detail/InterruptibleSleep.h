#pragma once

#include <ZEBPlatform/Concurrency/detail/Condition.h>

#include <cstdint>

namespace zeb::detail {

/// The sleep of one thread until the monotonic clock reaches a moment or another thread wakes it.
/// It needs no file descriptor, so it also serves threads in a process that has none left.
///
/// Memory ordering: what a thread did before wake() is visible to the sleeping thread after the
/// sleep() that this wake() ends. Wake-ups are not counted: several before one sleep() end only
/// that one.
/// Lifetime: it must outlive all calls. Size: 32 bytes.
/// Do not let several threads sleep on one object: only one of them would notice a wake-up.
class InterruptibleSleep {
 public:
  /// Sets the moment in ticks of `mach_absolute_time()`, `UINT64_MAX` for never. Replaces the
  /// previous moment, also for a sleep that has begun. Any thread.
  void setMoment(std::uint64_t moment) noexcept ZEB_EXCLUDES(lock_);
  /// Ends the sleep, or the next one if the thread does not sleep. Any thread.
  void wake() noexcept ZEB_EXCLUDES(lock_);

  /// Returns when the moment has come, which resets it to never, or after wake().
  void sleep() noexcept ZEB_EXCLUDES(lock_);

 private:
  Lock lock_;
  Condition isChanged_;
  std::uint64_t moment_ ZEB_GUARDED_BY(lock_) = UINT64_MAX;
  bool isWoken_ ZEB_GUARDED_BY(lock_) = false;
};

}  // namespace zeb::detail
