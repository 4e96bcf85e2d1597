#pragma once

#include <ZEBPlatform/Concurrency/detail/Condition.h>
#include <ZEBPlatform/Concurrency/detail/DeadlineHeap.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace zeb::detail {

template <class T>
class NeverDestroyed;

class DispatchTimer;

/// The thread that waits for all dispatch timers. It needs no file descriptor. Started at the first
/// use and never ended.
class DispatchTimers {
 public:
  static DispatchTimers& shared();

  /// Guards the heap and the state of the timers.
  static Lock lock;

  /// Adds the timer, or moves it after a change of its deadline.
  void arm(DispatchTimer& timer) ZEB_REQUIRES(lock);
  /// Removes the timer if it is armed.
  void disarm(DispatchTimer& timer) noexcept ZEB_REQUIRES(lock);
  /// Releases the object on the timers' thread after the lock is free, because its destruction may
  /// run the user's code. Only for `becomeDue`.
  void releaseUnlocked(Ref<NSObject> object) ZEB_REQUIRES(lock) {
    released_.push_back(std::move(object));
  }

 private:
  friend class NeverDestroyed<DispatchTimers>;
  DispatchTimers();
  void wait() noexcept ZEB_EXCLUDES(lock);

  DeadlineHeap heap_ ZEB_GUARDED_BY(lock);
  std::vector<Ref<NSObject>> released_ ZEB_GUARDED_BY(lock);
  Condition isEarlier_;
  std::uint64_t wakeUp_ ZEB_GUARDED_BY(lock) = UINT64_MAX;  ///< the end of the thread's sleep
};

/// A timer that `DispatchTimers` waits for.
class DispatchTimer : public DeadlineNode {
 public:
  /// Called on the timers' thread after the deadline, when the timer has left the heap. It may arm
  /// the timer again, but must not call the user's code, because the lock is held.
  virtual void becomeDue(std::uint64_t now) noexcept ZEB_REQUIRES(DispatchTimers::lock) = 0;

 protected:
  ~DispatchTimer() = default;
};

}  // namespace zeb::detail
