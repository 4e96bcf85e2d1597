#pragma once

#include <ZEBPlatform/Concurrency/detail/Condition.h>

#include <cstdint>

namespace zeb::detail {

/// Where one thread sleeps until the monotonic clock reaches a moment or another thread wakes it. It
/// needs no file descriptor: for threads that would sleep on descriptors if the process had any left.
class InterruptibleSleep {
 public:
  /// The moment in ticks of `mach_absolute_time()`, `UINT64_MAX` for never. Replaces the moment that was
  /// set before, also for a sleep that has begun. Any thread.
  void setMoment(std::uint64_t moment) noexcept;
  /// Ends the sleep, or the next one if the thread does not sleep. Any thread.
  void wake() noexcept;

  /// Returns after the moment, which is forgotten then, or after `wake()`.
  void sleep() noexcept;

 private:
  Lock lock_;
  Condition isChanged_;
  std::uint64_t moment_ ZEB_GUARDED_BY(lock_) = UINT64_MAX;
  bool isWoken_ ZEB_GUARDED_BY(lock_) = false;
};

}  // namespace zeb::detail
