#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Dispatch/ThreadPoolPrivate.h>
#include <ZEBPlatform/Dispatch/detail/NilArgument.h>
#include <ZEBPlatform/Linux/Clock.h>

namespace zeb {

bool DispatchSemaphore::wait(dispatch_time_t timeout) {
  {
    const detail::LockGuard guard(lock_);
    if (value_ > 0) {
      --value_;
      return true;
    }
  }
  if (timeout == DISPATCH_TIME_NOW) return false;
  // Outside the lock, because the pool may start a thread in place of this one.
  const detail::ThreadPool::BlockingScope blocking;
  const detail::LockGuard guard(lock_);
  ++waiters_;
  while (value_ == 0 && (timeout == DISPATCH_TIME_FOREVER || mach_absolute_time() < timeout)) {
    isAvailable_.waitUntil(lock_, timeout);
  }
  --waiters_;
  if (value_ == 0) return false;
  --value_;
  return true;
}

bool DispatchSemaphore::signal() {
  const detail::LockGuard guard(lock_);
  ++value_;
  if (waiters_ < value_) return false;  // every waiter has been signalled already
  isAvailable_.notifyOne();
  return true;
}

dispatch_semaphore_t dispatch_semaphore_create(std::int64_t value) {
  return value < 0 ? nullptr : makeRef<DispatchSemaphore>(value);
}

std::int64_t dispatch_semaphore_wait(const dispatch_semaphore_t& semaphore,
                                     dispatch_time_t timeout) {
  detail::notNil(semaphore, "dispatch_semaphore_wait", "semaphore");
  const dispatch_semaphore_t alive = semaphore;  // its owner may release it during the wait
  return alive->wait(timeout) ? 0 : 1;
}

std::int64_t dispatch_semaphore_signal(const dispatch_semaphore_t& semaphore) {
  return detail::notNil(semaphore, "dispatch_semaphore_signal", "semaphore").signal() ? 1 : 0;
}

}  // namespace zeb
