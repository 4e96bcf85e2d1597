#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Dispatch/ThreadPoolPrivate.h>
#include <ZEBPlatform/Dispatch/detail/NilArgument.h>

#include <algorithm>
#include <chrono>

namespace zeb {

bool DispatchSemaphore::wait(dispatch_time_t timeout) {
  std::unique_lock lock(mutex_);
  if (value_ > 0) {
    --value_;
    return true;
  }
  if (timeout == DISPATCH_TIME_NOW) return false;
  detail::ThreadPool::BlockingScope blocking;
  ++waiting_;
  const auto isAvailable = [this] { return value_ > 0; };
  if (timeout == DISPATCH_TIME_FOREVER) {
    available_.wait(lock, isAvailable);
  } else {
    const std::chrono::nanoseconds moment(std::min<dispatch_time_t>(timeout, INT64_MAX));
    available_.wait_until(lock, std::chrono::steady_clock::time_point(moment), isAvailable);
  }
  --waiting_;
  if (value_ == 0) return false;
  --value_;
  return true;
}

bool DispatchSemaphore::signal() {
  std::lock_guard guard(mutex_);
  ++value_;
  if (waiting_ < value_) return false;  // those who wait have been signalled, and are on their way
  available_.notify_one();
  return true;
}

dispatch_semaphore_t dispatch_semaphore_create(std::int64_t value) {
  return value < 0 ? nullptr : makeRef<DispatchSemaphore>(value);
}

std::int64_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore,
                                     dispatch_time_t timeout) {
  detail::notNil(semaphore, "dispatch_semaphore_wait", "semaphore");
  const dispatch_semaphore_t alive = semaphore;  // whoever waits keeps it, whatever its owner does
  return alive->wait(timeout) ? 0 : 1;
}

std::int64_t dispatch_semaphore_signal(const dispatch_semaphore_t& semaphore) {
  return detail::notNil(semaphore, "dispatch_semaphore_signal", "semaphore").signal() ? 1 : 0;
}

}  // namespace zeb
