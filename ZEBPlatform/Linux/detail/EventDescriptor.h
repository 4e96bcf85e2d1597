#pragma once

namespace zeb {

/// A file descriptor with which one thread wakes another one that waits for it in a `PollSet`. The
/// object owns the descriptor.
class EventDescriptor {
 public:
  EventDescriptor() noexcept;
  EventDescriptor(const EventDescriptor&) = delete;
  EventDescriptor& operator=(const EventDescriptor&) = delete;
  ~EventDescriptor();

  /// Negative if the process had no descriptor left; the object must not be used then.
  int descriptor() const noexcept { return descriptor_; }

  /// Makes the descriptor readable for ever. Each call counts as a change for those who watch for
  /// changes. Any thread.
  void signal() noexcept;

 private:
  const int descriptor_;
};

}  // namespace zeb
