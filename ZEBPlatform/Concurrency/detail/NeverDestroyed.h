#pragma once

#include <new>
#include <utility>

namespace zeb::detail {

/// Storage for a static object whose destructor never runs, because threads and static destructors may
/// use it until the process has ended:
///
///     static NeverDestroyed<Registry> registry;
///     registry->add(…);
///
/// It needs no allocation. Leak checkers see what the object refers to as reachable.
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
