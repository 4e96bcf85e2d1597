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

bool NSObject::releaseUnlessLast() const noexcept {
  std::uint32_t count = strongCount_.load(std::memory_order_relaxed);
  while (count > 1) {
    if (strongCount_.compare_exchange_weak(count, count - 1, std::memory_order_release,
                                           std::memory_order_relaxed)) {
      return true;
    }
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

}  // namespace zeb
