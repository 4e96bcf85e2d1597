#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchTime.h>
#include <ZEBPlatform/Memory/Block.h>

#include <cstdint>

namespace zeb {

/// A timer that submits its event handler to a queue.
///
/// The clock is the monotonic one. A repeating timer keeps to its grid (start + n × interval):
/// firings that were missed because the machine or the queue was busy become one late firing, never
/// a burst. With a leeway the timer may fire that much later, so that several share one wake-up.
///
/// Made suspended; it runs after the first `dispatch_resume`. Releasing the last reference cancels
/// it, without a call of the cancel handler. All functions may be called from any thread, from the
/// handlers too; a nil source stops the process with a message that names the function, except to
/// cancel. After `dispatch_source_cancel` no further handler starts; one that runs already goes on.
/// The handlers are released then.
class DispatchSource : public NSObject {
 protected:
  DispatchSource() noexcept = default;
};
using dispatch_source_t = Ref<DispatchSource>;

/// A timer source without a schedule. A nil queue means the global queue of default priority.
dispatch_source_t dispatch_source_create_timer(const dispatch_queue_t& queue);

/// When to fire first, how often after that (nanoseconds; `DISPATCH_TIME_FOREVER` for never), and
/// how much later at most. Replaces the schedule of a running timer; an event of the old one that
/// was submitted but has not begun is dropped.
void dispatch_source_set_timer(const dispatch_source_t& source, dispatch_time_t start,
                               std::uint64_t interval, std::uint64_t leeway);

/// A nil handler removes the handler, here and below.
void dispatch_source_set_event_handler(const dispatch_source_t& source, Block<void()> handler);
/// Called once on the queue after a cancellation.
void dispatch_source_set_cancel_handler(const dispatch_source_t& source, Block<void()> handler);

/// Ends one suspension. Resuming a source that is not suspended is a programming error.
void dispatch_resume(const dispatch_source_t& source);
/// Keeps handlers from starting until the matching `dispatch_resume`.
void dispatch_suspend(const dispatch_source_t& source);

/// Ends the timer for good; again, or nil: nothing.
void dispatch_source_cancel(const dispatch_source_t& source);
bool dispatch_source_testcancel(const dispatch_source_t& source) noexcept;

/// Runs the block on the queue at `when` or as soon after as possible. A nil block or queue: as for
/// `dispatch_async`.
void dispatch_after(dispatch_time_t when, const dispatch_queue_t& queue, Block<void()> block);

}  // namespace zeb
