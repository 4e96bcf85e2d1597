#pragma once

#include <Linux/ThreadState.h>

#include <mutex>

namespace zeb::detail {

/// Locks a mutex that is never held for long: looks again for a while before it goes to sleep, which would
/// take longer than the wait.
class ShortLock {
 public:
  explicit ShortLock(std::mutex& mutex) : mutex_(mutex) {
    for (int spin = 0; spin < 100; ++spin) {
      if (mutex_.try_lock()) return;
      relaxProcessor();
    }
    mutex_.lock();
  }
  ShortLock(const ShortLock&) = delete;
  ShortLock& operator=(const ShortLock&) = delete;
  ~ShortLock() { mutex_.unlock(); }

 private:
  std::mutex& mutex_;
};

}  // namespace zeb::detail
