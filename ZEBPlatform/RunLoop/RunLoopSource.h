#pragma once

#include <ZEBPlatform/Memory/detail/ItemBlock.h>
#include <ZEBPlatform/RunLoop/RunLoopItem.h>

#include <utility>

namespace zeb {

/// Work that a run loop does whenever somebody asks for it, and an input that keeps the loop running
/// meanwhile. Asking several times before the loop gets to it counts once.
class RunLoopSource final : public RunLoopItem {
 public:
  explicit RunLoopSource(Block<void()> perform) : perform_(std::move(perform)) {}

  /// Has the block called once on the loop's thread, as soon as the loop runs in one of the source's modes.
  /// If it is in no loop yet, then when it is added to one. Any thread, also from its own block.
  void signal();

 private:
  friend class detail::RunLoopCore;
  friend class detail::RunLoopModes;

  /// Whether a pass of its loop has something to do.
  bool shallPerform() const noexcept { return isSignalled_.load() && !isPerforming_; }
  /// Calls the block if it shall be called; answers whether.
  bool perform() noexcept;
  void leave(detail::RunLoopCore& core) noexcept override;
  void releaseBlock() noexcept override { perform_.release(); }

  std::atomic<bool> isSignalled_{false};
  bool isPerforming_ = false;  ///< the loop's thread only
  detail::ItemBlock<void()> perform_;
};

}  // namespace zeb
