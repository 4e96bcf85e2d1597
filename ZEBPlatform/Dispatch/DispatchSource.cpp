#include <ZEBPlatform/Concurrency/detail/RepeatGrid.h>
#include <ZEBPlatform/Dispatch/DispatchSource.h>
#include <ZEBPlatform/Dispatch/DispatchTimersPrivate.h>
#include <ZEBPlatform/Dispatch/detail/NilArgument.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/Console.h>

#include <atomic>
#include <utility>

namespace zeb {

namespace {

using detail::DispatchTimer;
using detail::DispatchTimers;
using detail::LockGuard;

/// At most one event is under way, from its submission to the handler's return. Firings that become
/// due meanwhile are recorded as one. So the handler never runs twice at the same time, and a busy
/// queue never gets a burst.
class TimerSource final : public DispatchSource, public DispatchTimer {
 public:
  explicit TimerSource(dispatch_queue_t queue) : queue_(std::move(queue)) {}
  ~TimerSource() override {
    if (isCancelled()) return;  // and so disarmed, by a thread whose reference is released by now
    const LockGuard guard(DispatchTimers::lock);
    timers().disarm(*this);
  }

  void setTimer(dispatch_time_t start, std::uint64_t interval, std::uint64_t leewayNanoseconds) {
    const LockGuard guard(DispatchTimers::lock);
    if (isCancelled()) return;
    hasSchedule_ = start != DISPATCH_TIME_FOREVER;
    deadline = start == DISPATCH_TIME_NOW ? mach_absolute_time() : start;
    leeway = leewayNanoseconds;
    interval_ = interval == 0 ? 1 : interval;
    hasMissed_ = false;
    ++schedule_;
    armOrDisarm();
  }

  void setEventHandler(Block<void()> handler) {
    const LockGuard guard(DispatchTimers::lock);
    if (!isCancelled()) std::swap(eventHandler_, handler);
  }

  void setCancelHandler(Block<void()> handler) {
    const LockGuard guard(DispatchTimers::lock);
    if (!isCancelled()) std::swap(cancelHandler_, handler);
  }

  void suspend() {
    const LockGuard guard(DispatchTimers::lock);
    ++suspensions_;
    armOrDisarm();
  }

  void resume() {
    const LockGuard guard(DispatchTimers::lock);
    if (suspensions_ == 0) fatal("dispatch_resume: the source is not suspended.");
    if (--suspensions_ > 0) return;
    if (isCancelled()) {
      submitCancellation();
    } else {
      armOrDisarm();
      fireIfMissed();
    }
  }

  void cancel() {
    Block<void()> handler;  // released after the lock: what it captured may call this source
    const LockGuard guard(DispatchTimers::lock);
    if (isCancelled()) return;
    isCancelled_.store(true, std::memory_order_release);
    std::swap(handler, eventHandler_);
    timers().disarm(*this);
    submitCancellation();
  }

  /// Needs no lock, because a cancellation is never taken back.
  bool isCancelled() const noexcept { return isCancelled_.load(std::memory_order_acquire); }

 private:
  static DispatchTimers& timers() { return DispatchTimers::shared(); }

  void armOrDisarm() ZEB_REQUIRES(DispatchTimers::lock) {
    if (hasSchedule_ && suspensions_ == 0 && !isCancelled()) {
      timers().arm(*this);
    } else {
      timers().disarm(*this);
    }
  }

  /// While an event is under way the timer is not armed again, so that a busy queue costs no
  /// wake-ups.
  void becomeDue(std::uint64_t now) noexcept override ZEB_REQUIRES(DispatchTimers::lock) {
    if (isUnderWay_) {
      hasMissed_ = true;
    } else {
      fire(now);
    }
  }

  void fireIfMissed() ZEB_REQUIRES(DispatchTimers::lock) {
    if (suspensions_ > 0 || isUnderWay_ || !std::exchange(hasMissed_, false)) return;
    fire(mach_absolute_time());
  }

  void fire(std::uint64_t now) ZEB_REQUIRES(DispatchTimers::lock) {
    if (hasSchedule_ && deadline <= now) {
      moveAlongGrid(now);
      armOrDisarm();
    }
    submitEvent();
  }

  /// Moves the deadline to the next point in the future: all missed points are one firing.
  void moveAlongGrid(std::uint64_t now) ZEB_REQUIRES(DispatchTimers::lock) {
    const std::uint64_t steps = interval_ != DISPATCH_TIME_FOREVER
                                    ? detail::intervalsToNextPoint(deadline, interval_, now)
                                    : 0;
    hasSchedule_ = steps > 0;
    deadline += steps * interval_;
  }

  void submitEvent() ZEB_REQUIRES(DispatchTimers::lock) {
    if (!retainUnlessDying()) return;  // its destructor waits for the lock
    isUnderWay_ = true;
    dispatch_async(queue_, [self = Ref<TimerSource>::adopt(this), schedule = schedule_] {
      self->handleEvent(schedule);
    });
  }

  void handleEvent(std::uint64_t schedule) {
    Block<void()> handler;
    {
      const LockGuard guard(DispatchTimers::lock);
      if (isUniquelyReferenced()) return;  // by this event: all other references were released
      if (suspensions_ > 0) {
        hasMissed_ = schedule == schedule_;  // for the resume
      } else if (schedule == schedule_) {
        handler = eventHandler_;
      }
    }
    if (handler) handler();
    const LockGuard guard(DispatchTimers::lock);
    isUnderWay_ = false;
    if (isCancelled()) {
      submitCancellation();
    } else {
      fireIfMissed();
    }
  }

  /// Submits the cancel handler once, after the last event has ended.
  void submitCancellation() ZEB_REQUIRES(DispatchTimers::lock) {
    if (isUnderWay_ || suspensions_ > 0 || !cancelHandler_) return;
    dispatch_async(queue_, [handler = std::exchange(cancelHandler_, nullptr)] { handler(); });
  }

  const dispatch_queue_t queue_;
  Block<void()> eventHandler_ ZEB_GUARDED_BY(DispatchTimers::lock);
  Block<void()> cancelHandler_ ZEB_GUARDED_BY(DispatchTimers::lock);
  std::uint64_t interval_ ZEB_GUARDED_BY(DispatchTimers::lock) = DISPATCH_TIME_FOREVER;
  /// Counts the calls of `setTimer`.
  std::uint64_t schedule_ ZEB_GUARDED_BY(DispatchTimers::lock) = 0;
  std::uint32_t suspensions_ ZEB_GUARDED_BY(DispatchTimers::lock) = 1;
  bool hasSchedule_ ZEB_GUARDED_BY(DispatchTimers::lock) = false;
  std::atomic<bool> isCancelled_{false};  ///< set with the lock held
  bool isUnderWay_ ZEB_GUARDED_BY(DispatchTimers::lock) = false;
  bool hasMissed_ ZEB_GUARDED_BY(DispatchTimers::lock) = false;
};

TimerSource& timerSource(const dispatch_source_t& source, const char* function) noexcept {
  return static_cast<TimerSource&>(detail::notNil(source, function, "source"));
}

}  // namespace

// The timers' thread retains a source that it knows by address, but only while the source is armed,
// which a cancelled one never is again. A thread that is still inside the cancellation has a
// reference of its own.
void DispatchSource::release() const noexcept {
  if (isUniquelyReferenced() && static_cast<const TimerSource&>(*this).isCancelled()) {
    releaseOnlyReference();
  } else {
    NSObject::release();
  }
}

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
  void becomeDue(std::uint64_t) noexcept override ZEB_REQUIRES(DispatchTimers::lock) {
    dispatch_async(queue_, std::move(block_));
    // The block may have ended already and left this reference as the last one.
    DispatchTimers::shared().releaseUnlocked(std::move(queue_));
    delete this;
  }

  dispatch_queue_t queue_;
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
    const LockGuard guard(DispatchTimers::lock);
    DispatchTimers::shared().arm(*delayed);
  }
}

}  // namespace zeb
