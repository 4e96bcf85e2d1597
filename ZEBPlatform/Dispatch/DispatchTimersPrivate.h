#pragma once

#include <ZEBPlatform/Concurrency/detail/Condition.h>
#include <ZEBPlatform/Concurrency/detail/DeadlineHeap.h>

#include <cstdint>

namespace zeb::detail {

template <class T>
class NeverDestroyed;

/// A timer that `DispatchTimers` waits for.
class DispatchTimer : public DeadlineNode {
 public:
  /// Called after the deadline, when the timer has left the heap. It runs on the timers' thread with
  /// their lock held, so it may arm the timer again but must not call foreign code.
  virtual void becomeDue(std::uint64_t now) noexcept = 0;

 protected:
  ~DispatchTimer() = default;
};

/// The thread that waits for all dispatch timers. It needs no file descriptor. Made on first use and
/// never destroyed.
class DispatchTimers {
 public:
  static DispatchTimers& shared();

  /// Guards the heap and the state of the timers.
  static Lock lock;

  /// Adds or moves a timer.
  void arm(DispatchTimer& timer) ZEB_REQUIRES(lock);
  void disarm(DispatchTimer& timer) noexcept ZEB_REQUIRES(lock) { heap_.remove(timer); }

 private:
  friend class NeverDestroyed<DispatchTimers>;
  DispatchTimers();
  void wait() noexcept;

  DeadlineHeap heap_ ZEB_GUARDED_BY(lock);
  Condition isEarlier_;
  std::uint64_t wakeUp_ ZEB_GUARDED_BY(lock) = UINT64_MAX;  ///< when the thread will look again
};

}  // namespace zeb::detail
