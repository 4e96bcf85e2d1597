#include <Observation/ObjectiveCTypeErasedObservable.h>
#include <Observation/ObservableCore.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Memory/TypeName.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>

namespace zeb {

namespace detail {

namespace {

std::string dynamicTypeName(const Value& value) {
  if (const NSObject* object = value.objectPointer()) return typeName(typeid(*object));
  const Class* itsClass = object_getClass(value);
  return itsClass ? itsClass->name() : "nil";
}

}  // namespace

// Observers. --------------------------------------------------------------------------------------

ObserverCore::ObserverCore(Ref<ObservableCore> observable)
    : observable_(std::move(observable)), weakObservable_(observable_) {}

ObserverCore::~ObserverCore() {
  if (const Ref<ObservableCore> observable = weakObservable_.lock()) {
    observable->unregisterObserver(hashValue());
  }
}

void ObserverCore::releaseSource(Ref<ObserverCore> sourceObserver) noexcept {
  // The releases that wait for the one under way on this thread; null while none is under way. The
  // link lies in the token, which belongs to one derived observable only, so that releasing needs
  // no memory.
  static thread_local ObserverCore** waiting = nullptr;
  if (!sourceObserver) return;
  if (waiting) {
    sourceObserver->nextToRelease_ = *waiting;
    *waiting = sourceObserver.leak();
    return;
  }
  ObserverCore* list = nullptr;
  waiting = &list;
  sourceObserver = nullptr;
  while (list) {
    const auto next = Ref<ObserverCore>::adopt(list);
    list = next->nextToRelease_;
  }
  waiting = nullptr;
}

class ObservableCore::Entry final : public ObserverEntry {
 public:
  Entry(const Ref<ObserverCore>& itsObserver, QueueEntry& itsQueue)
      : observer(itsObserver), queue(itsQueue) {}

  const WeakRef<ObserverCore> observer;
  QueueEntry& queue;
};

// Observables. ------------------------------------------------------------------------------------

ObservableCore::ObservableCore(Ref<NSObject> boxedValue, Block<void(std::intptr_t)> deinitEvent)
    : observableQueue_(dispatch_queue_create(std::string(ZEBUtilitiesIdentifierPrefix) +
                                             ".zebutilities.observablequeue")),
      deinitEvent_(std::move(deinitEvent)),
      value_(std::move(boxedValue)) {}

ObservableCore::~ObservableCore() {
  if (deinitEvent_) deinitEvent_(hashValue());
}

void ObservableCore::pushBoxed(Ref<NSObject> boxedValue) {
  dispatch_async(observableQueue_,
                 [weakSelf = WeakRef(this), boxedValue = std::move(boxedValue)]() mutable {
                   const Ref<ObservableCore> self = weakSelf.lock();
                   if (self) self->setValue(std::move(boxedValue));
                 });
}

void ObservableCore::setValue(Ref<NSObject> boxedValue) {
  value_ = std::move(boxedValue);
  for (auto& [key, entry] : observersMap_) {
    // The value goes to exactly those that are registered now, so gaps are closed and later
    // removals do not count. Entries own nothing of a user.
    (void)entry.observers.closeGaps();
    dispatch_async(entry.queue->queue(), [observers = entry.observers.snapshot(), value = value_] {
      for (const Ref<Entry>& each : observers) {
        if (const Ref<ObserverCore> observer = each->observer.lock()) observer->receive(value);
      }
    });
  }
}

void ObservableCore::registerObserver(Ref<ObserverCore> observer, const Ref<ObserverQueue>& queue) {
  dispatch_async(observableQueue_, [weakSelf = WeakRef(this), observer = std::move(observer),
                                    queue = queue ? queue : ObserverQueue::mainQueue()] {
    const Ref<ObservableCore> self = weakSelf.lock();
    if (self) self->insert(observer, queue);
  });
}

void ObservableCore::insert(const Ref<ObserverCore>& observer, const Ref<ObserverQueue>& queue) {
  QueueEntry& queueEntry = observersMap_[queue.get()];
  queueEntry.queue = queue;
  const auto entry = makeRef<Entry>(observer, queueEntry);
  allObservers_.reserve(observer.get());
  (void)queueEntry.observers.add(entry);
  allObservers_.add(observer.get(), *entry);
  if (!value_) return;
  // Holds the observer, so that it gets the current value even if its owner drops it meanwhile.
  dispatch_async(queue->queue(), [observer, value = value_] { observer->receive(value); });
}

void ObservableCore::unregisterObserver(std::intptr_t observerHashValue) {
  dispatch_async(observableQueue_, [weakSelf = WeakRef(this), observerHashValue] {
    const Ref<ObservableCore> self = weakSelf.lock();
    if (self) self->erase(observerHashValue);
  });
}

void ObservableCore::erase(std::intptr_t observerHashValue) {
  Entry* entry = allObservers_.newestOf(reinterpret_cast<const ObserverCore*>(observerHashValue));
  if (!entry) return;
  if (const Ref<ObserverCore> observer = entry->observer.lock()) observer->observable_ = nullptr;
  allObservers_.remove(*entry);
  (void)entry->queue.observers.remove(*entry);
}

// The bridge. -------------------------------------------------------------------------------------

Ref<ObjectiveCTypeErasedObservable> ObservableCore::objectiveCBridgedObservable() {
  return makeRef<ObjectiveCTypeErasedObservable>(Ref(this));
}

Ref<NSObject> ObservableCore::addObserver(ObjectUpdate update) {
  return addObserver(ObserverQueue::mainQueue(), std::move(update));
}

Ref<NSObject> ObservableCore::addObserver(const dispatch_queue_t& queue, ObjectUpdate update) {
  return addObserver(makeRef<ObserverQueue>(queue), std::move(update));
}

void ObservableCore::raiseTypeMismatch(const std::type_info& expected, const Value& observer) {
  throw NSException(ZEBObservableTypeException, "Mismatched observer type: expected " +
                                                    typeName(expected) + ", got " +
                                                    dynamicTypeName(observer));
}

}  // namespace detail

}  // namespace zeb
