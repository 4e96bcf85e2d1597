#include <ZEBPlatform/Linux/detail/Stack.h>

#include <pthread.h>

#include <cstdint>

namespace zeb {

namespace {

struct Bounds {
  std::uintptr_t lowest = 0;
  std::uintptr_t highest = 0;
};

Bounds findBounds() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return {};
  void* lowest = nullptr;
  std::size_t size = 0;
  std::size_t guard = 0;
  pthread_attr_getstack(&attributes, &lowest, &size);
  pthread_attr_getguardsize(&attributes, &guard);
  pthread_attr_destroy(&attributes);
  const auto start = reinterpret_cast<std::uintptr_t>(lowest);
  return {start + guard, start + size};
}

}  // namespace

std::size_t remainingStack() noexcept {
  thread_local const Bounds bounds = findBounds();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  // A stack that the application made itself, for a coroutine for example, has no known bounds.
  if (here < bounds.lowest || here >= bounds.highest) return SIZE_MAX;
  return here - bounds.lowest;
}

}  // namespace zeb
