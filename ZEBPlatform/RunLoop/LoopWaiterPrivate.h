#pragma once

#include <ZEBPlatform/Concurrency/detail/InterruptibleSleep.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Linux/detail/EventDescriptor.h>
#include <ZEBPlatform/Linux/detail/PollSet.h>
#include <ZEBPlatform/Linux/detail/TimerDescriptor.h>

#include <atomic>
#include <cstdint>
#include <memory>

namespace zeb::detail {

/// What a loop's thread sleeps on: watched descriptors, a moment, and a call from another thread.
///
/// That takes three descriptors of its own. While the process has none left, the thread sleeps
/// without them; then only watching descriptors is impossible.
class LoopWaiter {
 public:
  /// Makes the waiter's own descriptors, unless it has them; a thread that sleeps without them is
  /// woken. False when the process has too few left. Any thread.
  bool reserveDescriptors() noexcept ZEB_EXCLUDES(lock_);

  /// Null without descriptors of its own. Once made, they stay. Any thread.
  PollSet* pollSet() noexcept {
    Descriptors* const descriptors = descriptors_.load(std::memory_order_acquire);
    return descriptors ? &descriptors->pollSet : nullptr;
  }

  /// Ends a wait, or the next one; makes the set's descriptor readable until something is
  /// collected. For threads that know that the loop's thread has called `setMoment` and may be
  /// waiting.
  void wake() noexcept;

  // For the loop's thread:

  /// Sets the moment that ends the next wait. To be called before the thread lets other threads
  /// know that it waits, because it also decides whether the wait is one on the descriptors.
  void setMoment(std::uint64_t moment) noexcept;
  void wait() noexcept;

 private:
  struct Descriptors {
    bool areUsable() const noexcept;

    EventDescriptor event;
    TimerDescriptor timer;
    PollSet pollSet;
    std::uint64_t moment = UINT64_MAX;  ///< what the timer is set to
  };

  std::atomic<Descriptors*> descriptors_{nullptr};
  Lock lock_;
  std::unique_ptr<Descriptors> ownedDescriptors_ ZEB_GUARDED_BY(lock_);
  Descriptors* waitedFor_ = nullptr;  ///< the loop's thread only
  InterruptibleSleep sleep_;          ///< used without descriptors
};

}  // namespace zeb::detail
