#pragma once

#include <new>
#include <utility>

namespace zeb::detail {

/// A static object whose destructor never runs, because threads and static destructors may use it
/// until the process has ended:
///
///     static NeverDestroyed<Registry> registry;
///     registry->add(…);
///
/// As a static variable of a function it is made at the first use, once, whatever threads use it.
/// Size: that of the object; there is no allocation. Leak checkers see what it refers to as
/// reachable.
/// Do not use it for members and local variables, whose resources it would leak.
template <class T>
class NeverDestroyed {
 public:
  template <class... Arguments>
  explicit NeverDestroyed(Arguments&&... arguments) {
    new (storage_) T(std::forward<Arguments>(arguments)...);
  }
  NeverDestroyed(const NeverDestroyed&) = delete;
  NeverDestroyed& operator=(const NeverDestroyed&) = delete;

  T& operator*() noexcept { return *std::launder(reinterpret_cast<T*>(storage_)); }
  T* operator->() noexcept { return &**this; }
  const T& operator*() const noexcept {
    return *std::launder(reinterpret_cast<const T*>(storage_));
  }
  const T* operator->() const noexcept { return &**this; }

 private:
  alignas(T) unsigned char storage_[sizeof(T)];
};

}  // namespace zeb::detail
