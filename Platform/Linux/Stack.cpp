#include <Linux/Stack.h>

#include <pthread.h>

#include <cstdint>

namespace zeb {

namespace {

std::uintptr_t findLowestAddress() noexcept {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return 0;
  void* lowest = nullptr;
  std::size_t size = 0;
  pthread_attr_getstack(&attributes, &lowest, &size);
  std::size_t guard = 0;
  pthread_attr_getguardsize(&attributes, &guard);
  pthread_attr_destroy(&attributes);
  return reinterpret_cast<std::uintptr_t>(lowest) + guard;
}

}  // namespace

std::size_t remainingStack() noexcept {
  thread_local const std::uintptr_t lowest = findLowestAddress();
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  return here > lowest ? here - lowest : 0;
}

}  // namespace zeb
