#include <ZEBPlatform/Concurrency/detail/Condition.h>
#include <ZEBPlatform/Linux/detail/AddressWait.h>

namespace zeb::detail {

// A notification after the release of the lock changes the count that the waiter has read, so that
// the system refuses to let the waiter sleep. The release of the lock makes `waiters_` visible to
// the notifying thread.
void Condition::waitUntil(Lock& lock, std::uint64_t deadline) noexcept {
  waiters_.fetch_add(1, std::memory_order_relaxed);
  const std::uint32_t seen = notifications_.load(std::memory_order_relaxed);
  lock.unlock();
  waitOnAddress(notifications_, seen, deadline);
  lock.lock();
  waiters_.fetch_sub(1, std::memory_order_relaxed);
}

void Condition::notifyOne() noexcept {
  if (waiters_.load(std::memory_order_relaxed) == 0) return;
  notifications_.fetch_add(1, std::memory_order_relaxed);
  wakeOneOnAddress(notifications_);
}

void Condition::notifyAll() noexcept {
  if (waiters_.load(std::memory_order_relaxed) == 0) return;
  notifications_.fetch_add(1, std::memory_order_relaxed);
  wakeAllOnAddress(notifications_);
}

}  // namespace zeb::detail
