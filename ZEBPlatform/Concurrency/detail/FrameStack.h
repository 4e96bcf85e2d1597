#pragma once

namespace zeb::detail {

/// A frame of a per-thread stack that notes what the thread is doing while the frame lives, such as which
/// queue's block it runs. `Frame` derives from FrameStack<Frame>. Frames lie on the thread's own stack and
/// must end in the reverse order of their beginnings, which C++ scopes guarantee.
///
/// Other threads can't see a thread's frames unless it hands them out.
template <class Frame>
class FrameStack {
 public:
  FrameStack(const FrameStack&) = delete;
  FrameStack& operator=(const FrameStack&) = delete;

  /// The calling thread's innermost frame, or null.
  static const Frame* innermost() noexcept { return static_cast<const Frame*>(top); }

 protected:
  FrameStack() noexcept { top = this; }
  ~FrameStack() { top = outer_; }

 private:
  static inline constinit thread_local const FrameStack* top = nullptr;

  const FrameStack* const outer_ = top;
};

}  // namespace zeb::detail
