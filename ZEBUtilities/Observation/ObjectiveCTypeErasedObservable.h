#pragma once

#include <Observation/AnyObjectiveCThrowingObservable.h>
#include <Observation/ObjectiveCObserverQueue.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>

namespace zeb {

/// Name of the exception that a token of the wrong type raises.
extern const char* const ZEBObservableTypeException;

/// An observable of any element type for callers of the dynamic runtime, where the class is named
/// "ZEBObservable". Made by `Observable<T>::objectiveCBridgedObservable`. Blocks get values as
/// objects. Any thread.
///
/// Methods there: addObserverWithUpdate:, addObserverWithDispatchQueue:update:,
/// addObserverWithObserverQueue:update:, removeObserver:. "init" and "new" stop the process.
class ObjectiveCTypeErasedObservable final : public NSObject {
 public:
  using Update = AnyObjectiveCThrowingObservable::ObjectUpdate;

  ObjectiveCTypeErasedObservable() = delete;
  /// A nil observable throws NSException (NSInvalidArgumentException).
  explicit ObjectiveCTypeErasedObservable(Ref<AnyObjectiveCThrowingObservable> observable);

  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Calls the block on the main queue until the answered token is dropped or removed.
  [[nodiscard]] Ref<NSObject> addObserverWithUpdate(Update update);
  /// The same on a dispatch queue, as an observer queue of its own. A nil queue throws NSException
  /// (NSInvalidArgumentException).
  [[nodiscard]] Ref<NSObject> addObserverWithDispatchQueue(const dispatch_queue_t& queue,
                                                           Update update);
  /// The same on an observer queue; nil means the main one.
  [[nodiscard]] Ref<NSObject> addObserverWithObserverQueue(
      const Ref<ObjectiveCObserverQueue>& queue, Update update);

  /// An object that is not a token of this element type, nil included, throws NSException
  /// (ZEBObservableTypeException) that names both types. A token that is not registered here does
  /// nothing.
  void removeObserver(const Value& observer);

 private:
  const Ref<AnyObjectiveCThrowingObservable> observable_;
};

using ZEBObservable = ObjectiveCTypeErasedObservable;

}  // namespace zeb
