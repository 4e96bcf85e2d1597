#include <ZEBPlatform/Concurrency/detail/Spin.h>
#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>
#include <ZEBPlatform/Linux/detail/AddressWait.h>

namespace zeb::detail {

namespace {

constexpr int maxSpins = 200;

}  // namespace

bool ThreadGate::spinUntilOpen() const noexcept {
  const auto isOpen = [this] { return state_.load(std::memory_order_acquire) == opened; };
  return isOpen() || spin(maxSpins, isOpen);
}

void ThreadGate::sleepUntilOpen() noexcept {
  std::uint32_t expected = closed;
  if (!state_.compare_exchange_strong(expected, awaited, std::memory_order_acq_rel)) return;
  while (state_.load(std::memory_order_acquire) != opened) {
    waitOnAddress(state_, awaited, UINT64_MAX);
  }
}

void ThreadGate::open() noexcept {
  // Waking uses the address only, so it does no harm if the gate has been destroyed by then.
  if (state_.exchange(opened, std::memory_order_acq_rel) == awaited) wakeOneOnAddress(state_);
}

}  // namespace zeb::detail
