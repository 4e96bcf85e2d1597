#include <ZEBPlatform/Concurrency/detail/Seconds.h>
#include <ZEBPlatform/Linux/DynamicLoader.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Bundle/ZEBFrameworkLoading.h>
#include <ZEBUtilities/Bundle/ZEBProcessEnvironment.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Timing/ZEBTimer.h>

#include <atomic>
#include <cmath>
#include <memory>
#include <utility>

namespace zeb {

namespace {

/// No thread has this handle.
constexpr ThreadHandle hasFired = ~ThreadHandle{0};

constexpr const char* sourceFile = "ZEBUtilities/ZEBUtilities/ZEBTimer";

struct UIKit {
  ZEBLibraryHandle handle = nullptr;
  NSError error;
};

void reportMissing(const UIKit& uiKit) {
  const char* channel = ZEBUtilitiesLoggingChannel_Timer;
  if (uiKit.handle || !OLGCanLog(nullptr, OLGLevelNotice, channel)) return;
  OLGLogEx(nullptr, OLGLevelNotice, channel, sourceFile, "+[ZEBTimer initialize]", __LINE__,
           "UIKit was not loaded (%@); timers listen to the notification names built in. "
           "ZEBSetFrameworksDirectory() names its folder.",
           uiKit.error.userInfo()["dlerror"]);
}

/// Opened when the first timer is made that pauses, and never closed. Several threads may open it
/// at the same time, because no lock may be held while loading calls the framework's and the log
/// handler's code.
const UIKit& uiKit() {
  static constinit std::atomic<const UIKit*> found = nullptr;
  if (const UIKit* known = found.load(std::memory_order_acquire)) return *known;
  auto mine = std::make_unique<UIKit>();
  const NSString own = ZEBFrameworksDirectory();
  mine->handle = ZEBLoadFramework("UIKit", dynamicLoaderLazyLocalMode,
                                  own.isNil() ? NSArray() : NSArray{own}, &mine->error);
  const UIKit* known = nullptr;
  if (!found.compare_exchange_strong(known, mine.get(), std::memory_order_acq_rel)) return *known;
  const UIKit& kept =
      *mine.release();  // never destroyed: static objects may make timers while the process exits
  reportMissing(kept);
  return kept;
}

/// The framework's name for the notification; without the framework or the symbol, the symbol
/// itself.
NSString notificationName(const char* symbol) {
  const auto* name = static_cast<const char* const*>(symbolInSharedObject(uiKit().handle, symbol));
  return name ? *name : symbol;
}

dispatch_queue_t orGlobalQueue(const dispatch_queue_t& queue) {
  return queue ? queue : dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT);
}

}  // namespace

void ZEBTimerAction::operator()(NSObject& target, const Ref<ZEBTimer>& timer) const {
  if (member_) {
    member_(target, timer);
  } else if (selector_) {
    performSelector(target, selector_, timer);
  }
}

ZEBTimer::ZEBTimer(const NSDate& fireDate, NSTimeInterval interval, const Ref<NSObject>& target,
                   ZEBTimerAction selector, Value userInfo, ZEBTimerBlock block, bool repeats,
                   ZEBTimerBackgroundingBehavior backgroundingBehavior)
    : target_(target),
      action_(std::move(selector)),
      userInfo_(std::move(userInfo)),
      repeats_(repeats),
      timeInterval_(interval),
      backgroundingBehavior_(ZEBAmIRunningInAnExtension() ? ZEBTimerBackgroundingBehaviorNone
                                                          : backgroundingBehavior),
      block_(std::move(block)),
      fireDate_(fireDate) {
  if (backgroundingBehavior_ != ZEBTimerBackgroundingBehaviorNone) observeBackgrounding();
}

ZEBTimer::ZEBTimer(const NSDate& fireDate, NSTimeInterval interval, const Ref<NSObject>& target,
                   ZEBTimerAction selector, Value userInfo, bool repeats,
                   ZEBTimerBackgroundingBehavior backgroundingBehavior)
    : ZEBTimer(fireDate, interval, target, std::move(selector), std::move(userInfo), nullptr,
               repeats, backgroundingBehavior) {}

ZEBTimer::ZEBTimer(const NSDate& fireDate, NSTimeInterval interval, ZEBTimerBlock block,
                   bool repeats, ZEBTimerBackgroundingBehavior backgroundingBehavior)
    : ZEBTimer(fireDate, interval, nullptr, nullptr, nullptr, std::move(block), repeats,
               backgroundingBehavior) {}

ZEBTimer::~ZEBTimer() { invalidateForGood(); }

ZEBTimerBlock ZEBTimer::block() const {
  const detail::LockGuard guard(lock_);
  return block_;
}

void ZEBTimer::setBlock(ZEBTimerBlock block) {
  const detail::LockGuard guard(lock_);
  std::swap(block_, block);  // the old one dies after the lock
}

NSDate ZEBTimer::fireDate() const {
  const detail::LockGuard guard(lock_);
  return fireDate_;
}

NSTimeInterval ZEBTimer::tolerance() const {
  const detail::LockGuard guard(lock_);
  return tolerance_;
}

NSDate ZEBTimer::backgroundDate() const {
  const detail::LockGuard guard(lock_);
  return backgroundDate_;
}

void ZEBTimer::setBackgroundDate(const NSDate& date) {
  const detail::LockGuard guard(lock_);
  backgroundDate_ = date;
}

bool ZEBTimer::isValid() const {
  const detail::LockGuard guard(lock_);
  return isValidNow();
}

bool ZEBTimer::isValidNow() const {
  if (gcdSource_) return true;
  return nsTimer_ ? nsTimer_->isValid() : !timerWasCreated_;
}

void ZEBTimer::scheduleWithRunLoop(const Ref<NSRunLoop>& runLoop, const NSString& mode) {
  const Ref<NSRunLoop> loop = runLoop ? runLoop : NSRunLoop::currentRunLoop();
  const NSString modeName = mode.isNil() ? NSString(NSDefaultRunLoopMode) : mode.copy();
  Ref<NSRunLoop> stored = loop;  // the one before is released after the lock
  Ref<NSTimer> timer;
  {
    const detail::LockGuard guard(lock_);
    if (!isValidNow() || gcdSource_) return;
    // A run-loop timer belongs to one loop; it also continues there after a pause.
    if (nsTimer_ && targetRunLoop_ != loop) return;
    timer = nsTimer();
    targetRunLoopMode_ = modeName;
    std::swap(targetRunLoop_, stored);
  }
  loop->addTimer(timer, modeName);
}

Ref<NSTimer> ZEBTimer::nsTimer() {
  if (!std::exchange(timerWasCreated_, true)) {
    // The block keeps this timer alive until the run loop's timer is invalidated.
    nsTimer_ = makeRef<NSTimer>(
        fireDate_, timeInterval_, repeats_,
        [self = Ref(this)](const Ref<NSTimer>& timer) { self->_timerDidFire(timer); }, userInfo_);
    if (tolerance_ > 0) nsTimer_->setTolerance(tolerance_);
  }
  return nsTimer_;
}

void ZEBTimer::applyToQueue(const dispatch_queue_t& queue) {
  dispatch_queue_t target = orGlobalQueue(queue);
  const detail::LockGuard guard(lock_);
  if (!isFreeForAQueue()) return;
  std::swap(targetGCDQueue_, target);  // the one before is released after the lock
  startSource(targetGCDQueue_);
}

void ZEBTimer::setUpGCDTimer(const dispatch_queue_t& queue) {
  const dispatch_queue_t target = orGlobalQueue(queue);
  const detail::LockGuard guard(lock_);
  if (isFreeForAQueue()) startSource(target);
}

void ZEBTimer::applyGCDTimerToSource() const {
  const detail::LockGuard guard(lock_);
  if (gcdSource_) scheduleSource();
}

bool ZEBTimer::isFreeForAQueue() const { return isValidNow() && !nsTimer_ && !gcdSource_; }

void ZEBTimer::startSource(const dispatch_queue_t& queue) {
  gcdSource_ = dispatch_source_create_timer(queue);
  scheduleSource();
  dispatch_source_set_event_handler(gcdSource_, [weak = WeakRef<ZEBTimer>(this)] {
    if (const Ref<ZEBTimer> timer = weak.lock()) timer->_fireInternal();
  });
  dispatch_resume(gcdSource_);
  timerWasCreated_ = true;
}

void ZEBTimer::scheduleSource() const {
  const NSTimeInterval delay = fireDate_.timeIntervalSinceDate(NSDate::date());
  const std::int64_t untilStart = fireDate_.isNil() ? 0 : detail::nanosecondsIn(delay);
  const std::uint64_t interval = repeats_ ? detail::ticksIn(timeInterval_) : DISPATCH_TIME_FOREVER;
  dispatch_source_set_timer(gcdSource_, dispatch_time(DISPATCH_TIME_NOW, untilStart), interval,
                            detail::ticksIn(tolerance_));
}

void ZEBTimer::setFireDate(const NSDate& date) {
  const detail::LockGuard guard(lock_);
  if (date.isIdenticalTo(fireDate_)) return;
  fireDate_ = date;
  if (gcdSource_) {
    scheduleSource();
  } else if (nsTimer_) {
    nsTimer_->setFireDate(date);
  }
}

void ZEBTimer::setTolerance(NSTimeInterval tolerance) {
  const detail::LockGuard guard(lock_);
  if (tolerance == tolerance_) return;
  tolerance_ = tolerance;
  if (gcdSource_) {
    scheduleSource();
  } else if (nsTimer_) {
    nsTimer_->setTolerance(tolerance);
  }
}

void ZEBTimer::fire() {
  if (isValid()) _fireInternal();
}

void ZEBTimer::_timerDidFire(const Ref<NSTimer>&) { _fireInternal(); }

/// The scheduler and calls of `fire()` may compete on several threads: the first one fires. The
/// firing thread itself may fire again meanwhile.
bool ZEBTimer::mayFire() noexcept {
  const ThreadHandle thread = currentThreadHandle();
  ThreadHandle firing = 0;
  return firingThread_.compare_exchange_strong(firing, thread, std::memory_order_relaxed) ||
         firing == thread;
}

void ZEBTimer::_fireInternal() {
  if (!repeats_ && !mayFire()) return;
  const Ref<ZEBTimer> self(this);
  // Also when the block or the method throws, because the timer cannot fire again.
  struct AfterFiring {
    ZEBTimer& timer;
    ~AfterFiring() {
      if (timer.repeats_) return;
      timer.firingThread_.store(hasFired, std::memory_order_relaxed);
      timer.invalidate();
    }
  } afterFiring{*this};
  const Ref<NSObject> target = target_.lock();
  const ZEBTimerBlock block = this->block();
  if (block) {
    logFiring("(%@): fired with block: %@");
    block(self);
  } else if (target && action_) {
    logFiring("(%@): fired: %@");
    action_(*target, self);
  } else {
    logFiring("(%@): fired for deallocated target; invalidating: %@");
    invalidate();
  }
}

void ZEBTimer::logFiring(const char* format) const {
  const char* channel = ZEBUtilitiesLoggingChannel_Timer;
  if (shouldSilenceLogging() || !OLGCanLog(nullptr, OLGLevelDebug, channel)) return;
  OLGLogEx(nullptr, OLGLevelDebug, channel, sourceFile, "-[ZEBTimer _fireInternal]", __LINE__,
           format, *this, _logProperties());
}

std::string ZEBTimer::_logProperties() const {
  const Ref<NSObject> target = target_.lock();
  return formattedText("timeInterval=%0.1f target=%@ selector=%@ block=%@",
                       {timeInterval_, target ? target->className() : std::string("nil"),
                        selector() ? selector().name() : "NULL", block().description()});
}

void ZEBTimer::invalidate() {
  const Ref<ZEBTimer> self(this);  // the run loop may be the last one that keeps it
  invalidateForGood();
}

void ZEBTimer::invalidateForGood() {
  _invalidate(false);
  ZEBTimerBlock released;  // dies after the lock
  const detail::LockGuard guard(lock_);
  backgroundDate_ = nullptr;
  std::swap(block_, released);
}

bool ZEBTimer::_invalidate(bool forBackgrounding) {
  dispatch_source_t source;
  Ref<NSTimer> timer;
  {
    const detail::LockGuard guard(lock_);
    if (forBackgrounding) {
      // A timer that was invalidated for good must not become valid again.
      if (!isValidNow()) return false;
      backgroundDate_ = NSDate::date();
    }
    if (!std::exchange(timerWasCreated_, !forBackgrounding)) return false;
    std::swap(source, gcdSource_);
    std::swap(timer, nsTimer_);
  }
  dispatch_source_cancel(source);
  if (timer) timer->invalidate();
  return true;
}

void ZEBTimer::observeBackgrounding() {
  const auto observe = [this](const char* symbol, auto handle) {
    NSNotificationCenter::defaultCenter()->addObserver(
        Ref<NSObject>(this),
        [this, handle](const Ref<NSNotification>& notification) { (this->*handle)(notification); },
        notificationName(symbol));
  };
  observe("UIApplicationDidEnterBackgroundNotification", &ZEBTimer::_applicationDidBackground);
  observe("UIApplicationWillEnterForegroundNotification", &ZEBTimer::_applicationWillForeground);
}

void ZEBTimer::_applicationDidBackground(const Ref<NSNotification>&) {
  if (pauses()) _invalidate(true);
}

bool ZEBTimer::pauses() const noexcept {
  return backgroundingBehavior_ == ZEBTimerBackgroundingBehaviorPause ||
         backgroundingBehavior_ == ZEBTimerBackgroundingBehaviorReset;
}

void ZEBTimer::_applicationWillForeground(const Ref<NSNotification>&) {
  NSTimeInterval delay = 0;
  dispatch_queue_t queue;
  Ref<NSRunLoop> runLoop;
  NSString mode;
  {
    const detail::LockGuard guard(lock_);
    if (backgroundingBehavior_ == ZEBTimerBackgroundingBehaviorNone) return;
    const NSDate pausedAt = std::exchange(backgroundDate_, nullptr);
    if (pausedAt.isNil() || !isValidNow() || !pauses()) return;
    delay = delayAfter(pausedAt);
    queue = targetGCDQueue_;
    runLoop = targetRunLoop_;
    mode = targetRunLoopMode_;
  }
  setFireDate(NSDate::date().dateByAddingTimeInterval(delay));
  if (queue) {
    applyToQueue(queue);
  } else {
    scheduleWithRunLoop(runLoop, mode);
  }
}

NSTimeInterval ZEBTimer::delayAfter(const NSDate& backgroundDate) const {
  if (backgroundingBehavior_ == ZEBTimerBackgroundingBehaviorReset) return timeInterval_;
  const NSTimeInterval overdue = backgroundDate.timeIntervalSinceDate(fireDate_);
  if (overdue < 0) return -overdue;
  // Deliberately not what is left until the next multiple of the interval.
  return timeInterval_ > 0 ? std::fmod(overdue, timeInterval_) : 0;
}

}  // namespace zeb
