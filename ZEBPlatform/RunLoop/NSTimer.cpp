#include <ZEBPlatform/Concurrency/detail/RepeatGrid.h>
#include <ZEBPlatform/Concurrency/detail/Seconds.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/RunLoop/LoopTimePrivate.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <ZEBPlatform/RunLoop/NSTimer.h>
#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>

#include <algorithm>
#include <utility>

namespace zeb {

namespace {

constexpr NSTimeInterval minInterval = 0.0001;

NSTimeInterval usableInterval(NSTimeInterval interval) noexcept {
  return interval >= minInterval ? interval : minInterval;  // also for NaN
}

}  // namespace

NSTimer::NSTimer(const NSDate& fireDate, NSTimeInterval interval, bool repeats, Handler handler,
                 Value userInfo)
    : CallingRunLoopItem(Kind::timer, 0, std::move(handler)),
      interval_(usableInterval(interval)),
      repeats_(repeats),
      userInfo_(std::move(userInfo)) {
  setFireTime(fireDate);
}

NSTimer::~NSTimer() = default;

Ref<NSTimer> NSTimer::timerWithTimeInterval(NSTimeInterval interval, bool repeats, Handler handler,
                                            Value userInfo) {
  const NSDate first = NSDate::date().dateByAddingTimeInterval(usableInterval(interval));
  return makeRef<NSTimer>(first, interval, repeats, std::move(handler), std::move(userInfo));
}

Ref<NSTimer> NSTimer::scheduledTimerWithTimeInterval(NSTimeInterval interval, bool repeats,
                                                     Handler handler, Value userInfo) {
  const Ref<NSTimer> timer =
      timerWithTimeInterval(interval, repeats, std::move(handler), std::move(userInfo));
  NSRunLoop::currentRunLoop()->addTimer(timer, NSDefaultRunLoopMode);
  return timer;
}

NSDate NSTimer::fireDate() const {
  const detail::LockGuard guard(lock_);
  return fireDate_;
}

void NSTimer::setFireDate(const NSDate& date) {
  const detail::LockGuard guard(lock_);
  if (!isValid()) return;
  setFireTime(date);
  scheduleLocked();
}

NSTimeInterval NSTimer::tolerance() const {
  const detail::LockGuard guard(lock_);
  return tolerance_;
}

void NSTimer::setTolerance(NSTimeInterval seconds) {
  const detail::LockGuard guard(lock_);
  tolerance_ = seconds > 0 ? seconds : 0;
  scheduleLocked();
}

void NSTimer::setFireTime(const NSDate& date) noexcept {
  fireDate_ = date.isNil() ? NSDate::date() : date;
  moment_ = detail::momentOfDate(fireDate_);
}

void NSTimer::schedule() {
  const detail::LockGuard guard(lock_);
  scheduleLocked();
}

/// Passes a change on to the loop.
void NSTimer::scheduleLocked() {
  if (!loop_ || isFiring_) return;
  detail::RunLoopCore& core = loop_->core();
  if (core.modes().schedule(*this)) core.requestPass();
}

void NSTimer::fire() {
  {
    const detail::LockGuard guard(lock_);
    if (!repeats_ && std::exchange(hasFired_, true)) return;
  }
  callBlock();
}

/// Called after the loop has taken the timer out of a heap because it is due.
void NSTimer::fireIfDue() noexcept {
  {
    const detail::LockGuard guard(lock_);
    const std::uint64_t now = mach_absolute_time();
    // Another thread may have changed it meanwhile, or a loop that its block runs finds it due.
    if (!isValid() || isFiring_ || moment_ > now) return;
    if (repeats_) {
      advanceBeyond(now);
    } else if (std::exchange(hasFired_, true)) {
      return;
    }
    isFiring_ = true;
  }
  callBlock();
  const detail::LockGuard guard(lock_);
  isFiring_ = false;
  scheduleLocked();
}

void NSTimer::callBlock() noexcept {
  const Ref<NSTimer> self(this);  // the block may drop the caller's reference
  if (const Handler handler = this->handler()) handler(self);
  if (!repeats_) invalidate();
}

void NSTimer::advanceBeyond(std::uint64_t now) noexcept {
  const std::uint64_t interval = detail::ticksIn(interval_);
  const std::uint64_t count = detail::intervalsToNextPoint(moment_, interval, now);
  moment_ = count > 0 ? moment_ + count * interval : UINT64_MAX;
  const auto steps = static_cast<double>(std::max<std::uint64_t>(count, 1));
  fireDate_ = fireDate_.dateByAddingTimeInterval(steps * interval_);
}

}  // namespace zeb
