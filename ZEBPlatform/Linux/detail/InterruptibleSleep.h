#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zeb {

/// Where one thread sleeps until a moment of the monotonic clock comes or another thread wakes it. It needs no
/// file descriptor: for threads that would sleep on descriptors if the process had any left.
class InterruptibleSleep {
 public:
  /// The moment as `mach_absolute_time()` counts, `UINT64_MAX` for never; replaces the one that was set
  /// before, for a sleep that goes on as well. Any thread.
  void setMoment(std::uint64_t moment) noexcept;
  /// Ends the sleep, or the next one if nobody sleeps. Any thread.
  void wake() noexcept;

  /// Returns when the moment has come, which is forgotten then, or when somebody wakes.
  void sleep() noexcept;

 private:
  std::mutex mutex_;
  std::condition_variable isChanged_;
  std::uint64_t moment_ = UINT64_MAX;
  bool isWoken_ = false;
};

}  // namespace zeb
