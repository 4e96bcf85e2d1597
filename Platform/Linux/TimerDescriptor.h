#pragma once

#include <Linux/InterruptibleSleep.h>

#include <cstdint>

namespace zeb {

/// A file descriptor that becomes readable at a moment of the monotonic clock. Closed with the object.
/// Any thread may set it while another waits on it.
class TimerDescriptor {
 public:
  TimerDescriptor() noexcept;
  TimerDescriptor(const TimerDescriptor&) = delete;
  TimerDescriptor& operator=(const TimerDescriptor&) = delete;
  ~TimerDescriptor();

  /// Negative when the process had none left. Then `setMoment` and `wait` still work together, though each
  /// setting wakes the thread that waits.
  int descriptor() const noexcept { return descriptor_; }

  /// Becomes readable at `nanoseconds` (as `mach_absolute_time()` counts), at once if that has passed, and
  /// never for `UINT64_MAX`; forgets what it was set to before.
  void setMoment(std::uint64_t nanoseconds) noexcept;
  /// Waits until it is readable, and makes it unreadable again.
  void wait() noexcept;
  /// Makes it unreadable again, without waiting.
  void clear() noexcept;

 private:
  const int descriptor_;
  InterruptibleSleep sleep_;  ///< for want of a descriptor
};

}  // namespace zeb
