#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <utility>
#include <vector>

namespace zeb::detail {

/// What an object has beyond its class, made on first need: the control block of its weak
/// references and its associated objects. Outlives the object for as long as a weak reference
/// points here.
class ObjectExtras {
 public:
  static ObjectExtras& of(const NSObject& object);
  static ObjectExtras* ifAny(const NSObject& object) noexcept {
    return object.extras_.load(std::memory_order_acquire);
  }

  void retain() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  /// A strong reference to the object, or nil once its last release has begun.
  Ref<NSObject> lock() noexcept;
  /// Whether `lock()` would have found the object just now.
  bool isObjectAlive() const noexcept { return object_.load(std::memory_order_acquire) != nullptr; }

  void setAssociated(const void* key, Ref<NSObject> associated);
  Ref<NSObject> associated(const void* key);
  Ref<NSObject> takeAssociated(const void* key, bool (*isWanted)(const NSObject& associated));

  /// The observers of the object's properties: one more associated object, found without a lock.
  NSObject* observers() const noexcept { return observers_.load(std::memory_order_acquire); }
  /// Sets it if there is none yet; answers the one that is there now.
  NSObject& setObserversOnce(Ref<NSObject> fresh) noexcept;

  /// Called when no strong reference is left: from here on `lock()` answers nil.
  void objectIsDying() noexcept;
  /// Called by the root destructor: drops the associated objects and the object's own reference.
  void objectIsGone() noexcept;

 private:
  explicit ObjectExtras(const NSObject& object) noexcept : object_(&object) {}
  ~ObjectExtras() = default;

  std::atomic<std::uint32_t> count_{1};
  std::atomic<NSObject*> observers_{nullptr};
  Lock lock_;
  std::atomic<const NSObject*> object_;  ///< changed with the lock held
  std::vector<std::pair<const void*, Ref<NSObject>>> associations_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb::detail
