#include <ZEBPlatform/Dispatch/DispatchSource.h>
#include <ZEBPlatform/Dispatch/DispatchTimersPrivate.h>
#include <ZEBPlatform/Dispatch/detail/NilArgument.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/Console.h>

#include <mutex>
#include <utility>

namespace zeb {

namespace {

using detail::DispatchTimer;
using detail::DispatchTimers;

/// Everything but the queue is guarded by the timers' lock.
///
/// At most one event is under way, from its submission to the handler's return; what falls due
/// meanwhile is remembered as one missed firing. So a handler never runs twice at once, and a busy
/// queue never gets a burst.
class TimerSource final : public DispatchSource, public DispatchTimer {
 public:
  explicit TimerSource(dispatch_queue_t queue) : queue_(std::move(queue)) {}
  ~TimerSource() override {
    std::lock_guard guard(timers().mutex());
    timers().disarm(*this);
  }

  void setTimer(dispatch_time_t start, std::uint64_t interval, std::uint64_t leewayNanoseconds) {
    std::lock_guard guard(timers().mutex());
    if (isCancelled_) return;
    hasSchedule_ = start != DISPATCH_TIME_FOREVER;
    deadline = start == DISPATCH_TIME_NOW ? mach_absolute_time() : start;
    leeway = leewayNanoseconds;
    interval_ = interval == 0 ? 1 : interval;
    hasMissed_ = false;
    ++schedule_;
    armOrDisarm();
  }

  void setEventHandler(Block<void()> handler) {
    std::lock_guard guard(timers().mutex());
    if (!isCancelled_) std::swap(eventHandler_, handler);
  }

  void setCancelHandler(Block<void()> handler) {
    std::lock_guard guard(timers().mutex());
    if (!isCancelled_) std::swap(cancelHandler_, handler);
  }

  void suspend() {
    std::lock_guard guard(timers().mutex());
    ++suspensions_;
    armOrDisarm();
  }

  void resume() {
    std::lock_guard guard(timers().mutex());
    if (suspensions_ == 0) fatal("dispatch_resume: the source is not suspended.");
    if (--suspensions_ > 0) return;
    if (isCancelled_) {
      submitCancellation();
    } else {
      armOrDisarm();
      fireIfMissed();
    }
  }

  void cancel() {
    Block<void()> handler;  // released after the lock: what it captured may come back here
    std::lock_guard guard(timers().mutex());
    if (std::exchange(isCancelled_, true)) return;
    std::swap(handler, eventHandler_);
    timers().disarm(*this);
    submitCancellation();
  }

  bool isCancelled() {
    std::lock_guard guard(timers().mutex());
    return isCancelled_;
  }

 private:
  static DispatchTimers& timers() { return DispatchTimers::shared(); }

  void armOrDisarm() {
    if (hasSchedule_ && suspensions_ == 0 && !isCancelled_) {
      timers().arm(*this);
    } else {
      timers().disarm(*this);
    }
  }

  /// While an event is under way the timer rests, so that a busy queue costs no wake-ups.
  void becomeDue(std::uint64_t now) noexcept override {
    if (isUnderWay_) {
      hasMissed_ = true;
    } else {
      fire(now);
    }
  }

  void fireIfMissed() {
    if (suspensions_ > 0 || isUnderWay_ || !std::exchange(hasMissed_, false)) return;
    fire(mach_absolute_time());
  }

  void fire(std::uint64_t now) {
    if (hasSchedule_ && deadline <= now) {
      moveAlongGrid(now);
      armOrDisarm();
    }
    submitEvent();
  }

  /// To the next point that lies ahead: those that were missed are one firing.
  void moveAlongGrid(std::uint64_t now) {
    const std::uint64_t missed = (now - deadline) / interval_;
    const std::uint64_t most = (DISPATCH_TIME_FOREVER - deadline) / interval_;
    hasSchedule_ = interval_ != DISPATCH_TIME_FOREVER && missed < most;
    if (hasSchedule_) deadline += (missed + 1) * interval_;
  }

  void submitEvent() {
    if (!retainUnlessDying()) return;  // its destructor waits for the lock
    isUnderWay_ = true;
    dispatch_async(queue_, [self = Ref<TimerSource>::adopt(this), schedule = schedule_] {
      self->handleEvent(schedule);
    });
  }

  void handleEvent(std::uint64_t schedule) {
    Block<void()> handler;
    {
      std::lock_guard guard(timers().mutex());
      if (isUniquelyReferenced()) return;  // by this event: everybody else has let the source go
      if (suspensions_ > 0) {
        hasMissed_ = schedule == schedule_;  // for the resume
      } else if (schedule == schedule_) {
        handler = eventHandler_;
      }
    }
    if (handler) handler();
    std::lock_guard guard(timers().mutex());
    isUnderWay_ = false;
    if (isCancelled_) {
      submitCancellation();
    } else {
      fireIfMissed();
    }
  }

  /// Not before the last event is over, and only once.
  void submitCancellation() {
    if (isUnderWay_ || suspensions_ > 0 || !cancelHandler_) return;
    dispatch_async(queue_, [handler = std::exchange(cancelHandler_, nullptr)] { handler(); });
  }

  const dispatch_queue_t queue_;
  Block<void()> eventHandler_;
  Block<void()> cancelHandler_;
  std::uint64_t interval_ = DISPATCH_TIME_FOREVER;
  std::uint64_t schedule_ = 0;  ///< counts the calls of `setTimer`
  std::uint32_t suspensions_ = 1;
  bool hasSchedule_ = false;
  bool isCancelled_ = false;
  bool isUnderWay_ = false;
  bool hasMissed_ = false;
};

TimerSource& timerSource(const dispatch_source_t& source, const char* function) noexcept {
  return static_cast<TimerSource&>(detail::notNil(source, function, "source"));
}

}  // namespace

dispatch_source_t dispatch_source_create_timer(const dispatch_queue_t& queue) {
  return makeRef<TimerSource>(queue ? queue
                                    : dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT));
}

void dispatch_source_set_timer(const dispatch_source_t& source, dispatch_time_t start,
                               std::uint64_t interval, std::uint64_t leeway) {
  timerSource(source, "dispatch_source_set_timer").setTimer(start, interval, leeway);
}

void dispatch_source_set_event_handler(const dispatch_source_t& source, Block<void()> handler) {
  timerSource(source, "dispatch_source_set_event_handler").setEventHandler(std::move(handler));
}

void dispatch_source_set_cancel_handler(const dispatch_source_t& source, Block<void()> handler) {
  timerSource(source, "dispatch_source_set_cancel_handler").setCancelHandler(std::move(handler));
}

void dispatch_resume(const dispatch_source_t& source) {
  timerSource(source, "dispatch_resume").resume();
}

void dispatch_suspend(const dispatch_source_t& source) {
  timerSource(source, "dispatch_suspend").suspend();
}

void dispatch_source_cancel(const dispatch_source_t& source) {
  if (source) timerSource(source, "dispatch_source_cancel").cancel();
}

bool dispatch_source_testcancel(const dispatch_source_t& source) noexcept {
  return !source || timerSource(source, "dispatch_source_testcancel").isCancelled();
}

namespace {

/// A block on its way to `dispatch_after`'s moment.
class DelayedBlock final : public DispatchTimer {
 public:
  DelayedBlock(dispatch_time_t when, const dispatch_queue_t& queue, Block<void()> block)
      : queue_(queue), block_(std::move(block)) {
    deadline = when;
  }

 private:
  void becomeDue(std::uint64_t) noexcept override {
    dispatch_async(queue_, std::move(block_));
    delete this;
  }

  const dispatch_queue_t queue_;
  Block<void()> block_;
};

}  // namespace

void dispatch_after(dispatch_time_t when, const dispatch_queue_t& queue, Block<void()> block) {
  if (!block) return;
  detail::notNil(queue, "dispatch_after", "queue");
  if (when <= mach_absolute_time()) {
    dispatch_async(queue, std::move(block));
  } else if (when != DISPATCH_TIME_FOREVER) {
    auto* delayed = new DelayedBlock(when, queue, std::move(block));
    std::lock_guard guard(DispatchTimers::shared().mutex());
    DispatchTimers::shared().arm(*delayed);
  }
}

}  // namespace zeb
