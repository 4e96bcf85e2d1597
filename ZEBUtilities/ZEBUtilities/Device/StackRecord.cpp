#include <ZEBPlatform/Linux/detail/CallStack.h>
#include <ZEBUtilities/Device/StackRecordPrivate.h>

namespace zeb::detail {

void StackRecord::capture(const void* context) noexcept {
  std::uint8_t expected = empty;
  if (!state_.compare_exchange_strong(expected, writing, std::memory_order_acquire)) return;
  count_ = captureInterruptedCallStack(frames_, context);
  state_.store(ready, std::memory_order_release);
}

std::span<void* const> StackRecord::frames() const noexcept {
  if (state_.load(std::memory_order_acquire) != ready) return {};
  return std::span(frames_).first(count_);
}

void StackRecord::clear() noexcept {
  if (state_.load(std::memory_order_acquire) != ready) return;
  count_ = 0;
  state_.store(empty, std::memory_order_release);
}

}  // namespace zeb::detail
