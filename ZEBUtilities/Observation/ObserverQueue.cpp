#include <Observation/ObjectiveCObserverQueue.h>
#include <Observation/ObserverQueue.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSException.h>

#include <utility>

namespace zeb {

ObserverQueue::ObserverQueue(dispatch_queue_t dispatchQueue) : queue_(std::move(dispatchQueue)) {
  if (!queue_) raiseInvalidArgument("an observer queue needs a dispatch queue");
}

const Ref<ObserverQueue>& ObserverQueue::mainQueue() {
  // Observers may be made while the process ends.
  static const detail::NeverDestroyed<Ref<ObserverQueue>> queue(
      makeRef<ObserverQueue>(dispatch_get_main_queue()));
  return *queue;
}

Ref<ObjectiveCObserverQueue> ObserverQueue::objectiveCObserverQueue() const {
  return makeRef<ObjectiveCObserverQueue>(Ref(const_cast<ObserverQueue*>(this)));
}

}  // namespace zeb
