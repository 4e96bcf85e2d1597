#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Runtime/NSKeyValueObserving.h>

#include <atomic>

namespace zeb {

/// One observation of a key path of an object as a block. Observes from its making to its
/// destruction, except while it is suspended.
///
/// The block runs on the thread that makes the change; the dispatcher does no locking of its own,
/// so that suspending belongs to one thread at a time. A block that has begun on another thread
/// goes on.
///
/// Release the dispatcher before the object that it observes, or let it keep the object alive:
/// destroying one that is not suspended when its object is gone stops the process, with the reason
/// that `setSuspendDispatching` throws.
class ZEBKVODispatcher : public NSObject, public NSKeyValueObserver {
 public:
  /// `change` converts to the change dictionary (`const NSDictionary&`) and is valid during the
  /// call only.
  using DispatchBlock = Block<void(const NSString& keyPath, const Value& object,
                                   const KeyValueChange& change, void* context)>;

  ZEBKVODispatcher() = delete;
  /// Holds the object weakly. Without key path, object or block throws NSException
  /// (NSInvalidArgumentException, "Must provide keyPath, object and dispatchBlock").
  [[nodiscard]] static Ref<ZEBKVODispatcher> initToObserveValueForKeyPath_ofWeakObject(
      const NSString& keyPath, const Ref<NSObject>& object, NSKeyValueObservingOptions options,
      void* context, bool suspended, DispatchBlock dispatchBlock);
  /// The same, and keeps the object alive.
  [[nodiscard]] static Ref<ZEBKVODispatcher> initToObserveValueForKeyPath_ofObject(
      const NSString& keyPath, const Ref<NSObject>& object, NSKeyValueObservingOptions options,
      void* context, bool suspended, DispatchBlock dispatchBlock);
  ~ZEBKVODispatcher() override;

  /// "ZEBKVODispatcher", with everything here by its selectors; the initialisers are class methods
  /// there, blocks travel as Runtime/BlockConversion.h says, and a change as its dictionary.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  const NSString& keyPath() const noexcept { return keyPath_; }
  /// Nil when the object is held weakly only.
  const Ref<NSObject>& object() const noexcept { return object_; }
  /// Nil once the object is gone.
  Ref<NSObject> weakObject() const noexcept { return weakObject_.lock(); }
  const DispatchBlock& dispatchBlock() const noexcept { return dispatchBlock_; }
  NSKeyValueObservingOptions options() const noexcept { return options_; }
  void* context() const noexcept { return context_; }

  bool suspendDispatching() const noexcept { return suspendDispatching_; }
  /// Stops observing, or begins again; nothing when it is as it was. Suspending throws NSException
  /// (NSGenericException) when the object is gone; the dispatcher is suspended all the same. If
  /// resuming throws, because the key is unknown or the first call of the block fails, it stays
  /// suspended, so that it can be resumed later.
  void setSuspendDispatching(bool suspendDispatching);

  /// Throws NSException (NSInternalInconsistencyException) for a key path that is not the
  /// dispatcher's.
  void observeValueForKeyPath(const NSString& keyPath, const Value& object,
                              const KeyValueChange& change, void* context) override;

 private:
  ZEBKVODispatcher(const NSString& keyPath, const Ref<NSObject>& object,
                   NSKeyValueObservingOptions options, void* context, DispatchBlock dispatchBlock);

  /// False when the object is gone.
  bool stopObserving();
  NSString reasonForGoneObject() const;

  const NSString keyPath_;
  Ref<NSObject> object_;
  const WeakRef<NSObject> weakObject_;
  const DispatchBlock dispatchBlock_;
  std::atomic<bool> suspendDispatching_{true};
  const NSKeyValueObservingOptions options_;
  void* const context_;
};

}  // namespace zeb
