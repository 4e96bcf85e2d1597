#include <ZEBPlatform/Memory/detail/ObjectExtras.h>

#include <utility>

namespace zeb {

namespace detail {

void ObjectExtras::setAssociated(const void* key, Ref<NSObject> associated) {
  Ref<NSObject> old;  // released after the lock: its destructor may come back here
  const LockGuard guard(lock_);
  for (auto entry = associations_.begin(); entry != associations_.end(); ++entry) {
    if (entry->first != key) continue;
    old = std::move(entry->second);
    if (associated) {
      entry->second = std::move(associated);
    } else {
      associations_.erase(entry);
    }
    return;
  }
  if (associated) associations_.emplace_back(key, std::move(associated));
}

Ref<NSObject> ObjectExtras::associated(const void* key) {
  const LockGuard guard(lock_);
  for (const auto& [candidate, object] : associations_) {
    if (candidate == key) return object;
  }
  return nullptr;
}

Ref<NSObject> ObjectExtras::takeAssociated(const void* key,
                                           bool (*isWanted)(const NSObject& associated)) {
  const LockGuard guard(lock_);
  for (auto entry = associations_.begin(); entry != associations_.end(); ++entry) {
    if (entry->first != key) continue;
    if (!isWanted(*entry->second)) return nullptr;
    Ref<NSObject> taken = std::move(entry->second);
    associations_.erase(entry);
    return taken;
  }
  return nullptr;
}

/// Releases the associated objects while their owner is being destroyed: the root destructor calls
/// this, after the destructors of the owner's own class. No lock is held meanwhile. Cuts the weak
/// references of an owner that no release destroys, because its constructor threw.
void ObjectExtras::objectIsGone() noexcept {
  strongCount_.store(beingDestroyed, std::memory_order_relaxed);
  (void)Ref<NSObject>::adopt(observers_.exchange(nullptr, std::memory_order_acq_rel));
  {
    std::vector<std::pair<const void*, Ref<NSObject>>> associations;
    const LockGuard guard(lock_);
    associations.swap(associations_);
  }
  release();
}

}  // namespace detail

void setAssociatedObject(const NSObject& owner, const void* key, Ref<NSObject> associated) {
  detail::ObjectExtras::of(owner).setAssociated(key, std::move(associated));
}

Ref<NSObject> associatedObject(const NSObject& owner, const void* key) {
  detail::ObjectExtras* extras = detail::ObjectExtras::ifAny(owner);
  return extras ? extras->associated(key) : nullptr;
}

Ref<NSObject> takeAssociatedObject(const NSObject& owner, const void* key,
                                   bool (*isWanted)(const NSObject& associated)) {
  detail::ObjectExtras* extras = detail::ObjectExtras::ifAny(owner);
  return extras ? extras->takeAssociated(key, isWanted) : nullptr;
}

}  // namespace zeb
