#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchTime.h>
#include <ZEBPlatform/Memory/Block.h>

#include <chrono>
#include <cstdint>
#include <ratio>
#include <utility>

namespace zeb {

/// A timer that submits its event handler to a queue.
///
/// It follows the monotonic clock. A repeating timer keeps to its grid (start + n × interval):
/// firings that were missed because the machine or the queue was busy become one late firing, never
/// a burst. With a leeway the timer may fire that much later, so that several timers share one
/// wake-up.
///
/// A new source is suspended; it runs after the first `dispatch_resume`. It acts only while it is
/// referred to: releasing the last reference cancels it, without a call of the cancel handler.
/// After `dispatch_source_cancel` no further event handler starts, but one that runs already goes
/// on, and the handlers are released.
///
/// All functions may be called from any thread and from the handlers. A nil source stops the
/// process with a message that names the function, except in `dispatch_source_cancel` and
/// `dispatch_source_testcancel`.
class DispatchSource : public NSObject {
 public:
  /// As for every object, but quicker for the only reference to a cancelled source.
  void release() const noexcept;

 protected:
  DispatchSource() noexcept = default;
};
using dispatch_source_t = Ref<DispatchSource>;

/// A timer source without a schedule. A nil queue means the global queue of default priority.
[[nodiscard]] dispatch_source_t dispatch_source_create_timer(const dispatch_queue_t& queue);

/// Sets the moment of the first firing, the interval of the following ones in nanoseconds
/// (`DISPATCH_TIME_FOREVER` for none) and the leeway in nanoseconds. Replaces the schedule of a
/// running timer; an event of the old schedule that was submitted but has not begun is dropped.
void dispatch_source_set_timer(const dispatch_source_t& source, dispatch_time_t start,
                               std::uint64_t interval, std::uint64_t leeway);

/// The same with durations; the start is a moment or a delay from now. Negative intervals and
/// leeways count as 0. An interval of 292 years or more, such as `std::chrono::nanoseconds::max()`,
/// means a single firing.
template <class Interval, class IntervalUnit, class Leeway = std::int64_t,
          class LeewayUnit = std::nano>
void dispatch_source_set_timer(const dispatch_source_t& source, dispatch_time_t start,
                               std::chrono::duration<Interval, IntervalUnit> interval,
                               std::chrono::duration<Leeway, LeewayUnit> leeway = {}) {
  dispatch_source_set_timer(source, start, detail::ticksIn(interval), detail::ticksIn(leeway));
}
template <class Delay, class DelayUnit, class Interval, class IntervalUnit,
          class Leeway = std::int64_t, class LeewayUnit = std::nano>
void dispatch_source_set_timer(const dispatch_source_t& source,
                               std::chrono::duration<Delay, DelayUnit> delay,
                               std::chrono::duration<Interval, IntervalUnit> interval,
                               std::chrono::duration<Leeway, LeewayUnit> leeway = {}) {
  dispatch_source_set_timer(source, dispatch_time(DISPATCH_TIME_NOW, delay), interval, leeway);
}

/// A nil handler removes the handler, here and below.
void dispatch_source_set_event_handler(const dispatch_source_t& source, Block<void()> handler);
/// Called once on the queue after a cancellation.
void dispatch_source_set_cancel_handler(const dispatch_source_t& source, Block<void()> handler);

/// Ends one suspension. Resuming a source that is not suspended stops the process with a message.
void dispatch_resume(const dispatch_source_t& source);
/// Keeps handlers from starting until the matching `dispatch_resume`.
void dispatch_suspend(const dispatch_source_t& source);

/// Ends the timer for good. Does nothing for a cancelled source and for nil.
void dispatch_source_cancel(const dispatch_source_t& source);
/// Whether the source was cancelled; true for nil.
[[nodiscard]] bool dispatch_source_testcancel(const dispatch_source_t& source) noexcept;

/// Runs the block on the queue at `when`, or as soon after it as possible. A nil block or queue has
/// the same effect as for `dispatch_async`.
void dispatch_after(dispatch_time_t when, const dispatch_queue_t& queue, Block<void()> block);
/// The same after a delay from now.
template <class Number, class Unit>
void dispatch_after(std::chrono::duration<Number, Unit> delay, const dispatch_queue_t& queue,
                    Block<void()> block) {
  dispatch_after(dispatch_time(DISPATCH_TIME_NOW, delay), queue, std::move(block));
}

}  // namespace zeb
