#pragma once

#include <Observation/ObserverQueue.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>

namespace zeb {

/// The interface by which the bridge to the dynamic runtime uses an observable of unknown element
/// type.
class AnyObjectiveCThrowingObservable : public NSObject {
 public:
  using ObjectUpdate = Block<void(const Value& value)>;

  /// Calls the block with every value, converted to an object, while the token is kept. The token
  /// is an `Observer<T>`.
  [[nodiscard]] virtual Ref<NSObject> addObserver(ObjectUpdate update) = 0;
  [[nodiscard]] virtual Ref<NSObject> addObserver(const Ref<ObserverQueue>& queue,
                                                  ObjectUpdate update) = 0;
  [[nodiscard]] virtual Ref<NSObject> addObserver(const dispatch_queue_t& queue,
                                                  ObjectUpdate update) = 0;
  /// An object that is not an `Observer<T>` throws NSException (ZEBObservableTypeException).
  virtual void removeObserver(const Value& observer) = 0;
};

}  // namespace zeb
