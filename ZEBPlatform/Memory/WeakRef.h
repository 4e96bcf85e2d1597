#pragma once

#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/detail/ObjectExtras.h>

namespace zeb {

/// Zeroing weak reference: names an object without keeping it alive.
///
/// `lock()` answers a strong reference or nil, and is safe against a last release that races with
/// it on another thread: it never hands out an object whose destruction has begun. One `WeakRef`
/// must not be assigned on one thread while another uses it.
template <class T>
class WeakRef {
 public:
  WeakRef() noexcept = default;
  WeakRef(std::nullptr_t) noexcept {}
  explicit WeakRef(T* object)
      : extras_(object ? &detail::ObjectExtras::of(*object) : nullptr), object_(object) {}
  WeakRef(const Ref<T>& object) : WeakRef(object.get()) {}

  Ref<T> lock() const noexcept {
    return extras_ && extras_->retainObject() ? Ref<T>::adopt(object_) : nullptr;
  }

  /// Whether the object has not begun to die. It may do so right afterwards: to use it, `lock()`
  /// it.
  bool isAlive() const noexcept { return extras_ && extras_->isObjectAlive(); }

  /// Whether it never named an object. A `WeakRef` whose object has died is not empty.
  bool isEmpty() const noexcept { return !extras_; }

 private:
  Ref<detail::ObjectExtras> extras_;
  T* object_ = nullptr;
};

}  // namespace zeb
