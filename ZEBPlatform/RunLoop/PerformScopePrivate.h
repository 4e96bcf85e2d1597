#pragma once

#include <ZEBPlatform/Concurrency/detail/WorkItem.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <atomic>
#include <utility>

namespace zeb::detail {

/// Where a posted block may run, and what it can be cancelled by. Goes with one item as its runner; an item
/// without is for the default mode.
class PerformScope final : public WorkRunner {
 public:
  PerformScope(const NSArray& modes, const void* target) : modes_(modes.copy()), target_(target) {}

  static bool allows(const WorkItem& item, const RunLoopMode& mode) noexcept {
    const auto* const scope = static_cast<PerformScope*>(item.runner);
    return scope ? scope->includes(mode) : mode.isDefault;
  }
  static bool hasTarget(const WorkItem& item, const void* target) noexcept {
    const auto* const scope = static_cast<PerformScope*>(item.runner);
    return scope && scope->target_ == target;
  }

  static void run(WorkItem& item) noexcept {
    if (item.runner) {
      item.runner->runItem(item);
    } else {
      item.run();
      item.dispose();
    }
  }
  /// Releases the block without a call. What dies with it may have further blocks dropped on this thread; these
  /// follow one after the other and not from within each other, for there may be many.
  static void drop(WorkItem& item) noexcept {
    static constinit thread_local WorkItem** postponed = nullptr;
    if (postponed) {
      item.next.store(std::exchange(*postponed, &item), std::memory_order_relaxed);
      return;
    }
    WorkItem* next = nullptr;
    postponed = &next;
    dropAtOnce(item);
    while (next) {
      WorkItem& dropped = *next;
      next = dropped.next.load(std::memory_order_relaxed);
      dropAtOnce(dropped);
    }
    postponed = nullptr;
  }
  /// The same, also while another block is being dropped: for one whose release somebody waits for.
  static void dropAtOnce(WorkItem& item) noexcept {
    delete static_cast<PerformScope*>(item.runner);
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
