#pragma once

#include <Observation/AnyObjectiveCThrowingObservable.h>
#include <Observation/ObserverQueue.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Memory/detail/ObserverIndex.h>

#include <cstdint>
#include <string>
#include <typeinfo>
#include <unordered_map>
#include <utility>

namespace zeb {
class ObjectiveCTypeErasedObservable;
}

/// What observables and observers of all element types have in common. Behind Observable.h.
namespace zeb::detail {

class ObservableCore;

class ObserverCore : public NSObject {
 public:
  std::intptr_t hashValue() const noexcept { return reinterpret_cast<std::intptr_t>(this); }
  bool operator==(const ObserverCore& other) const noexcept { return this == &other; }

  /// Releases the token by which a derived observable holds its source, which may be derived itself
  /// and die with it: chains of any length are released one after the other, not one within the
  /// other.
  static void releaseSource(Ref<ObserverCore> sourceObserver) noexcept;

 protected:
  explicit ObserverCore(Ref<ObservableCore> observable);
  /// Unregisters.
  ~ObserverCore() override;

 private:
  friend class ObservableCore;

  /// With an `ObservedValue` of the element type.
  virtual void receive(const Ref<NSObject>& boxedValue) = 0;

  Ref<ObservableCore> observable_;  ///< cleared on the observable's queue
  const WeakRef<ObservableCore> weakObservable_;
  ObserverCore* nextToRelease_ = nullptr;  ///< of a derived observable that has died
};

class ObservableCore : public AnyObjectiveCThrowingObservable {
 public:
  std::intptr_t hashValue() const noexcept { return reinterpret_cast<std::intptr_t>(this); }
  bool operator==(const ObservableCore& other) const noexcept { return this == &other; }

  /// This observable for callers of the dynamic runtime.
  Ref<ObjectiveCTypeErasedObservable> objectiveCBridgedObservable();

  using AnyObjectiveCThrowingObservable::addObserver;
  [[nodiscard]] Ref<NSObject> addObserver(ObjectUpdate update) final;
  [[nodiscard]] Ref<NSObject> addObserver(const dispatch_queue_t& queue, ObjectUpdate update) final;

 protected:
  ObservableCore(Ref<NSObject> boxedValue, Block<void(std::intptr_t)> deinitEvent);
  ~ObservableCore() override;

  void pushBoxed(Ref<NSObject> boxedValue);
  /// A nil queue means the shared main one.
  void registerObserver(Ref<ObserverCore> observer, const Ref<ObserverQueue>& queue);
  void unregisterObserver(std::intptr_t observerHashValue);
  [[noreturn]] static void raiseTypeMismatch(const std::type_info& expected, const Value& observer);

 private:
  friend class ObserverCore;
  class Entry;
  /// The observers that are called on one queue; kept for good, even if no observer is left.
  struct QueueEntry {
    Ref<ObserverQueue> queue;
    ObserverList<Entry> observers;
  };

  // To be called on the observable's queue.
  void setValue(Ref<NSObject> boxedValue);
  void insert(const Ref<ObserverCore>& observer, const Ref<ObserverQueue>& queue);
  void erase(std::intptr_t observerHashValue);

  const dispatch_queue_t observableQueue_;
  const Block<void(std::intptr_t)> deinitEvent_;
  // To be used on that queue only.
  Ref<NSObject> value_;
  std::unordered_map<const ObserverQueue*, QueueEntry> observersMap_;
  ObserverIndex<Entry> allObservers_;  ///< by the observer's address, also if it has died
};

}  // namespace zeb::detail
