#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/TypeName.h>
#include <ZEBPlatform/Memory/detail/ObjectExtras.h>

#include <algorithm>
#include <cstdio>

namespace zeb {

namespace {

/// The count of a dying object: so high that its destructor may take references to it for a while
/// without deleting it again.
constexpr std::uint32_t beingDestroyed = std::uint32_t{1} << 30;

}  // namespace

namespace detail {

ObjectExtras& ObjectExtras::of(const NSObject& object) {
  if (ObjectExtras* existing = ifAny(object)) return *existing;
  ObjectExtras* fresh = new ObjectExtras(object);
  ObjectExtras* expected = nullptr;
  if (object.extras_.compare_exchange_strong(expected, fresh, std::memory_order_acq_rel))
    return *fresh;
  delete fresh;
  return *expected;
}

Ref<NSObject> ObjectExtras::lock() noexcept {
  const LockGuard guard(lock_);
  const NSObject* object = object_.load(std::memory_order_relaxed);
  if (!object || !object->retainUnlessDying()) return nullptr;
  return Ref<NSObject>::adopt(const_cast<NSObject*>(object));
}

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

NSObject& ObjectExtras::setObserversOnce(Ref<NSObject> fresh) noexcept {
  NSObject* existing = nullptr;
  if (!observers_.compare_exchange_strong(existing, fresh.get(), std::memory_order_acq_rel)) {
    return *existing;
  }
  return *fresh.leak();
}

void ObjectExtras::objectIsDying() noexcept {
  const LockGuard guard(lock_);
  object_.store(nullptr, std::memory_order_release);
}

void ObjectExtras::objectIsGone() noexcept {
  (void)Ref<NSObject>::adopt(observers_.exchange(nullptr, std::memory_order_acq_rel));
  {
    std::vector<std::pair<const void*, Ref<NSObject>>> associations;
    const LockGuard guard(lock_);
    associations.swap(associations_);
  }
  release();
}

}  // namespace detail

NSObject::~NSObject() {
  if (detail::ObjectExtras* extras = extras_.load(std::memory_order_acquire)) {
    extras->objectIsDying();
    extras->objectIsGone();
  }
}

void NSObject::release() const noexcept {
  if (strongCount_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  // Weak references are cut before any destructor runs, so that they never lead to a half-destroyed
  // object.
  if (detail::ObjectExtras* extras = extras_.load(std::memory_order_acquire))
    extras->objectIsDying();
  strongCount_.store(beingDestroyed, std::memory_order_relaxed);
  delete this;
}

bool NSObject::retainUnlessDying() const noexcept {
  std::uint32_t count = strongCount_.load(std::memory_order_relaxed);
  while (count != 0 && count < beingDestroyed) {
    if (strongCount_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
      return true;
  }
  return false;
}

std::size_t NSObject::hash() const noexcept { return reinterpret_cast<std::uintptr_t>(this) >> 4; }

std::string NSObject::className() const {
  const std::string name = typeName(typeid(*this));
  const std::size_t arguments = std::min(name.find('<'), name.size());
  const std::size_t lastColon = name.rfind(':', arguments);
  return lastColon == std::string::npos ? name : name.substr(lastColon + 1);
}

std::string NSObject::description() const {
  char address[2 + 2 * sizeof(void*) + 1];
  std::snprintf(address, sizeof address, "%p", static_cast<const void*>(this));
  std::string text = "<";
  text += className();
  text += ": ";
  text += address;
  text += '>';
  return text;
}

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
