#pragma once

#include <ZEBPlatform/Concurrency/detail/FrameStack.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>

namespace zeb::detail {

/// Records that the thread runs a block of a queue while the frame lives, so that a block that
/// waits for its own queue is detected.
class QueueFrame : public FrameStack<QueueFrame> {
 public:
  enum class Access { shared, exclusive };

  QueueFrame(const DispatchQueue& queue, Access access) noexcept
      : QueueFrame(queue, access, innermost()) {}
  /// For a block that runs for another thread, which waits meanwhile and whose frames are
  /// `waiters`.
  QueueFrame(const DispatchQueue& queue, Access access, const QueueFrame* waiters) noexcept
      : queue_(queue), access_(access), waiters_(waiters) {}

  /// The innermost frame of the queue among those of the calling thread and of the threads that
  /// wait for it, or null.
  static const QueueFrame* find(const DispatchQueue& queue) noexcept {
    const QueueFrame* frame = innermost();
    while (frame && &frame->queue_ != &queue) frame = frame->waiters_;
    return frame;
  }

  Access access() const noexcept { return access_; }

 private:
  const DispatchQueue& queue_;
  const Access access_;
  const QueueFrame* const waiters_;
};

/// Stops the process, because `function` was called from a block of the queue that it would wait
/// for.
[[noreturn]] void reportDeadlock(const char* function, const DispatchQueue& queue) noexcept;

}  // namespace zeb::detail
