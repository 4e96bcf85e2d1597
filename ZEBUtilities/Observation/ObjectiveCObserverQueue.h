#pragma once

#include <Observation/ObserverQueue.h>

namespace zeb {

/// An `ObserverQueue` for callers of the dynamic runtime, where the class is named
/// "ZEBObserverQueue". Its class method initWithDispatchQueue: makes one, observerQueue is a
/// property; "init" and "new" stop the process.
class ObjectiveCObserverQueue final : public NSObject {
 public:
  ObjectiveCObserverQueue() = delete;
  /// A new observer queue on the dispatch queue, or a given one; nil throws NSException
  /// (NSInvalidArgumentException).
  explicit ObjectiveCObserverQueue(const dispatch_queue_t& dispatchQueue)
      : ObjectiveCObserverQueue(makeRef<ObserverQueue>(dispatchQueue)) {}
  explicit ObjectiveCObserverQueue(Ref<ObserverQueue> observerQueue);

  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  const Ref<ObserverQueue>& observerQueue() const noexcept { return observerQueue_; }

 private:
  const Ref<ObserverQueue> observerQueue_;
};

using ZEBObserverQueue = ObjectiveCObserverQueue;

}  // namespace zeb
