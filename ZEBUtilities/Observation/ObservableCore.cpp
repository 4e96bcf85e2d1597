#include <Observation/ObjectiveCTypeErasedObservable.h>
#include <Observation/ObservableCore.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Memory/TypeName.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>

#include <vector>

namespace zeb {

namespace detail {

namespace {

std::string dynamicTypeName(const Value& value) {
  if (const NSObject* object = value.objectPointer()) return typeName(typeid(*object));
  const Class* itsClass = object_getClass(value);
  return itsClass ? itsClass->name() : "nil";
}

}  // namespace

// Observers. ---------------------------------------------------------------------------------------

ObserverCore::ObserverCore(Ref<ObservableCore> observable)
    : observable_(std::move(observable)), weakObservable_(observable_) {}

ObserverCore::~ObserverCore() {
  if (const Ref<ObservableCore> observable = weakObservable_.lock()) {
    observable->unregisterObserver(hashValue());
  }
}

void ObserverCore::releaseSource(Ref<ObserverCore> sourceObserver) noexcept {
  // The releases that wait for the one that goes on on this thread; null while there is none. The link lies in
  // the token, which belongs to one derived observable only, so that releasing needs no memory.
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

/// Deliveries that are on their way share the set; whoever changes it meanwhile copies it. Members are found by
/// their position, which is the same in a copy.
class ObservableCore::ObserverSet final : public NSObject {
 public:
  /// This set, or a copy of it if somebody else can see it.
  static Ref<ObserverSet> forChange(const Ref<ObserverSet>& set) {
    if (set->isUniquelyReferenced()) return set;
    auto copy = makeRef<ObserverSet>();
    copy->members_ = set->members_;
    return copy;
  }

  /// Answers the position.
  std::size_t insert(const Ref<ObserverCore>& observer) {
    members_.push_back({observer->hashValue(), observer});
    return members_.size() - 1;
  }
  /// The last member moves to the position; answers its hash value.
  std::intptr_t erase(std::size_t position) {
    const std::intptr_t moved = members_.back().hashValue;
    members_[position] = std::move(members_.back());
    members_.pop_back();
    return moved;
  }
  void deliver(const Ref<NSObject>& boxedValue) const {
    for (const Member& member : members_) {
      if (const Ref<ObserverCore> observer = member.observer.lock()) observer->receive(boxedValue);
    }
  }

 private:
  struct Member {
    std::intptr_t hashValue;
    WeakRef<ObserverCore> observer;
  };
  std::vector<Member> members_;
};

// Observables. -------------------------------------------------------------------------------------

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
  for (const auto& [key, entry] : observersMap_) {
    dispatch_async(entry.queue->queue(),
                   [observers = entry.observers, value = value_] { observers->deliver(value); });
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
  QueueEntry& entry = observersMap_[queue.get()];
  if (!entry.queue) entry = {queue, makeRef<ObserverSet>()};
  entry.observers = ObserverSet::forChange(entry.observers);
  const std::size_t position = entry.observers->insert(observer);
  allObservers_.try_emplace(observer->hashValue(), WeakObserverWrapper{observer, queue, position});
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
  const auto found = allObservers_.find(observerHashValue);
  if (found == allObservers_.end()) return;
  const WeakObserverWrapper removed = std::move(found->second);
  allObservers_.erase(found);
  if (const Ref<ObserverCore> observer = removed.observer.lock()) observer->observable_ = nullptr;
  QueueEntry& entry = observersMap_.at(removed.observerQueue.get());
  entry.observers = ObserverSet::forChange(entry.observers);
  const std::intptr_t moved = entry.observers->erase(removed.position);
  if (moved != observerHashValue) allObservers_.at(moved).position = removed.position;
}

// The bridge. --------------------------------------------------------------------------------------

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
