#pragma once

#include <cstdint>

namespace zeb {

/// A file descriptor that becomes readable at a moment of the monotonic clock. Closed with the object.
/// Any thread may set it while another waits on it.
class TimerDescriptor {
 public:
  /// Stops the process when the system has no more descriptors.
  TimerDescriptor();
  TimerDescriptor(const TimerDescriptor&) = delete;
  TimerDescriptor& operator=(const TimerDescriptor&) = delete;
  ~TimerDescriptor();

  int descriptor() const noexcept { return descriptor_; }

  /// Becomes readable at `nanoseconds` (as `mach_absolute_time()` counts), at once if that has passed, and
  /// never for `UINT64_MAX`; forgets what it was set to before.
  void setMoment(std::uint64_t nanoseconds) noexcept;
  /// Waits until it is readable, and makes it unreadable again.
  void wait() noexcept;
  /// Makes it unreadable again, without waiting.
  void clear() noexcept;

 private:
  int descriptor_;
};

}  // namespace zeb
