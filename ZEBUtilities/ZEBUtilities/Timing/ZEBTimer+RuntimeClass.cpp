#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Timing/ZEBTimer.h>

namespace zeb {

namespace {

// The factory functions, each with or without the backgrounding behaviour as its last argument.

using Target = Ref<NSObject>;
using Behavior = ZEBTimerBackgroundingBehavior;

template <class... OptionalBehavior>
Ref<ZEBTimer> timer(NSTimeInterval interval, const Target& target, SEL selector,
                    const Value& userInfo, bool repeats, OptionalBehavior... behavior) {
  return ZEBTimer::timerWithTimeInterval(interval, target, selector, userInfo, repeats,
                                         behavior...);
}

template <class... OptionalBehavior>
Ref<ZEBTimer> blockTimer(NSTimeInterval interval, const ZEBTimerBlock& block, bool repeats,
                         OptionalBehavior... behavior) {
  return ZEBTimer::timerWithTimeInterval(interval, block, repeats, behavior...);
}

template <class... OptionalBehavior>
Ref<ZEBTimer> scheduledTimer(NSTimeInterval interval, const Target& target, SEL selector,
                             const Value& userInfo, bool repeats, OptionalBehavior... behavior) {
  return ZEBTimer::scheduledTimerWithTimeInterval(interval, target, selector, userInfo, repeats,
                                                  behavior...);
}

template <class... OptionalBehavior>
Ref<ZEBTimer> scheduledBlockTimer(NSTimeInterval interval, const ZEBTimerBlock& block, bool repeats,
                                  OptionalBehavior... behavior) {
  return ZEBTimer::scheduledTimerWithTimeInterval(interval, block, repeats, behavior...);
}

template <class... OptionalBehavior>
Ref<ZEBTimer> queuedTimer(const dispatch_queue_t& queue, NSTimeInterval interval,
                          const Target& target, SEL selector, const Value& userInfo, bool repeats,
                          OptionalBehavior... behavior) {
  return ZEBTimer::queuedTimerOnQueue(queue, interval, target, selector, userInfo, repeats,
                                      behavior...);
}

template <class... OptionalBehavior>
Ref<ZEBTimer> queuedBlockTimer(const dispatch_queue_t& queue, NSTimeInterval interval,
                               const ZEBTimerBlock& block, bool repeats,
                               OptionalBehavior... behavior) {
  return ZEBTimer::queuedTimerOnQueue(queue, interval, block, repeats, behavior...);
}

// The initialisers, as class methods.

Ref<ZEBTimer> initialised(const NSDate& fireDate, NSTimeInterval interval, const Target& target,
                          SEL selector, const Value& userInfo, const ZEBTimerBlock& block,
                          bool repeats, Behavior behavior) {
  return makeRef<ZEBTimer>(fireDate, interval, target, selector, userInfo, block, repeats,
                           behavior);
}

Ref<ZEBTimer> initialisedWithTarget(const NSDate& fireDate, NSTimeInterval interval,
                                    const Target& target, SEL selector, const Value& userInfo,
                                    bool repeats, Behavior behavior) {
  return makeRef<ZEBTimer>(fireDate, interval, target, selector, userInfo, repeats, behavior);
}

Ref<ZEBTimer> initialisedWithBlock(const NSDate& fireDate, NSTimeInterval interval,
                                   const ZEBTimerBlock& block, bool repeats, Behavior behavior) {
  return makeRef<ZEBTimer>(fireDate, interval, block, repeats, behavior);
}

}  // namespace

Class* ZEBTimer::runtimeClass() {
  static Class* const cls = registerClass(
      "ZEBTimer",
      {
          classMethod("initWithFireDate:interval:target:selector:userInfo:block:repeats:"
                      "backgroundingBehavior:",
                      &initialised),
          classMethod("initWithFireDate:interval:target:selector:userInfo:repeats:"
                      "backgroundingBehavior:",
                      &initialisedWithTarget),
          classMethod("initWithFireDate:interval:block:repeats:backgroundingBehavior:",
                      &initialisedWithBlock),
          classMethod("timerWithTimeInterval:target:selector:userInfo:repeats:", &timer<>),
          classMethod("timerWithTimeInterval:target:selector:userInfo:repeats:"
                      "backgroundingBehavior:",
                      &timer<Behavior>),
          classMethod("timerWithTimeInterval:block:repeats:", &blockTimer<>),
          classMethod("timerWithTimeInterval:block:repeats:backgroundingBehavior:",
                      &blockTimer<Behavior>),
          classMethod("scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:",
                      &scheduledTimer<>),
          classMethod("scheduledTimerWithTimeInterval:target:selector:userInfo:repeats:"
                      "backgroundingBehavior:",
                      &scheduledTimer<Behavior>),
          classMethod("scheduledTimerWithTimeInterval:block:repeats:", &scheduledBlockTimer<>),
          classMethod("scheduledTimerWithTimeInterval:block:repeats:backgroundingBehavior:",
                      &scheduledBlockTimer<Behavior>),
          classMethod("queuedTimerOnQueue:withTimeInterval:target:selector:userInfo:repeats:",
                      &queuedTimer<>),
          classMethod("queuedTimerOnQueue:withTimeInterval:target:selector:userInfo:repeats:"
                      "backgroundingBehavior:",
                      &queuedTimer<Behavior>),
          classMethod("queuedTimerOnQueue:withTimeInterval:block:repeats:", &queuedBlockTimer<>),
          classMethod("queuedTimerOnQueue:withTimeInterval:block:repeats:backgroundingBehavior:",
                      &queuedBlockTimer<Behavior>),
          property("target", &ZEBTimer::target),
          property("selector", &ZEBTimer::selector),
          property("userInfo", &ZEBTimer::userInfo),
          property("block", &ZEBTimer::block, &ZEBTimer::setBlock),
          property("repeats", &ZEBTimer::repeats),
          property("timeInterval", &ZEBTimer::timeInterval),
          property("backgroundingBehavior", &ZEBTimer::backgroundingBehavior),
          property("fireDate", &ZEBTimer::fireDate, &ZEBTimer::setFireDate),
          property(
              "tolerance", &ZEBTimer::tolerance,
              [](ZEBTimer& timer, NSTimeInterval tolerance) { timer.setTolerance(tolerance); }),
          property("shouldSilenceLogging", &ZEBTimer::shouldSilenceLogging,
                   &ZEBTimer::setShouldSilenceLogging),
          property("backgroundDate", &ZEBTimer::backgroundDate, &ZEBTimer::setBackgroundDate),
          method("scheduleWithRunLoop:mode:", &ZEBTimer::scheduleWithRunLoop),
          method("scheduleWithCurrentRunLoop", &ZEBTimer::scheduleWithCurrentRunLoop),
          method("applyToQueue:", &ZEBTimer::applyToQueue),
          method("fire", &ZEBTimer::fire),
          method("invalidate", &ZEBTimer::invalidate),
          method("isValid", &ZEBTimer::isValid),
      });
  return cls;
}

}  // namespace zeb
