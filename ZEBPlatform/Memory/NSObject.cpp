#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/TypeName.h>
#include <ZEBPlatform/Memory/detail/ObjectExtras.h>

#include <algorithm>
#include <cstdio>

namespace zeb {

namespace {

/// What stands in an object whose extras have its count. Threads that found the count here just
/// before may still add and subtract one each, which leaves the highest bit as it is.
constexpr std::uint32_t countIsInExtras = std::uint32_t{3} << 30;

}  // namespace

namespace detail {

ObjectExtras& ObjectExtras::of(const NSObject& object) {
  ObjectExtras* extras = ifAny(object);
  if (!extras) {
    ObjectExtras* fresh = new ObjectExtras;
    if (object.extras_.compare_exchange_strong(extras, fresh, std::memory_order_acq_rel)) {
      extras = fresh;
    } else {
      delete fresh;
    }
  }
  if (!NSObject::isInExtras(object.strongCount_.load(std::memory_order_acquire))) {
    extras->takeCount(object);
  }
  return *extras;
}

/// Takes the count from the object. The caller has a reference or is the destructor, so that the
/// count is not zero. The lock keeps a second thread from storing an old count over the taken one.
void ObjectExtras::takeCount(const NSObject& object) noexcept {
  const LockGuard guard(lock_);
  std::uint32_t count = object.strongCount_.load(std::memory_order_acquire);
  while (!NSObject::isInExtras(count)) {
    strongCount_.store(count, std::memory_order_relaxed);
    if (object.strongCount_.compare_exchange_weak(count, countIsInExtras,
                                                  std::memory_order_acq_rel))
      return;
  }
}

NSObject& ObjectExtras::setObserversOnce(Ref<NSObject> fresh) noexcept {
  NSObject* existing = nullptr;
  if (!observers_.compare_exchange_strong(existing, fresh.get(), std::memory_order_acq_rel)) {
    return *existing;
  }
  return *fresh.leak();
}

}  // namespace detail

NSObject::~NSObject() {
  if (detail::ObjectExtras* extras = extras_.load(std::memory_order_acquire)) {
    extras->objectIsGone();
  }
}

/// The extras of an object whose count says that they have it. Reads the count once more, because
/// that makes what its mover wrote visible.
detail::ObjectExtras& NSObject::extrasWithCount() const noexcept {
  (void)strongCount_.load(std::memory_order_acquire);
  return *extras_.load(std::memory_order_relaxed);
}

void NSObject::retainInExtras() const noexcept {
  extrasWithCount().strongCount_.fetch_add(1, std::memory_order_relaxed);
}

// A count of zero is final: weak references find it and answer nil before any destructor runs, so
// that they never lead to a half-destroyed object.

inline void NSObject::releaseInExtras() const noexcept {
  std::atomic<std::uint32_t>& strongCount = extrasWithCount().strongCount_;
  if (strongCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  strongCount.store(detail::ObjectExtras::beingDestroyed, std::memory_order_relaxed);
  delete this;
}

void NSObject::release() const noexcept {
  if (!isInExtras(strongCount_.load(std::memory_order_relaxed))) {
    const std::uint32_t count = strongCount_.fetch_sub(1, std::memory_order_acq_rel);
    if (!isInExtras(count)) {
      if (count == 1) releaseOnlyReference();
      return;
    }
  }
  releaseInExtras();
}

void NSObject::releaseOnlyReference() const noexcept {
  strongCount_.store(detail::ObjectExtras::beingDestroyed, std::memory_order_relaxed);
  delete this;
}

bool NSObject::retainUnlessDying() const noexcept {
  std::uint32_t count = strongCount_.load(std::memory_order_relaxed);
  while (!isInExtras(count)) {
    if (!detail::ObjectExtras::isAlive(count)) return false;
    if (strongCount_.compare_exchange_weak(count, count + 1, std::memory_order_relaxed))
      return true;
  }
  return extrasWithCount().retainObject();
}

bool NSObject::releaseUnlessLast() const noexcept {
  std::atomic<std::uint32_t>* strongCount = &strongCount_;
  std::uint32_t count = strongCount->load(std::memory_order_relaxed);
  do {
    if (strongCount == &strongCount_ && isInExtras(count)) {
      strongCount = &extrasWithCount().strongCount_;
      count = strongCount->load(std::memory_order_relaxed);
    }
    if (count <= 1) return false;
  } while (!strongCount->compare_exchange_weak(count, count - 1, std::memory_order_release,
                                               std::memory_order_relaxed));
  return true;
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
