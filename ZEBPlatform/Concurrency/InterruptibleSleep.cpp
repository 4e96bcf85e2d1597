#include <ZEBPlatform/Concurrency/detail/InterruptibleSleep.h>
#include <ZEBPlatform/Linux/Clock.h>

#include <utility>

namespace zeb::detail {

void InterruptibleSleep::setMoment(std::uint64_t moment) noexcept {
  const LockGuard guard(lock_);
  if (std::exchange(moment_, moment) != moment) isChanged_.notifyOne();
}

void InterruptibleSleep::wake() noexcept {
  const LockGuard guard(lock_);
  isWoken_ = true;
  isChanged_.notifyOne();
}

void InterruptibleSleep::sleep() noexcept {
  const LockGuard guard(lock_);
  while (!isWoken_ && moment_ > mach_absolute_time()) isChanged_.waitUntil(lock_, moment_);
  if (!std::exchange(isWoken_, false)) moment_ = UINT64_MAX;
}

}  // namespace zeb::detail
