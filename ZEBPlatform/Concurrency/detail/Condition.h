#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>

#include <atomic>
#include <cstdint>

namespace zeb::detail {

/// Lets threads that hold a `Lock` sleep until another thread has changed what the lock guards:
///
///     LockGuard guard(lock_);
///     while (!isReady_) changed_.wait(lock_);
///
/// Waits may end without a notification, so the caller tests its own condition in a loop. All waits
/// on one condition use the same lock. The notifying thread changes the data with that lock held
/// and notifies before or after it releases the lock. A thread that has not seen the change is then
/// either woken or finds the change before it sleeps.
///
/// Memory ordering: the lock alone makes the change visible; notifications order nothing.
/// Lifetime: the condition may be destroyed when no thread waits and no notification is under way.
/// If all notifications are made with the lock held, the last waiter may destroy it as soon as its
/// wait returns.
/// Size: eight bytes, no initialisation at run time, no file descriptor.
/// Cost: a notification without a waiter is one atomic load; otherwise it is one system call.
/// Fairness: the system mostly wakes the thread that has waited longest; nothing relies on it.
/// Do not use it to hand over one event to one thread; a `ThreadGate` needs no lock for that.
class Condition {
 public:
  constexpr Condition() noexcept = default;
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  /// Unlocks the lock while the thread sleeps and locks it again before it returns.
  void wait(Lock& lock) noexcept ZEB_REQUIRES(lock) { waitUntil(lock, UINT64_MAX); }
  /// Like wait(), but at most until the deadline in ticks of `mach_absolute_time()`; `UINT64_MAX`
  /// for never.
  void waitUntil(Lock& lock, std::uint64_t deadline) noexcept ZEB_REQUIRES(lock);

  void notifyOne() noexcept;
  void notifyAll() noexcept;

 private:
  std::atomic<std::uint32_t> notifications_{0};
  std::atomic<std::uint32_t> waiters_{0};
};

static_assert(sizeof(Condition) == 8);

}  // namespace zeb::detail
