#include <ZEBPlatform/Linux/detail/EventDescriptor.h>

#include <sys/eventfd.h>
#include <unistd.h>

namespace zeb {

EventDescriptor::EventDescriptor() noexcept : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

EventDescriptor::~EventDescriptor() {
  if (descriptor_ >= 0) close(descriptor_);
}

void EventDescriptor::signal() noexcept { eventfd_write(descriptor_, 1); }

}  // namespace zeb
