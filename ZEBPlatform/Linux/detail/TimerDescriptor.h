#pragma once

#include <cstdint>

namespace zeb {

/// A file descriptor that becomes readable at a moment of the monotonic clock. The object owns the
/// descriptor. Any thread may set the moment while another thread waits for it.
class TimerDescriptor {
 public:
  TimerDescriptor() noexcept;
  TimerDescriptor(const TimerDescriptor&) = delete;
  TimerDescriptor& operator=(const TimerDescriptor&) = delete;
  ~TimerDescriptor();

  /// Negative if the process had no descriptor left; the object must not be used then.
  int descriptor() const noexcept { return descriptor_; }

  /// Makes it readable at `nanoseconds` (in ticks of `mach_absolute_time()`), at once if that
  /// moment has passed, and never for `UINT64_MAX`. Replaces the previous moment.
  void setMoment(std::uint64_t nanoseconds) noexcept;
  /// Makes it unreadable again.
  void clear() noexcept;

 private:
  const int descriptor_;
};

}  // namespace zeb
