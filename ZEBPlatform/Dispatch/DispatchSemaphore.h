#pragma once

#include <ZEBPlatform/Concurrency/detail/Condition.h>
#include <ZEBPlatform/Dispatch/DispatchTime.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <cstdint>

namespace zeb {

/// A counting semaphore. While a block waits for one, the pool runs another thread in its place.
/// What a thread did before a signal is visible to the thread whose wait takes it. Waiting threads
/// are served in no particular order.
class DispatchSemaphore final : public NSObject {
 public:
  explicit DispatchSemaphore(std::int64_t value) noexcept : value_(value) {}

  /// Waits until the value is positive and decrements it. Answers false if `timeout` comes first.
  bool wait(dispatch_time_t timeout) ZEB_EXCLUDES(lock_);
  /// Increments the value. Answers whether that woke a waiting thread.
  bool signal() ZEB_EXCLUDES(lock_);

 private:
  detail::Lock lock_;
  detail::Condition isAvailable_;
  std::int64_t value_ ZEB_GUARDED_BY(lock_);
  std::int64_t waiters_ ZEB_GUARDED_BY(lock_) = 0;
};

using dispatch_semaphore_t = Ref<DispatchSemaphore>;

/// A semaphore with that value; nil if the value is negative.
[[nodiscard]] dispatch_semaphore_t dispatch_semaphore_create(std::int64_t value);

/// Waits until the semaphore's value is positive and decrements it. Answers 0, or another number if
/// the moment `timeout` comes first. Here and below, a nil semaphore stops the process with a
/// message that names the function.
std::int64_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore,
                                     dispatch_time_t timeout);

/// The same with a longest time to wait; zero or less does not wait.
template <class Number, class Unit>
std::int64_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore,
                                     std::chrono::duration<Number, Unit> timeout) {
  return dispatch_semaphore_wait(semaphore, timeout > timeout.zero()
                                                ? dispatch_time(DISPATCH_TIME_NOW, timeout)
                                                : DISPATCH_TIME_NOW);
}

/// Increments the semaphore's value. Answers 0, or another number if that woke a waiting thread.
std::int64_t dispatch_semaphore_signal(const dispatch_semaphore_t& semaphore);

}  // namespace zeb
