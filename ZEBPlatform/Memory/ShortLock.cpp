#include <ZEBPlatform/Linux/detail/ThreadState.h>
#include <ZEBPlatform/Memory/detail/ShortLock.h>

namespace zeb::detail {

namespace {

constexpr int spinsBeforeSleep = 100;

}  // namespace

void ShortLock::lockContended() noexcept {
  for (int spin = 0; spin < spinsBeforeSleep; ++spin) {
    relaxProcessor();
    if (state_.load(std::memory_order_relaxed) == unlocked && try_lock()) return;
  }
  while (state_.exchange(awaited, std::memory_order_acquire) != unlocked) {
    state_.wait(awaited, std::memory_order_relaxed);
  }
}

}  // namespace zeb::detail
