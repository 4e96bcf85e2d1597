#pragma once

#include <ZEBPlatform/Concurrency/detail/CallGuard.h>
#include <ZEBPlatform/Concurrency/detail/WorkItem.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <atomic>
#include <utility>

namespace zeb::detail {

/// A block that was posted to a run loop: the modes in which it may run, and the target that it can
/// be cancelled by. It is the runner of one item; an item without one is for the default mode. An
/// exception that leaves the block ends the process, because `run` is noexcept.
class PostedBlock final : public WorkRunner {
 public:
  PostedBlock(const NSArray& modes, const void* target) : modes_(modes.copy()), target_(target) {}

  static bool allows(const WorkItem& item, const RunLoopMode& mode) noexcept {
    const auto* const block = static_cast<PostedBlock*>(item.runner);
    return block ? block->includes(mode) : mode.isDefault;
  }
  static bool hasTarget(const WorkItem& item, const void* target) noexcept {
    const auto* const block = static_cast<PostedBlock*>(item.runner);
    return block && block->target_ == target;
  }

  static void run(WorkItem& item) noexcept { runAndDispose(item); }
  /// Releases the block without a call. If its destruction drops further blocks on this thread,
  /// they are released one after the other, not recursively, because there may be many.
  static void drop(WorkItem& item) noexcept {
    static constinit thread_local WorkItem* postponed = nullptr;
    static constinit thread_local bool isDropping = false;
    const CallGuard guard(isDropping);
    if (!guard) {
      item.next.store(std::exchange(postponed, &item), std::memory_order_relaxed);
      return;
    }
    dropAtOnce(item);
    while (postponed) {
      WorkItem& dropped = *postponed;
      postponed = dropped.next.load(std::memory_order_relaxed);
      dropAtOnce(dropped);
    }
  }
  /// Releases it even while another block is being dropped, for a block whose release a thread
  /// awaits.
  static void dropAtOnce(WorkItem& item) noexcept {
    delete static_cast<PostedBlock*>(item.runner);
    item.discard();
    item.dispose();
  }

 private:
  void runItem(WorkItem& item) noexcept override {
    item.run();
    item.dispose();
    delete this;
  }

  bool includes(const RunLoopMode& mode) const noexcept {
    return modes_.containsObject(mode.name) ||
           (mode.isCommon && modes_.containsObject(NSRunLoopCommonModes));
  }

  const NSArray modes_;
  const void* const target_;
};

}  // namespace zeb::detail
