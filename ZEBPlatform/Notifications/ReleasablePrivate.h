#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>

#include <utility>

namespace zeb::detail {

/// A value that one thread may release while another thread is about to use it.
template <class T>
class Releasable {
 public:
  explicit Releasable(T value) : value_(std::move(value)) {}

  /// Empty once it is released.
  T get() const ZEB_EXCLUDES(lock_) {
    const LockGuard guard(lock_);
    return value_;
  }

  void release() ZEB_EXCLUDES(lock_) {
    T released{};  // destroyed after the lock is free: that runs the user's code
    const LockGuard guard(lock_);
    std::swap(released, value_);
  }

 private:
  mutable Lock lock_;
  T value_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb::detail
