#include <Observation/ObjectiveCObserverQueue.h>
#include <Observation/PlainInitPrivate.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Runtime/Registration.h>

#include <utility>

namespace zeb {

ObjectiveCObserverQueue::ObjectiveCObserverQueue(Ref<ObserverQueue> observerQueue)
    : observerQueue_(std::move(observerQueue)) {
  if (!observerQueue_) raiseInvalidArgument("a bridged observer queue needs an observer queue");
}

Class* ObjectiveCObserverQueue::runtimeClass() {
  static Class* const cls = registerClass(
      "ZEBObserverQueue",
      {
          classMethod("initWithDispatchQueue:",
                      [](const dispatch_queue_t& queue) {
                        return makeRef<ObjectiveCObserverQueue>(queue);
                      }),
          property("observerQueue", &ObjectiveCObserverQueue::observerQueue),
          method("init", [](const Value&) { detail::stopForPlainInit("ObjectiveCObserverQueue"); }),
          classMethod("init", [] { detail::stopForPlainInit("ObjectiveCObserverQueue"); }),
          classMethod("new", [] { detail::stopForPlainInit("ObjectiveCObserverQueue"); }),
      });
  return cls;
}

}  // namespace zeb
