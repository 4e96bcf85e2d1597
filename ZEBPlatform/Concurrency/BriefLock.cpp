#include <ZEBPlatform/Concurrency/detail/BriefLock.h>
#include <ZEBPlatform/Concurrency/detail/Spin.h>

#include <chrono>
#include <thread>

namespace zeb::detail {

/// Sleeps instead of yielding the processor, because a yield may return at once: to a thread of a
/// higher real-time priority than the owner's it always does.
void BriefLock::lockContended() noexcept {
  constexpr int maxSpins = 100;
  constexpr std::chrono::microseconds interval{50};
  const auto isOwned = [this] { return !isLocked_.load(std::memory_order_relaxed) && try_lock(); };
  while (!spin(maxSpins, isOwned)) std::this_thread::sleep_for(interval);
}

}  // namespace zeb::detail
