#include <Observation/ObjectiveCObserverQueue.h>
#include <Observation/ObserverQueue.h>
#include <ZEBPlatform/Foundation/NSException.h>

#include <utility>

namespace zeb {

ObserverQueue::ObserverQueue(dispatch_queue_t dispatchQueue) : queue_(std::move(dispatchQueue)) {
  if (!queue_) raiseInvalidArgument("an observer queue needs a dispatch queue");
}

const Ref<ObserverQueue>& ObserverQueue::mainQueue() {
  // Never destroyed: observers may be made while the process ends.
  static const auto* queue =
      new Ref<ObserverQueue>(makeRef<ObserverQueue>(dispatch_get_main_queue()));
  return *queue;
}

Ref<ObjectiveCObserverQueue> ObserverQueue::objectiveCObserverQueue() const {
  return makeRef<ObjectiveCObserverQueue>(Ref(const_cast<ObserverQueue*>(this)));
}

}  // namespace zeb
