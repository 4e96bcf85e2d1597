#pragma once

#include <Dispatch/WorkItem.h>
#include <Foundation/NSArray.h>
#include <RunLoop/RunLoopModesPrivate.h>

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
  /// Releases the block without a call.
  static void drop(WorkItem& item) noexcept {
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
