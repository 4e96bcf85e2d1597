#pragma once

#include <ZEBPlatform/Concurrency/detail/Condition.h>
#include <ZEBPlatform/Dispatch/DispatchTime.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <cstdint>

namespace zeb {

/// A counting semaphore. While a block waits on one, the pool runs another thread in its place.
class DispatchSemaphore final : public NSObject {
 public:
  explicit DispatchSemaphore(std::int64_t value) noexcept : value_(value) {}

  /// Whether it got one before `timeout`.
  bool wait(dispatch_time_t timeout);
  /// Whether that woke a waiting thread.
  bool signal();

 private:
  detail::Lock lock_;
  detail::Condition isAvailable_;
  std::int64_t value_ ZEB_GUARDED_BY(lock_);
  std::int64_t waiters_ ZEB_GUARDED_BY(lock_) = 0;
};

using dispatch_semaphore_t = Ref<DispatchSemaphore>;

/// Nil for a negative value.
dispatch_semaphore_t dispatch_semaphore_create(std::int64_t value);

/// Takes one, waiting until `timeout` for it. 0 if it got one, another number if time ran out. Here
/// and below a nil semaphore stops the process with a message that names the function.
std::int64_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore,
                                     dispatch_time_t timeout);

/// Gives one. Not 0 if that woke a waiting thread.
std::int64_t dispatch_semaphore_signal(const dispatch_semaphore_t& semaphore);

}  // namespace zeb
