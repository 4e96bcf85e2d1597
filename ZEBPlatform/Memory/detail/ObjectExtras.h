#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <utility>
#include <vector>

namespace zeb::detail {

/// What an object has beyond its class, made on first need: the count of its strong references, so
/// that weak references can be locked by one atomic operation, and its associated objects. Outlives
/// the object for as long as a weak reference points here.
class ObjectExtras {
 public:
  /// A count of strong references from which on the object is being destroyed: so high that the
  /// destructor may take references to the object for a while without deleting it again.
  static constexpr std::uint32_t beingDestroyed = std::uint32_t{1} << 30;

  static ObjectExtras& of(const NSObject& object);
  static ObjectExtras* ifAny(const NSObject& object) noexcept {
    return object.extras_.load(std::memory_order_acquire);
  }

  void retain() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
  void release() noexcept {
    if (count_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

  /// Adds a strong reference to the object and answers true, unless its last release has begun.
  bool retainObject() noexcept { return retainUnlessDying(strongCount_); }
  /// Whether `retainObject()` would have succeeded just now.
  bool isObjectAlive() const noexcept {
    return isAlive(strongCount_.load(std::memory_order_acquire));
  }

  void setAssociated(const void* key, Ref<NSObject> associated);
  Ref<NSObject> associated(const void* key);
  Ref<NSObject> takeAssociated(const void* key, bool (*isWanted)(const NSObject& associated));

  /// The observers of the object's properties: one more associated object, found without a lock.
  NSObject* observers() const noexcept { return observers_.load(std::memory_order_acquire); }
  /// Sets it if there is none yet; answers the one that is there now.
  NSObject& setObserversOnce(Ref<NSObject> fresh) noexcept;

  /// Called by the root destructor: cuts the weak references, and drops the associated objects and
  /// the object's own reference.
  void objectIsGone() noexcept;

 private:
  friend class zeb::NSObject;

  ObjectExtras() = default;
  ~ObjectExtras() = default;

  static constexpr bool isAlive(std::uint32_t strongCount) noexcept {
    return strongCount != 0 && strongCount < beingDestroyed;
  }
  static bool retainUnlessDying(std::atomic<std::uint32_t>& strongCount) noexcept {
    std::uint32_t count = strongCount.load(std::memory_order_relaxed);
    while (isAlive(count)) {
      if (strongCount.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
        return true;
    }
    return false;
  }
  void takeCount(const NSObject& object) noexcept;

  std::atomic<std::uint32_t> count_{1};
  std::atomic<std::uint32_t> strongCount_{0};  ///< of the object
  std::atomic<NSObject*> observers_{nullptr};
  Lock lock_;
  std::vector<std::pair<const void*, Ref<NSObject>>> associations_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb::detail
