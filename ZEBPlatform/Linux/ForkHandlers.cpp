#include <ZEBPlatform/Linux/detail/ForkHandlers.h>

#include <pthread.h>

namespace zeb {

int callAroundForks(void (*before)(), void (*inParent)(), void (*inChild)()) noexcept {
  return pthread_atfork(before, inParent, inChild);
}

}  // namespace zeb
