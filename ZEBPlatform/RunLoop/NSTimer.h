#pragma once

#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/RunLoop/RunLoopItem.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

namespace zeb {

class NSTimer;

namespace detail {
struct TimerNode;
using TimerBase = CallingRunLoopItem<const Ref<NSTimer>& /*timer*/>;
}  // namespace detail

/// Calls a block once or repeatedly, on the thread of the run loop that it is added to. For timers
/// on queues see Dispatch/DispatchSource.h.
///
/// Dates are wall-clock dates. They are converted to moments of the monotonic clock when the timer
/// is made or its date is set: setting the machine's clock later moves nothing, and time that the
/// machine sleeps does not count. A repeating timer keeps to its grid (date + n × interval),
/// however late a firing was. Firings that were missed because the machine or the loop was busy, or
/// the loop ran in other modes, become one late firing, never several; the next firing is at the
/// first moment of the grid after that.
///
/// A timer that does not repeat is invalidated after its firing. All functions may be called from
/// any thread.
class NSTimer final : public detail::TimerBase {
 public:
  /// Fires first at `fireDate` (nil or past: at once), then each `interval` seconds if it repeats;
  /// intervals below 0.0001 count as that. It does nothing until it is added to a run loop.
  NSTimer(const NSDate& fireDate, NSTimeInterval interval, bool repeats, Handler handler,
          Value userInfo = nullptr);
  NSTimer(const NSDate& fireDate, std::chrono::duration<double> interval, bool repeats,
          Handler handler, Value userInfo = nullptr)
      : NSTimer(fireDate, interval.count(), repeats, std::move(handler), std::move(userInfo)) {}
  ~NSTimer() override;

  /// A timer that fires first after `interval` seconds.
  [[nodiscard]] static Ref<NSTimer> timerWithTimeInterval(NSTimeInterval interval, bool repeats,
                                                          Handler handler,
                                                          Value userInfo = nullptr);
  [[nodiscard]] static Ref<NSTimer> timerWithTimeInterval(std::chrono::duration<double> interval,
                                                          bool repeats, Handler handler,
                                                          Value userInfo = nullptr) {
    return timerWithTimeInterval(interval.count(), repeats, std::move(handler),
                                 std::move(userInfo));
  }
  /// The same, added to the calling thread's run loop in the default mode.
  static Ref<NSTimer> scheduledTimerWithTimeInterval(NSTimeInterval interval, bool repeats,
                                                     Handler handler, Value userInfo = nullptr);
  static Ref<NSTimer> scheduledTimerWithTimeInterval(std::chrono::duration<double> interval,
                                                     bool repeats, Handler handler,
                                                     Value userInfo = nullptr) {
    return scheduledTimerWithTimeInterval(interval.count(), repeats, std::move(handler),
                                          std::move(userInfo));
  }

  /// The next firing, or the last one of a timer that is invalid.
  NSDate fireDate() const;
  /// Moves the next firing, and with it the grid. An invalid timer stays as it is.
  void setFireDate(const NSDate& date);

  /// Seconds between firings; 0 for a timer that does not repeat.
  NSTimeInterval timeInterval() const noexcept { return repeats_ ? interval_ : 0; }
  bool repeats() const noexcept { return repeats_; }
  const Value& userInfo() const noexcept { return userInfo_; }

  /// Seconds that a firing may be late, so that several timers can share one wake-up; the grid
  /// stays. 0 by default.
  NSTimeInterval tolerance() const;
  void setTolerance(NSTimeInterval seconds);
  void setTolerance(std::chrono::duration<double> tolerance) { setTolerance(tolerance.count()); }

  /// Calls the block now, on this thread. The schedule of a repeating timer does not change; a
  /// timer that does not repeat is invalid afterwards. An invalid timer does nothing.
  void fire();

 private:
  friend class NSRunLoop;
  friend class detail::RunLoopCore;
  friend class detail::RunLoopModes;

  void setFireTime(const NSDate& date) noexcept ZEB_REQUIRES(lock_);
  void advanceBeyond(std::uint64_t now) noexcept ZEB_REQUIRES(lock_);
  void schedule() ZEB_EXCLUDES(lock_);
  void scheduleLocked() ZEB_REQUIRES(lock_);
  void fireIfDue() noexcept ZEB_EXCLUDES(lock_);
  void callBlock() noexcept ZEB_EXCLUDES(lock_);

  const NSTimeInterval interval_;
  const bool repeats_;
  const Value userInfo_;

  NSDate fireDate_ ZEB_GUARDED_BY(lock_);
  std::uint64_t moment_ ZEB_GUARDED_BY(lock_);  ///< the same on the monotonic clock
  NSTimeInterval tolerance_ ZEB_GUARDED_BY(lock_) = 0;
  /// Its loop calls it, and schedules it afterwards.
  bool isFiring_ ZEB_GUARDED_BY(lock_) = false;
  /// Set by the only firing of a timer that does not repeat.
  bool hasFired_ ZEB_GUARDED_BY(lock_) = false;

  /// Its place in each mode; guarded by the lock of the loop's modes.
  std::vector<std::unique_ptr<detail::TimerNode>> nodes_;
};

}  // namespace zeb
