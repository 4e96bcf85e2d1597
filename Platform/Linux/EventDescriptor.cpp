#include <Linux/Console.h>
#include <Linux/EventDescriptor.h>

#include <sys/eventfd.h>
#include <unistd.h>

namespace zeb {

EventDescriptor::EventDescriptor() : descriptor_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
  if (descriptor_ < 0) fatal("No file descriptor is left to wake a thread with.");
}

EventDescriptor::~EventDescriptor() { close(descriptor_); }

void EventDescriptor::signal() noexcept { eventfd_write(descriptor_, 1); }

}  // namespace zeb
