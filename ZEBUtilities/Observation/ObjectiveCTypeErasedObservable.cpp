#include <Observation/ObjectiveCTypeErasedObservable.h>
#include <Observation/PlainInitPrivate.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Runtime/Registration.h>

#include <utility>

namespace zeb {

const char* const ZEBObservableTypeException = "ZEBObservableTypeException";

Class* ObjectiveCTypeErasedObservable::runtimeClass() {
  using Self = ObjectiveCTypeErasedObservable;
  static Class* const cls = registerClass(
      "ZEBObservable",
      {
          method("addObserverWithUpdate:", &Self::addObserverWithUpdate),
          method("addObserverWithDispatchQueue:update:", &Self::addObserverWithDispatchQueue),
          method("addObserverWithObserverQueue:update:", &Self::addObserverWithObserverQueue),
          method("removeObserver:", &Self::removeObserver),
          method("init",
                 [](const Value&) { detail::stopForPlainInit("ObjectiveCTypeErasedObservable"); }),
          classMethod("init", [] { detail::stopForPlainInit("ObjectiveCTypeErasedObservable"); }),
          classMethod("new", [] { detail::stopForPlainInit("ObjectiveCTypeErasedObservable"); }),
      });
  return cls;
}

ObjectiveCTypeErasedObservable::ObjectiveCTypeErasedObservable(
    Ref<AnyObjectiveCThrowingObservable> observable)
    : observable_(std::move(observable)) {
  if (!observable_) raiseInvalidArgument("a bridged observable needs an observable");
}

Ref<NSObject> ObjectiveCTypeErasedObservable::addObserverWithUpdate(Update update) {
  return observable_->addObserver(std::move(update));
}

Ref<NSObject> ObjectiveCTypeErasedObservable::addObserverWithDispatchQueue(
    const dispatch_queue_t& queue, Update update) {
  return observable_->addObserver(queue, std::move(update));
}

Ref<NSObject> ObjectiveCTypeErasedObservable::addObserverWithObserverQueue(
    const Ref<ObjectiveCObserverQueue>& queue, Update update) {
  return observable_->addObserver(queue ? queue->observerQueue() : ObserverQueue::mainQueue(),
                                  std::move(update));
}

void ObjectiveCTypeErasedObservable::removeObserver(const Value& observer) {
  observable_->removeObserver(observer);
}

}  // namespace zeb
