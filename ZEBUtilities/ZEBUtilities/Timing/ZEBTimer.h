#pragma once

#include <ZEBPlatform/Dispatch/DispatchSource.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Notifications/NSNotification.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <ZEBPlatform/RunLoop/NSTimer.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/SEL.h>
#include <ZEBUtilities/Timing/ZEBTimerAction.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

namespace zeb {

/// What a timer does while the application is in the background.
enum ZEBTimerBackgroundingBehavior : std::intptr_t {
  /// Nothing: it goes on.
  ZEBTimerBackgroundingBehaviorNone = 0,
  /// Stops, and on returning goes on with the time that was left.
  ZEBTimerBackgroundingBehaviorPause = 1,
  /// Stops, and on returning starts its whole interval anew.
  ZEBTimerBackgroundingBehaviorReset = 2,
};

using ZEBTimerBlock = Block<void(const Ref<ZEBTimer>& timer)>;

/// Calls a block, or a method of a target that it does not keep alive, at a date and perhaps again and again:
/// on the thread of a run loop, or on a dispatch queue. Fires at least once late rather than in a burst, as
/// `NSTimer` and `DispatchSource` do, and can pause while the application is in the background.
///
/// A timer is made, then scheduled once: on one run loop (in any number of modes) or on one queue; whichever
/// comes second does nothing. It is valid until it is invalidated, which is for good: by `invalidate()`, after
/// the firing of one that does not repeat, at the first firing that finds the target gone, and by its
/// destruction. Scheduling and firing an invalid timer do nothing.
///
/// Who keeps it: on a run loop, the loop, until it is invalidated or paused. On a queue, nobody: keep it. The
/// target is held weakly, and strongly during a firing.
///
/// Backgrounding follows the notifications that the framework UIKit names
/// ("UIApplicationDidEnterBackgroundNotification", "UIApplicationWillEnterForegroundNotification"; see
/// `ZEBFrameworksDirectory`), which the host posts on the main thread. Where the framework is not found, as in a
/// program that holds the static library outside of the installed tree, the names are these two; one line of
/// level 5 in the log says so. In extensions every timer behaves as `None`. A timer
/// that was made to pause and is valid but not scheduled when the application leaves is scheduled when it
/// returns, on the current run loop. A paused timer that nobody but the run loop kept is gone.
///
/// Any thread may call anything; blocks and methods are called without any lock held. After `invalidate()` on
/// the thread of the run loop or on the timer's serial queue, no firing begins; from elsewhere, one that has
/// begun goes on. Each firing writes a debug line to the channel "ZEBUtilitiesTimer".
class ZEBTimer : public NSObject {
 public:
  /// Not available: a timer needs to know what to do.
  ZEBTimer() = delete;

  /// Fires first at `fireDate` (nil or past: as soon as it is scheduled) and then, if it repeats, each
  /// `interval` seconds. A block goes before a target.
  ZEBTimer(const NSDate& fireDate, NSTimeInterval interval, const Ref<NSObject>& target,
           ZEBTimerAction selector, Value userInfo, ZEBTimerBlock block, bool repeats,
           ZEBTimerBackgroundingBehavior backgroundingBehavior);
  ZEBTimer(const NSDate& fireDate, NSTimeInterval interval, const Ref<NSObject>& target,
           ZEBTimerAction selector, Value userInfo, bool repeats,
           ZEBTimerBackgroundingBehavior backgroundingBehavior);
  ZEBTimer(const NSDate& fireDate, NSTimeInterval interval, ZEBTimerBlock block, bool repeats,
           ZEBTimerBackgroundingBehavior backgroundingBehavior);
  /// The same with an interval of std::chrono: `makeRef<ZEBTimer>(date, 250ms, block, true, …)`.
  template <class... Arguments>
  ZEBTimer(const NSDate& fireDate, std::chrono::duration<double> interval, Arguments&&... arguments)
      : ZEBTimer(fireDate, interval.count(), std::forward<Arguments>(arguments)...) {}
  ~ZEBTimer() override;

  /// A timer that fires first after `interval` seconds; to be scheduled by the caller.
  [[nodiscard]] static Ref<ZEBTimer> timerWithTimeInterval(
      NSTimeInterval interval, const Ref<NSObject>& target, ZEBTimerAction selector, Value userInfo,
      bool repeats,
      ZEBTimerBackgroundingBehavior backgroundingBehavior = ZEBTimerBackgroundingBehaviorNone);
  [[nodiscard]] static Ref<ZEBTimer> timerWithTimeInterval(
      NSTimeInterval interval, ZEBTimerBlock block, bool repeats,
      ZEBTimerBackgroundingBehavior backgroundingBehavior = ZEBTimerBackgroundingBehaviorNone);
  /// The same, scheduled on the calling thread's run loop.
  static Ref<ZEBTimer> scheduledTimerWithTimeInterval(
      NSTimeInterval interval, const Ref<NSObject>& target, ZEBTimerAction selector, Value userInfo,
      bool repeats,
      ZEBTimerBackgroundingBehavior backgroundingBehavior = ZEBTimerBackgroundingBehaviorNone);
  static Ref<ZEBTimer> scheduledTimerWithTimeInterval(
      NSTimeInterval interval, ZEBTimerBlock block, bool repeats,
      ZEBTimerBackgroundingBehavior backgroundingBehavior = ZEBTimerBackgroundingBehaviorNone);
  /// The same, running on the queue.
  [[nodiscard]] static Ref<ZEBTimer> queuedTimerOnQueue(
      const dispatch_queue_t& queue, NSTimeInterval interval, const Ref<NSObject>& target,
      ZEBTimerAction selector, Value userInfo, bool repeats,
      ZEBTimerBackgroundingBehavior backgroundingBehavior = ZEBTimerBackgroundingBehaviorNone);
  [[nodiscard]] static Ref<ZEBTimer> queuedTimerOnQueue(
      const dispatch_queue_t& queue, NSTimeInterval interval, ZEBTimerBlock block, bool repeats,
      ZEBTimerBackgroundingBehavior backgroundingBehavior = ZEBTimerBackgroundingBehaviorNone);

  /// All of these with an interval of std::chrono: `scheduledTimerWithTimeInterval(250ms, block, true)`.
  template <class... Arguments>
  [[nodiscard]] static Ref<ZEBTimer> timerWithTimeInterval(std::chrono::duration<double> interval,
                                                           Arguments&&... arguments) {
    return timerWithTimeInterval(interval.count(), std::forward<Arguments>(arguments)...);
  }
  template <class... Arguments>
  static Ref<ZEBTimer> scheduledTimerWithTimeInterval(std::chrono::duration<double> interval,
                                                      Arguments&&... arguments) {
    return scheduledTimerWithTimeInterval(interval.count(), std::forward<Arguments>(arguments)...);
  }
  template <class... Arguments>
  [[nodiscard]] static Ref<ZEBTimer> queuedTimerOnQueue(const dispatch_queue_t& queue,
                                                        std::chrono::duration<double> interval,
                                                        Arguments&&... arguments) {
    return queuedTimerOnQueue(queue, interval.count(), std::forward<Arguments>(arguments)...);
  }

  /// Nil means the calling thread's run loop, and the default mode. May be called again for other modes of
  /// the same loop.
  void scheduleWithRunLoop(const Ref<NSRunLoop>& runLoop, const NSString& mode);
  void scheduleWithCurrentRunLoop() { scheduleWithRunLoop(nullptr, nullptr); }
  /// Nil means the global queue of default priority.
  void applyToQueue(const dispatch_queue_t& queue);

  /// Fires now, on this thread, if the timer is valid; the schedule stays as it is. A timer that does not repeat
  /// is still valid during its firing: what it calls may call this again, and is then called again; other
  /// threads come too late.
  void fire();
  /// Stops the timer for good and lets go of the block. Also from its own firing.
  void invalidate();
  bool isValid() const;

  /// Nil when it is gone, or there was none.
  Ref<NSObject> target() const noexcept { return target_.lock(); }
  /// Nil when there is none, or it is a C++ member.
  SEL selector() const noexcept { return action_.selector(); }
  const Value& userInfo() const noexcept { return userInfo_; }
  bool repeats() const noexcept { return repeats_; }
  /// Seconds.
  NSTimeInterval timeInterval() const noexcept { return timeInterval_; }
  ZEBTimerBackgroundingBehavior backgroundingBehavior() const noexcept {
    return backgroundingBehavior_;
  }

  ZEBTimerBlock block() const;
  void setBlock(ZEBTimerBlock block);

  /// The first firing, or what was set last: firings do not advance it. Setting it moves a running timer's
  /// schedule.
  NSDate fireDate() const;
  void setFireDate(const NSDate& date);

  /// Seconds that a firing may be late, so that several timers share one wake-up; at first 0.
  NSTimeInterval tolerance() const;
  void setTolerance(NSTimeInterval tolerance);
  void setTolerance(std::chrono::duration<double> tolerance) { setTolerance(tolerance.count()); }

  /// Whether firings are not logged.
  bool shouldSilenceLogging() const noexcept {
    return shouldSilenceLogging_.load(std::memory_order_relaxed);
  }
  void setShouldSilenceLogging(bool isSilent) noexcept {
    shouldSilenceLogging_.store(isSilent, std::memory_order_relaxed);
  }

  /// When the timer was paused, nil while it is not.
  NSDate backgroundDate() const;
  void setBackgroundDate(const NSDate& date);

  /// "ZEBTimer", with everything above by its selectors; the initialisers are class methods there, and
  /// blocks travel as Runtime/BlockConversion.h says.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

 protected:
  /// One firing, as the run loop, the queue and `fire()` make it.
  void _fireInternal();
  void _timerDidFire(const Ref<NSTimer>& timer);
  /// Runs the timer on the queue, without noting the queue for the return from the background, as
  /// `applyToQueue` does. Nothing when it is invalid or scheduled already; nil as there.
  void setUpGCDTimer(const dispatch_queue_t& queue);
  /// Gives fire date, interval and tolerance to the source of a timer that runs on a queue; nothing on others.
  void applyGCDTimerToSource() const;
  /// Takes the timer off its run loop or queue: for good, or so that it can be scheduled again. Answers whether
  /// it was scheduled.
  bool _invalidate(bool forBackgrounding);
  void _applicationDidBackground(const Ref<NSNotification>& notification);
  void _applicationWillForeground(const Ref<NSNotification>& notification);
  std::string _logProperties() const;

 private:
  void observeBackgrounding();
  void invalidateForGood();
  bool mayFire() noexcept;
  bool pauses() const noexcept;
  void logFiring(const char* format) const;

  // With the lock held:
  bool isValidNow() const;
  Ref<NSTimer> nsTimer();
  bool isFreeForAQueue() const;
  void startSource(const dispatch_queue_t& queue);
  void scheduleSource() const;
  NSTimeInterval delayAfter(const NSDate& backgroundDate) const;

  const WeakRef<NSObject> target_;
  const ZEBTimerAction action_;
  const Value userInfo_;
  const bool repeats_;
  const NSTimeInterval timeInterval_;
  const ZEBTimerBackgroundingBehavior backgroundingBehavior_;
  std::atomic<bool> shouldSilenceLogging_{false};
  /// Of one that does not repeat: the thread that its only firing began on, or `hasFired`.
  std::atomic<ThreadHandle> firingThread_{0};

  /// Guards the rest; the run loop's and the queue's locks are taken while it is held, never the other way.
  mutable std::mutex mutex_;
  ZEBTimerBlock block_;
  NSDate fireDate_;
  NSTimeInterval tolerance_ = 0;
  /// Whether an underlying timer was made, or never will be.
  bool timerWasCreated_ = false;
  dispatch_source_t gcdSource_;
  Ref<NSTimer> nsTimer_;
  dispatch_queue_t targetGCDQueue_;
  Ref<NSRunLoop> targetRunLoop_;
  NSString targetRunLoopMode_;
  NSDate backgroundDate_;
};

}  // namespace zeb
