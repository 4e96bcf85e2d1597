#pragma once

namespace zeb {

/// A file descriptor for one thread to wake another that waits for it in a `PollSet`. Closed with the object.
class EventDescriptor {
 public:
  EventDescriptor() noexcept;
  EventDescriptor(const EventDescriptor&) = delete;
  EventDescriptor& operator=(const EventDescriptor&) = delete;
  ~EventDescriptor();

  /// Negative when the process had no descriptor left: then the object is of no use.
  int descriptor() const noexcept { return descriptor_; }

  /// Makes it readable, which it stays; whoever watches for changes sees one with each call. Any thread.
  void signal() noexcept;

 private:
  const int descriptor_;
};

}  // namespace zeb
