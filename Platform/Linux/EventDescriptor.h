#pragma once

namespace zeb {

/// A file descriptor for one thread to wake another that waits for it in a `PollSet`. Closed with the object.
class EventDescriptor {
 public:
  /// Stops the process when the system has no more descriptors.
  EventDescriptor();
  EventDescriptor(const EventDescriptor&) = delete;
  EventDescriptor& operator=(const EventDescriptor&) = delete;
  ~EventDescriptor();

  int descriptor() const noexcept { return descriptor_; }

  /// Makes it readable, which it stays; whoever watches for changes sees one with each call. Any thread.
  void signal() noexcept;

 private:
  int descriptor_;
};

}  // namespace zeb
