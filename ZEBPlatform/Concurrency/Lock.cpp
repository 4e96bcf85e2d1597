#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/Spin.h>
#include <ZEBPlatform/Linux/detail/AddressWait.h>

namespace zeb::detail {

namespace {

constexpr int maxSpins = 100;

}  // namespace

void Lock::lockContended() noexcept {
  const bool isOwned = spin(maxSpins, [this] {
    return state_.load(std::memory_order_relaxed) == unlocked && try_lock();
  });
  if (isOwned) return;
  // From here on every owner wakes one sleeper, at worst one time too many.
  while (state_.exchange(awaited, std::memory_order_acquire) != unlocked) {
    waitOnAddress(state_, awaited, UINT64_MAX);
  }
}

void Lock::wakeSleeper() const noexcept { wakeOneOnAddress(state_); }

}  // namespace zeb::detail
