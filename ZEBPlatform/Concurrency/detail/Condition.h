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
/// Waits may end without a reason, so the caller tests its own condition in a loop. To notify, hold the
/// lock or have held it during the change; a notification without a waiter costs one atomic load. The
/// condition may be destroyed as soon as no thread waits, if notifications are made with the lock held. Size: eight bytes. It needs no file descriptor.
class Condition {
 public:
  constexpr Condition() noexcept = default;
  Condition(const Condition&) = delete;
  Condition& operator=(const Condition&) = delete;

  /// Unlocks the lock while the thread sleeps and locks it again before it returns.
  void wait(Lock& lock) noexcept ZEB_REQUIRES(lock) { waitUntil(lock, UINT64_MAX); }
  /// The same, at most until the deadline in ticks of `mach_absolute_time()`; `UINT64_MAX` for never.
  void waitUntil(Lock& lock, std::uint64_t deadline) noexcept ZEB_REQUIRES(lock);

  void notifyOne() noexcept;
  void notifyAll() noexcept;

 private:
  std::atomic<std::uint32_t> notifications_{0};
  std::atomic<std::uint32_t> waiters_{0};
};

}  // namespace zeb::detail
