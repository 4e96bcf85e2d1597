#pragma once

#include <ZEBUtilities/Timing/ZEBStopwatch.h>

#include "Table.h"

namespace zeb::timeline {

/// The steps of a run, the time that each took and the number of bytes by which the heap grew. Each
/// step runs once, so the times are those of a cold start.
class Steps {
 public:
  void start();
  /// Ends the step that `start` began; `bytes` is the size of its document.
  void finish(const NSString& name, std::size_t bytes);
  /// Adds a remark to the latest step.
  void remark(const NSString& text) { steps_.back().remark = text; }

  void print(std::ostream& out, const Screen& screen) const;

 private:
  struct Step {
    NSString name;
    double seconds;
    std::size_t bytes;
    double heapGrowth;
    NSString remark;
  };

  Ref<ZEBStopwatch> stopwatch_ = makeRef<ZEBStopwatch>();
  double heapBefore_ = 0;
  std::vector<Step> steps_;
};

}  // namespace zeb::timeline
