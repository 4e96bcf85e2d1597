#pragma once

#include <Observation/ObserverQueue.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>

namespace zeb {

/// What the bridge to the dynamic runtime needs of an observable whose element type it does not know.
class AnyObjectiveCThrowingObservable : public NSObject {
 public:
  using ObjectUpdate = Block<void(const Value& value)>;

  /// Calls the block with every value, converted to an object. The token is an `Observer<T>`.
  virtual Ref<NSObject> addObserver(ObjectUpdate update) = 0;
  virtual Ref<NSObject> addObserver(const Ref<ObserverQueue>& queue, ObjectUpdate update) = 0;
  virtual Ref<NSObject> addObserver(const dispatch_queue_t& queue, ObjectUpdate update) = 0;
  /// What is no `Observer<T>` throws NSException (ZEBObservableTypeException).
  virtual void removeObserver(const Value& observer) = 0;
};

}  // namespace zeb
