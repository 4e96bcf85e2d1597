#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/InterruptibleSleep.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace zeb {

void InterruptibleSleep::setMoment(std::uint64_t moment) noexcept {
  std::lock_guard guard(mutex_);
  if (std::exchange(moment_, moment) != moment) isChanged_.notify_one();
}

void InterruptibleSleep::wake() noexcept {
  std::lock_guard guard(mutex_);
  isWoken_ = true;
  isChanged_.notify_one();
}

void InterruptibleSleep::sleep() noexcept {
  std::unique_lock lock(mutex_);
  while (!isWoken_ && moment_ > mach_absolute_time()) {
    // The standard library's clock is the same, but counts with a sign.
    const std::chrono::nanoseconds moment(std::min<std::uint64_t>(moment_, INT64_MAX));
    isChanged_.wait_until(lock, std::chrono::steady_clock::time_point(moment));
  }
  if (!std::exchange(isWoken_, false)) moment_ = UINT64_MAX;
}

}  // namespace zeb
