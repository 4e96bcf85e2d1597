#include <ZEBUtilities/Timing/ZEBTimer.h>

#include <utility>

namespace zeb {

namespace {

NSDate dateAfter(NSTimeInterval interval) {
  return NSDate::date().dateByAddingTimeInterval(interval);
}

Ref<ZEBTimer> onCurrentRunLoop(Ref<ZEBTimer> timer) {
  timer->scheduleWithCurrentRunLoop();
  return timer;
}

Ref<ZEBTimer> onQueue(const dispatch_queue_t& queue, Ref<ZEBTimer> timer) {
  timer->applyToQueue(queue);
  return timer;
}

}  // namespace

Ref<ZEBTimer> ZEBTimer::timerWithTimeInterval(NSTimeInterval interval, const Ref<NSObject>& target,
                                              ZEBTimerAction selector, Value userInfo, bool repeats,
                                              ZEBTimerBackgroundingBehavior backgroundingBehavior) {
  return makeRef<ZEBTimer>(dateAfter(interval), interval, target, std::move(selector),
                           std::move(userInfo), repeats, backgroundingBehavior);
}

Ref<ZEBTimer> ZEBTimer::timerWithTimeInterval(NSTimeInterval interval, ZEBTimerBlock block,
                                              bool repeats,
                                              ZEBTimerBackgroundingBehavior backgroundingBehavior) {
  return makeRef<ZEBTimer>(dateAfter(interval), interval, std::move(block), repeats,
                           backgroundingBehavior);
}

Ref<ZEBTimer> ZEBTimer::scheduledTimerWithTimeInterval(
    NSTimeInterval interval, const Ref<NSObject>& target, ZEBTimerAction selector, Value userInfo,
    bool repeats, ZEBTimerBackgroundingBehavior backgroundingBehavior) {
  return onCurrentRunLoop(timerWithTimeInterval(
      interval, target, std::move(selector), std::move(userInfo), repeats, backgroundingBehavior));
}

Ref<ZEBTimer> ZEBTimer::scheduledTimerWithTimeInterval(
    NSTimeInterval interval, ZEBTimerBlock block, bool repeats,
    ZEBTimerBackgroundingBehavior backgroundingBehavior) {
  return onCurrentRunLoop(
      timerWithTimeInterval(interval, std::move(block), repeats, backgroundingBehavior));
}

Ref<ZEBTimer> ZEBTimer::queuedTimerOnQueue(const dispatch_queue_t& queue, NSTimeInterval interval,
                                           const Ref<NSObject>& target, ZEBTimerAction selector,
                                           Value userInfo, bool repeats,
                                           ZEBTimerBackgroundingBehavior backgroundingBehavior) {
  return onQueue(queue, timerWithTimeInterval(interval, target, std::move(selector),
                                              std::move(userInfo), repeats, backgroundingBehavior));
}

Ref<ZEBTimer> ZEBTimer::queuedTimerOnQueue(const dispatch_queue_t& queue, NSTimeInterval interval,
                                           ZEBTimerBlock block, bool repeats,
                                           ZEBTimerBackgroundingBehavior backgroundingBehavior) {
  return onQueue(queue,
                 timerWithTimeInterval(interval, std::move(block), repeats, backgroundingBehavior));
}

}  // namespace zeb
