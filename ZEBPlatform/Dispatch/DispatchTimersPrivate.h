#pragma once

#include <ZEBPlatform/Dispatch/detail/DeadlineHeap.h>

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace zeb::detail {

/// A node of the dispatch timers.
class DispatchTimer : public DeadlineNode {
 public:
  /// Its deadline has passed and it is in the heap no longer. Called on the timers' thread with their
  /// lock held: it may put itself back with `arm`, and must call nobody else's code.
  virtual void becomeDue(std::uint64_t now) noexcept = 0;

 protected:
  ~DispatchTimer() = default;
};

/// The thread that waits for all dispatch timers. It needs no file descriptor. Made on first use and
/// never destroyed.
class DispatchTimers {
 public:
  static DispatchTimers& shared();

  /// Guards the heap, and the state of whatever stands in it.
  std::mutex& mutex() noexcept { return mutex_; }

  /// With the lock held: adds or moves a timer.
  void arm(DispatchTimer& timer);
  /// With the lock held.
  void disarm(DispatchTimer& timer) noexcept { heap_.remove(timer); }

 private:
  DispatchTimers();
  void wait() noexcept;

  std::mutex mutex_;
  DeadlineHeap heap_;
  std::condition_variable isEarlier_;
  std::uint64_t wakeUp_ = UINT64_MAX;  ///< when the thread will look again
};

}  // namespace zeb::detail
