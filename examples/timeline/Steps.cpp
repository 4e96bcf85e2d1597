#include "Steps.h"

#include <ZEBPlatform/Foundation/Format.h>
#include <malloc.h>

namespace zeb::timeline {

namespace {

/// In bytes.
double heapInUse() {
  const struct mallinfo2 heap = mallinfo2();
  return static_cast<double>(heap.uordblks + heap.hblkhd);
}

}  // namespace

void Steps::start() {
  heapBefore_ = heapInUse();
  stopwatch_->timeInterval();  // ends the previous lap, which is not used
}

void Steps::finish(const NSString& name, std::size_t bytes) {
  const double seconds = stopwatch_->timeInterval();
  steps_.push_back({name, seconds, bytes, heapInUse() - heapBefore_, ""});
}

void Steps::print(std::ostream& out, const Screen& screen) const {
  Table table({{"STEP"},
               {"ms", 12, true},
               {"KB", 12, true},
               {"MB/s", 8, true},
               {"KB of heap", 12, true},
               {"", screen.width - 54}});
  for (const Step& step : steps_) {
    const auto bytes = static_cast<double>(step.bytes);
    table.addRow({{{step.name}},
                  {{NSString::stringWithFormat("%.3f", step.seconds * 1e3)}},
                  {{NSString::stringWithFormat("%.1f", bytes / 1e3)}},
                  {{NSString::stringWithFormat("%.0f", bytes / 1e6 / step.seconds)}},
                  {{NSString::stringWithFormat("%+.1f", step.heapGrowth / 1e3)}},
                  {{step.remark, faint}}});
  }
  table.print(out, screen);
}

}  // namespace zeb::timeline
