#pragma once

namespace zeb::detail {

/// Base of records that state what a thread is doing while they live, for example which queue's
/// block it runs. `Frame` derives from FrameStack<Frame>, and each such class has its own stack of
/// frames in each thread.
///
/// Lifetime: frames are local variables, so that they end in the reverse order of their beginnings.
/// Size: one pointer. Cost: two thread-local accesses.
/// Other threads cannot find a thread's frames. A thread that passes a pointer to a frame on must
/// keep the frame alive and order the accesses. Do not keep a frame across the suspension of a
/// coroutine.
template <class Frame>
class FrameStack {
 public:
  FrameStack(const FrameStack&) = delete;
  FrameStack& operator=(const FrameStack&) = delete;

  /// The calling thread's innermost frame, or null.
  static const Frame* innermost() noexcept { return static_cast<const Frame*>(top); }
  /// The frame around this one on the same thread, or null.
  const Frame* outer() const noexcept { return static_cast<const Frame*>(outer_); }

 protected:
  FrameStack() noexcept { top = this; }
  ~FrameStack() { top = outer_; }

 private:
  static inline constinit thread_local const FrameStack* top = nullptr;

  const FrameStack* const outer_ = top;
};

}  // namespace zeb::detail
