#pragma once

#include <ZEBUtilities/Timing/ZEBStopwatch.h>

#include "Table.h"

namespace zeb::timeline {

/// What a run did, how long each step took and by how much it made the heap grow. Each step runs once,
/// so that times are those of a cold start.
class Steps {
 public:
  void start();
  /// Ends what `start` began; `bytes` is the size of the document that it worked on.
  void finish(const NSString& name, std::size_t bytes);
  /// Adds a word to the latest step.
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
