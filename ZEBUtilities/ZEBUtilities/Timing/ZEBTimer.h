#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
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
#include <string>
#include <utility>

namespace zeb {

/// What a timer does while the application is in the background.
enum ZEBTimerBackgroundingBehavior : std::intptr_t {
  /// It keeps running.
  ZEBTimerBackgroundingBehaviorNone = 0,
  /// It stops, and on return continues with the remaining time.
  ZEBTimerBackgroundingBehaviorPause = 1,
  /// It stops, and on return starts its whole interval again.
  ZEBTimerBackgroundingBehaviorReset = 2,
};

using ZEBTimerBlock = Block<void(const Ref<ZEBTimer>& timer)>;

/// Calls a block or a method of a target at a date, once or repeatedly, on a run loop's thread or
/// on a dispatch queue. After a delay it fires once instead of once for each missed interval, as
/// `NSTimer` and `DispatchSource` do. Can pause while the application is in the background.
///
/// A timer is scheduled on one run loop (in any number of modes) or on one queue; scheduling it
/// elsewhere later does nothing, because the platform's timers have one loop. It is valid until it
/// is invalidated: by `invalidate()`, after its firing if it does not repeat, at the first firing
/// after the target's destruction, and by its own destruction. It cannot become valid again.
/// Scheduling and firing an invalid timer do nothing.
///
/// Ownership: a run loop keeps its timers until they are invalidated or paused. A queue does not
/// keep them, so that the caller must. The target is held weakly, and strongly during a firing.
///
/// Backgrounding follows the notifications that the framework UIKit names
/// ("UIApplicationDidEnterBackgroundNotification", "UIApplicationWillEnterForegroundNotification";
/// see `ZEBFrameworksDirectory`), which the host posts on the main thread. If the framework is not
/// found, as in a program with the static library outside of the installed tree, these two names
/// are used, and a line of level 5 is logged. In extensions every timer behaves as `None`. A
/// pausing timer that is valid but not scheduled when the application goes to the background is
/// scheduled on the current run loop when it returns. A paused timer that only the run loop kept is
/// destroyed.
///
/// All functions may be called from any thread. Blocks and methods are called without a lock held.
/// After `invalidate()` on the run loop's thread or on the timer's serial queue, no firing begins.
/// When other threads call it, a firing that has begun continues. Each firing writes a debug line
/// to the channel "ZEBUtilitiesTimer".
class ZEBTimer : public NSObject {
 public:
  /// Not available: a timer needs a block or a target.
  ZEBTimer() = delete;

  /// Fires first at `fireDate` (nil or past: as soon as it is scheduled) and then, if it repeats,
  /// every `interval` seconds. If it has a block, the target is not called.
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

  /// A timer that fires first after `interval` seconds. The caller schedules it.
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
  /// The same, scheduled on the queue.
  [[nodiscard]] static Ref<ZEBTimer> queuedTimerOnQueue(
      const dispatch_queue_t& queue, NSTimeInterval interval, const Ref<NSObject>& target,
      ZEBTimerAction selector, Value userInfo, bool repeats,
      ZEBTimerBackgroundingBehavior backgroundingBehavior = ZEBTimerBackgroundingBehaviorNone);
  [[nodiscard]] static Ref<ZEBTimer> queuedTimerOnQueue(
      const dispatch_queue_t& queue, NSTimeInterval interval, ZEBTimerBlock block, bool repeats,
      ZEBTimerBackgroundingBehavior backgroundingBehavior = ZEBTimerBackgroundingBehaviorNone);

  /// All of these with an interval of std::chrono: `scheduledTimerWithTimeInterval(250ms, block,
  /// true)`.
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

  /// Nil means the calling thread's run loop, and the default mode. May be called again for other
  /// modes of the same loop; after a pause, the timer continues in the latest one. A call with
  /// another loop changes nothing, unless the timer is paused.
  void scheduleWithRunLoop(const Ref<NSRunLoop>& runLoop, const NSString& mode);
  void scheduleWithCurrentRunLoop() { scheduleWithRunLoop(nullptr, nullptr); }
  /// Nil means the global queue of default priority.
  void applyToQueue(const dispatch_queue_t& queue);

  /// Fires now, on this thread, if the timer is valid. The schedule does not change. A timer that
  /// does not repeat is still valid during its firing: if the block or method calls this function,
  /// it is called again, but calls on other threads do nothing.
  void fire();
  /// Stops the timer for good and releases the block. May be called from its own firing.
  void invalidate();
  bool isValid() const;

  /// Nil when it was destroyed, or there was none.
  Ref<NSObject> target() const noexcept { return target_.lock(); }
  /// Nil when there is none, and for a C++ member function.
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

  /// The date of the first firing, or the date that was set last. Firings do not advance it.
  /// Setting it moves a running timer's schedule.
  NSDate fireDate() const;
  void setFireDate(const NSDate& date);

  /// Seconds that a firing may be late, so that several timers can share one wake-up; at first 0.
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

  /// When the timer was paused; nil while it is not paused.
  NSDate backgroundDate() const;
  void setBackgroundDate(const NSDate& date);

  /// Registered as "ZEBTimer", with all functions above under their selectors. The initialisers are
  /// class methods there, and blocks are passed as described in Runtime/BlockConversion.h.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

 protected:
  /// Performs one firing. Called by the run loop, the queue and `fire()`.
  void _fireInternal();
  void _timerDidFire(const Ref<NSTimer>& timer);
  /// Runs the timer on the queue as `applyToQueue` does, but does not record the queue for the
  /// return from the background. Does nothing when the timer is invalid or scheduled already.
  void setUpGCDTimer(const dispatch_queue_t& queue);
  /// Applies fire date, interval and tolerance to the source of a timer on a queue. Does nothing
  /// for other timers.
  void applyGCDTimerToSource() const;
  /// Removes the timer from its run loop or queue, for good or so that it can be scheduled again.
  /// Returns whether it was scheduled.
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

  bool isValidNow() const ZEB_REQUIRES(lock_);
  Ref<NSTimer> nsTimer() ZEB_REQUIRES(lock_);
  bool isFreeForAQueue() const ZEB_REQUIRES(lock_);
  void startSource(const dispatch_queue_t& queue) ZEB_REQUIRES(lock_);
  void scheduleSource() const ZEB_REQUIRES(lock_);
  NSTimeInterval delayAfter(const NSDate& backgroundDate) const ZEB_REQUIRES(lock_);

  const WeakRef<NSObject> target_;
  const ZEBTimerAction action_;
  const Value userInfo_;
  const bool repeats_;
  const NSTimeInterval timeInterval_;
  const ZEBTimerBackgroundingBehavior backgroundingBehavior_;
  std::atomic<bool> shouldSilenceLogging_{false};
  /// For a timer that does not repeat: the thread on which its only firing began, or `hasFired`.
  std::atomic<ThreadHandle> firingThread_{0};

  /// The run loop's and the queue's locks are taken while it is held, never the other way round.
  mutable detail::Lock lock_;
  ZEBTimerBlock block_ ZEB_GUARDED_BY(lock_);
  NSDate fireDate_ ZEB_GUARDED_BY(lock_);
  NSTimeInterval tolerance_ ZEB_GUARDED_BY(lock_) = 0;
  /// Whether an underlying timer was made, or never will be.
  bool timerWasCreated_ ZEB_GUARDED_BY(lock_) = false;
  dispatch_source_t gcdSource_ ZEB_GUARDED_BY(lock_);
  Ref<NSTimer> nsTimer_ ZEB_GUARDED_BY(lock_);
  dispatch_queue_t targetGCDQueue_ ZEB_GUARDED_BY(lock_);
  Ref<NSRunLoop> targetRunLoop_ ZEB_GUARDED_BY(lock_);
  NSString targetRunLoopMode_ ZEB_GUARDED_BY(lock_);
  NSDate backgroundDate_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb
