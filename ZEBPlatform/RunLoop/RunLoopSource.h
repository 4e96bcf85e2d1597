#pragma once

#include <ZEBPlatform/RunLoop/RunLoopItem.h>

#include <utility>

namespace zeb {

/// Work that a run loop does whenever it is signalled, and an input that keeps the loop running
/// until then. Several signals before the loop handles the first one count once.
class RunLoopSource final : public detail::CallingRunLoopItem<> {
 public:
  explicit RunLoopSource(Block<void()> perform)
      : CallingRunLoopItem(Kind::source, 0, std::move(perform)) {}

  /// Makes the loop call the block once on its thread, as soon as it runs in one of the source's
  /// modes. A signal before the source is added to a loop counts when it is added. Any thread, also
  /// from the source's own block.
  void signal();

 private:
  friend class detail::RunLoopCore;
  friend class detail::RunLoopModes;

  /// Whether a pass of its loop would call the block.
  bool isPending() const noexcept { return isSignalled_.load() && !isCalling(); }
  /// Calls the block if it is pending. Whether it was called.
  bool perform() noexcept { return !isCalling() && isSignalled_.exchange(false) && call(); }

  std::atomic<bool> isSignalled_{false};
};

}  // namespace zeb
