#pragma once

#include <cstddef>
#include <initializer_list>
#include <string_view>  // for std::hash, lighter than <functional>
#include <type_traits>
#include <utility>

namespace zeb {

/// Strong, nullable reference to an object that counts its own references (`NSObject` and whatever
/// else offers `retain()` and `release()`).
///
/// Copying retains, destroying releases; the object dies with its last `Ref`. A `Ref` itself is as
/// thread-safe as a raw pointer: different threads need different `Ref`s, which may name the same
/// object. Dereferencing a nil `Ref` is a programming error.
template <class T>
class Ref {
 public:
  constexpr Ref() noexcept = default;
  constexpr Ref(std::nullptr_t) noexcept {}

  /// Shares an object that already has an owner: adds a reference.
  explicit Ref(T* object) noexcept : object_(object) {
    if (object_) object_->retain();
  }

  Ref(const Ref& other) noexcept : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

  template <class U>
    requires std::is_convertible_v<U*, T*>
  Ref(const Ref<U>& other) noexcept : Ref(static_cast<T*>(other.get())) {}

  template <class U>
    requires std::is_convertible_v<U*, T*>
  Ref(Ref<U>&& other) noexcept : object_(other.leak()) {}

  ~Ref() {
    if (object_) object_->release();
  }

  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  /// Takes over a reference that the caller owns, without adding one.
  static Ref adopt(T* object) noexcept {
    Ref result;
    result.object_ = object;
    return result;
  }

  /// Gives the owned reference away: the caller now has to release it.
  [[nodiscard]] T* leak() noexcept { return std::exchange(object_, nullptr); }

  T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// Identity, not equality.
  template <class U>
  bool operator==(const Ref<U>& other) const noexcept {
    return object_ == other.get();
  }
  bool operator==(std::nullptr_t) const noexcept { return object_ == nullptr; }

 private:
  T* object_ = nullptr;
};

}  // namespace zeb

/// References as keys of tables: by identity, as they compare.
template <class T>
struct std::hash<zeb::Ref<T>> {
  std::size_t operator()(const zeb::Ref<T>& reference) const noexcept {
    return std::hash<T*>()(reference.get());
  }
};

namespace zeb {

/// Makes an object that is owned by the returned reference alone.
template <class T, class... Arguments>
[[nodiscard]] Ref<T> makeRef(Arguments&&... arguments) {
  return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

/// The same with a list in braces as the first argument, whose type could not be deduced otherwise.
template <class T, class Element, class... Arguments>
[[nodiscard]] Ref<T> makeRef(std::initializer_list<Element> list, Arguments&&... arguments) {
  return Ref<T>::adopt(new T(list, std::forward<Arguments>(arguments)...));
}

}  // namespace zeb
