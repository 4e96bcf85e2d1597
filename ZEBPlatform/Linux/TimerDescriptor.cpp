#include <ZEBPlatform/Linux/detail/TimerDescriptor.h>

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>

namespace zeb {

TimerDescriptor::TimerDescriptor() noexcept
    : descriptor_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {}

TimerDescriptor::~TimerDescriptor() {
  if (descriptor_ >= 0) close(descriptor_);
}

void TimerDescriptor::setMoment(std::uint64_t nanoseconds) noexcept {
  itimerspec setting{};
  if (nanoseconds != UINT64_MAX) {
    // Zero would disarm the timer, and the clock's seconds are signed.
    const std::uint64_t moment = std::clamp<std::uint64_t>(nanoseconds, 1, INT64_MAX);
    setting.it_value.tv_sec = static_cast<time_t>(moment / 1'000'000'000);
    setting.it_value.tv_nsec = static_cast<long>(moment % 1'000'000'000);
  }
  timerfd_settime(descriptor_, TFD_TIMER_ABSTIME, &setting, nullptr);
}

void TimerDescriptor::clear() noexcept {
  std::uint64_t expirations = 0;
  [[maybe_unused]] const ssize_t length = read(descriptor_, &expirations, sizeof expirations);
}

}  // namespace zeb
