#pragma once

#include <ZEBPlatform/Concurrency/detail/ThreadSafety.h>

#include <atomic>

namespace zeb::detail {

/// Mutual exclusion for data that each owner holds for some instructions and that two threads
/// rarely need at the same time. Unlocking is a plain store, which makes it half as expensive as
/// `Lock`. The price is that an owner does not know of waiting threads and cannot wake them.
///
/// Memory ordering and lifetime: as `Lock`.
/// Size: one byte, no initialisation at run time.
/// Cost: one atomic operation to lock. A thread that finds the lock taken tests it for some
/// microseconds, and then sleeps for 50 microseconds between further tests.
/// Fairness: none.
/// Do not use it where threads regularly contend: they would sleep longer than necessary.
class ZEB_CAPABILITY("lock") BriefLock {
 public:
  constexpr BriefLock() noexcept = default;
  BriefLock(const BriefLock&) = delete;
  BriefLock& operator=(const BriefLock&) = delete;

  void lock() noexcept ZEB_ACQUIRES() {
    if (!try_lock()) lockContended();
  }
  bool try_lock() noexcept ZEB_TRY_ACQUIRES(true) {
    return !isLocked_.exchange(true, std::memory_order_acquire);
  }
  void unlock() noexcept ZEB_RELEASES() { isLocked_.store(false, std::memory_order_release); }

 private:
  void lockContended() noexcept;

  std::atomic<bool> isLocked_{false};
};

}  // namespace zeb::detail
