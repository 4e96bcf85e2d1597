#include <ZEBPlatform/Dispatch/ThreadPoolPrivate.h>
#include <ZEBPlatform/Dispatch/detail/ThreadGate.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>

namespace zeb::detail {

namespace {

/// The other thread is often just about to open.
constexpr int spinsBeforeSleep = 200;

}  // namespace

void ThreadGate::wait() noexcept {
  if (isOpenSoon()) return;
  const ThreadPool::BlockingScope blocking;
  sleepUntilOpen();
}

bool ThreadGate::isOpenSoon() const noexcept {
  for (int spin = 0; spin < spinsBeforeSleep; ++spin) {
    if (state_.load(std::memory_order_acquire) == opened) return true;
    relaxProcessor();
  }
  return false;
}

void ThreadGate::sleepUntilOpen() noexcept {
  int expected = closed;
  if (!state_.compare_exchange_strong(expected, waiting, std::memory_order_acq_rel)) return;
  while (state_.load(std::memory_order_acquire) != opened) {
    state_.wait(waiting, std::memory_order_acquire);
  }
}

void ThreadGate::open() noexcept {
  // Waking goes by the address alone, so that it does no harm if the gate has gone by then.
  if (state_.exchange(opened, std::memory_order_acq_rel) == waiting) state_.notify_one();
}

}  // namespace zeb::detail
