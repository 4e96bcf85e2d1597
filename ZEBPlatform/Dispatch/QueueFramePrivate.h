#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>

namespace zeb::detail {

/// Notes on a thread's stack which queue's block it is running, for as long as it lives; innermost
/// first. So a block that waits for its own queue is found out.
class QueueFrame {
 public:
  enum class Access { shared, exclusive };

  QueueFrame(const DispatchQueue& queue, Access access) noexcept
      : QueueFrame(queue, access, innermost) {}
  /// On behalf of another thread, which waits meanwhile with these frames.
  QueueFrame(const DispatchQueue& queue, Access access, const QueueFrame* outer) noexcept
      : queue_(queue), access_(access), outer_(outer), previous_(innermost) {
    innermost = this;
  }
  QueueFrame(const QueueFrame&) = delete;
  QueueFrame& operator=(const QueueFrame&) = delete;
  ~QueueFrame() { innermost = previous_; }

  /// The calling thread's innermost frame of that queue, or null.
  static const QueueFrame* find(const DispatchQueue& queue) noexcept {
    const QueueFrame* frame = innermost;
    while (frame && &frame->queue_ != &queue) frame = frame->outer_;
    return frame;
  }
  static const QueueFrame* current() noexcept { return innermost; }

  Access access() const noexcept { return access_; }

 private:
  static inline constinit thread_local const QueueFrame* innermost = nullptr;

  const DispatchQueue& queue_;
  const Access access_;
  const QueueFrame* const outer_;
  const QueueFrame* const previous_;
};

/// Stops the process: `function` was called from a block of the queue that it would wait for.
[[noreturn]] void reportDeadlock(const char* function, const DispatchQueue& queue) noexcept;

}  // namespace zeb::detail
