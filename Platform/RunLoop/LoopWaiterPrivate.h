#pragma once

#include <Linux/EventDescriptor.h>
#include <Linux/PollSet.h>
#include <Linux/TimerDescriptor.h>

#include <cstdint>

namespace zeb::detail {

/// What a loop's thread sleeps on: descriptors that are watched, a moment, and a call from another thread.
class LoopWaiter {
 public:
  LoopWaiter() {
    pollSet_.watchChanges(event_.descriptor());
    pollSet_.watch(timer_.descriptor(), {.isReadable = true});
  }

  PollSet& pollSet() noexcept { return pollSet_; }

  /// Ends a wait, or makes the set's descriptor readable until something is collected. Any thread.
  void wake() noexcept { event_.signal(); }

  /// The moment that ends a wait.
  void setMoment(std::uint64_t moment) noexcept {
    if (moment == moment_) return;
    moment_ = moment;
    timer_.setMoment(moment);
  }

 private:
  EventDescriptor event_;
  TimerDescriptor timer_;
  PollSet pollSet_;
  std::uint64_t moment_ = UINT64_MAX;  ///< what the timer is set to
};

}  // namespace zeb::detail
