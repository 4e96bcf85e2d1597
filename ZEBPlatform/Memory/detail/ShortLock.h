#pragma once

#include <atomic>

namespace zeb::detail {

/// A mutex for what takes some nanoseconds: four bytes, and a thread that finds it locked looks again for a
/// while before it sleeps, which would take longer than the wait.
class ShortLock {
 public:
  ShortLock() noexcept = default;
  ShortLock(const ShortLock&) = delete;
  ShortLock& operator=(const ShortLock&) = delete;

  void lock() noexcept {
    if (!try_lock()) lockContended();
  }
  bool try_lock() noexcept {
    int expected = unlocked;
    return state_.compare_exchange_strong(expected, locked, std::memory_order_acquire,
                                          std::memory_order_relaxed);
  }
  void unlock() noexcept {
    // Waking goes by the address alone, so that it does no harm if the lock has gone by then.
    if (state_.exchange(unlocked, std::memory_order_release) == awaited) state_.notify_one();
  }

 private:
  enum State : int { unlocked, locked, awaited };

  void lockContended() noexcept;

  std::atomic<int> state_{unlocked};
};

}  // namespace zeb::detail
