#pragma once

#include <ZEBPlatform/Concurrency/detail/ThreadSafety.h>

#include <atomic>
#include <cstdint>

namespace zeb::detail {

/// The library's mutual exclusion: for data that several threads share and hold for a short time.
///
/// Memory ordering: what a thread did before unlock() is visible to the next owner after its lock()
/// or successful try_lock().
/// Lifetime: the lock may be destroyed as soon as the last owner's unlock() has made it free, even
/// if that call has not returned yet.
/// Size: four bytes, no initialisation at run time.
/// Cost: one atomic operation each to lock and to unlock without contention. A thread that finds
/// the lock taken tests it for 100 processor pauses (some microseconds), because most owners leave
/// within that time, and then sleeps in the kernel.
/// Fairness: none. A newcomer may overtake a sleeping thread.
/// Do not use it recursively: a second lock() of the owner never returns. Do not hold it during
/// blocking calls or calls of the user's code. To wait for a change of the guarded data use a
/// `Condition`, to wait for one event a `ThreadGate`.
class ZEB_CAPABILITY("lock") Lock {
 public:
  constexpr Lock() noexcept = default;
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

  void lock() noexcept ZEB_ACQUIRES() {
    if (!try_lock()) lockContended();
  }
  bool try_lock() noexcept ZEB_TRY_ACQUIRES(true) {
    std::uint32_t expected = unlocked;
    return state_.compare_exchange_strong(expected, locked, std::memory_order_acquire,
                                          std::memory_order_relaxed);
  }
  void unlock() noexcept ZEB_RELEASES() {
    if (state_.exchange(unlocked, std::memory_order_release) == awaited) wakeSleeper();
  }

 private:
  enum State : std::uint32_t { unlocked, locked, awaited };

  void lockContended() noexcept;
  /// Uses only the address, so it does no harm if the lock has been destroyed by then.
  void wakeSleeper() const noexcept;

  std::atomic<std::uint32_t> state_{unlocked};
};

static_assert(sizeof(Lock) == 4);

/// Holds a lock while it lives. `unlock()` and `lock()` interrupt that, for code that must release
/// the lock on some path before the end of the scope.
template <class AnyLock>
class ZEB_SCOPED_CAPABILITY LockGuard {
 public:
  explicit LockGuard(AnyLock& lock) noexcept ZEB_ACQUIRES(lock) : lock_(lock) { lock_.lock(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;
  ~LockGuard() ZEB_RELEASES() {
    if (isHeld_) lock_.unlock();
  }

  void unlock() noexcept ZEB_RELEASES() {
    isHeld_ = false;
    lock_.unlock();
  }
  void lock() noexcept ZEB_ACQUIRES() {
    lock_.lock();
    isHeld_ = true;
  }

 private:
  AnyLock& lock_;
  bool isHeld_ = true;
};

}  // namespace zeb::detail
