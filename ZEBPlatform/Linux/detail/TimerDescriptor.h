#pragma once

#include <cstdint>

namespace zeb {

/// A file descriptor that becomes readable at a moment of the monotonic clock. Closed with the object.
/// Any thread may set it while another waits for it.
class TimerDescriptor {
 public:
  TimerDescriptor() noexcept;
  TimerDescriptor(const TimerDescriptor&) = delete;
  TimerDescriptor& operator=(const TimerDescriptor&) = delete;
  ~TimerDescriptor();

  /// Negative when the process had none left: then the object is of no use.
  int descriptor() const noexcept { return descriptor_; }

  /// Becomes readable at `nanoseconds` (as `mach_absolute_time()` counts), at once if that has passed, and
  /// never for `UINT64_MAX`; forgets what it was set to before.
  void setMoment(std::uint64_t nanoseconds) noexcept;
  /// Makes it unreadable again.
  void clear() noexcept;

 private:
  const int descriptor_;
};

}  // namespace zeb
