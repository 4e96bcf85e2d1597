#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Timing/ZEBRecordingStopwatch.h>
#include <ZEBUtilities/Timing/ZEBStopwatch.h>

namespace zeb {

namespace {

/// Never destroyed: blocks may be timed while the process ends.
struct Recording {
  const dispatch_queue_t queue =
      dispatch_queue_create(std::string(ZEBUtilitiesIdentifierPrefix) + ".ZEBRecordingStopwatch",
                            DispatchQueueKind::serial, QOS_CLASS_BACKGROUND);
  // On the queue only:
  std::vector<WeakRef<ZEBRecordingStopwatch>> registry;
  std::size_t sizeToSweep = 16;  ///< when there are so many entries, dead ones are looked for
};

Recording& recording() {
  static auto* recording = new Recording;
  return *recording;
}

NSArray arrayOf(const std::vector<Ref<ZEBRecordingStopwatch>>& stopwatches) {
  NSMutableArray array;
  for (const Ref<ZEBRecordingStopwatch>& stopwatch : stopwatches) array.addObject(stopwatch);
  return array;
}

}  // namespace

ZEBRecordingStopwatch::ZEBRecordingStopwatch(const NSString& name, double shortestRecordable,
                                             double tooSlow, std::size_t tooSlowMinimumCount)
    : name_(name.copy()),
      shortestRecordable_(shortestRecordable),
      tooSlow_(tooSlow),
      tooSlowMinimumCount_(tooSlowMinimumCount) {
  Recording& all = recording();
  dispatch_sync(all.queue, [&] {
    // As many additions lie between two sweeps as the first one left over, so that each addition pays for a
    // constant number of looks.
    if (all.registry.size() >= all.sizeToSweep) {
      std::erase_if(all.registry, [](const auto& stopwatch) { return !stopwatch.isAlive(); });
      all.sizeToSweep = 2 * all.registry.size() + 16;
    }
    all.registry.emplace_back(this);
  });
}

void ZEBRecordingStopwatch::runBlock(FunctionView<void()> block) {
  if (!block) return;
  ZEBStopwatch watch;
  block();
  const double duration = watch.timeInterval();
  if (duration < shortestRecordable_) return;
  dispatch_async(recording().queue, [self = Ref(this), duration] {
    self->sums_.total += duration;
    ++self->sums_.count;
  });
}

void ZEBRecordingStopwatch::runBlock(FunctionView<void()> block,
                                     const Ref<ZEBRecordingStopwatch>& stopwatch) {
  if (stopwatch) {
    stopwatch->runBlock(block);
  } else if (block) {
    block();
  }
}

ZEBRecordingStopwatch::Sums ZEBRecordingStopwatch::sums() const {
  Sums sums;
  dispatch_sync(recording().queue, [&] { sums = sums_; });
  return sums;
}

double ZEBRecordingStopwatch::total() const { return sums().total; }

std::size_t ZEBRecordingStopwatch::count() const { return sums().count; }

double ZEBRecordingStopwatch::average() const { return sums().average(); }

std::vector<Ref<ZEBRecordingStopwatch>> ZEBRecordingStopwatch::recordingStopwatches() {
  std::vector<Ref<ZEBRecordingStopwatch>> alive;
  dispatch_sync(recording().queue, [&] {
    for (const auto& stopwatch : recording().registry) alive.push_back(stopwatch.lock());
  });
  std::erase(alive, nullptr);
  return alive;
}

std::vector<Ref<ZEBRecordingStopwatch>> ZEBRecordingStopwatch::tooSlowRecordingStopwatches() {
  auto stopwatches = recordingStopwatches();
  std::erase_if(stopwatches, [](const Ref<ZEBRecordingStopwatch>& stopwatch) {
    const Sums sums = stopwatch->sums();
    return !(stopwatch->tooSlow_ > 0 && sums.count >= stopwatch->tooSlowMinimumCount_ &&
             sums.average() >= stopwatch->tooSlow_);
  });
  return stopwatches;
}

std::string ZEBRecordingStopwatch::description() const {
  const Sums current = sums();
  const NSString suffix =
      tooSlow_ > 0 ? NSString::stringWithFormat(", too slow = %0.6f s", tooSlow_) : NSString("");
  return NSString::stringWithFormat("%@(name = \"%@\", count = %zd, average = %0.6f s%@)",
                                    NSObject::description(), name_, current.count,
                                    current.average(), suffix)
      .utf8();
}

Class* ZEBRecordingStopwatch::runtimeClass() {
  using Self = ZEBRecordingStopwatch;
  static Class* const cls = registerClass(
      "ZEBRecordingStopwatch",
      {
          classMethod("initWithName:", [](const NSString& name) { return makeRef<Self>(name); }),
          classMethod("initWithName:shortestRecordable:",
                      [](const NSString& name, double shortestRecordable) {
                        return makeRef<Self>(name, shortestRecordable);
                      }),
          classMethod("initWithName:shortestRecordable:tooSlow:tooSlowMinimumCount:",
                      [](const NSString& name, double shortestRecordable, double tooSlow,
                         std::size_t tooSlowMinimumCount) {
                        return makeRef<Self>(name, shortestRecordable, tooSlow,
                                             tooSlowMinimumCount);
                      }),
          classMethod("runBlock:withOptionalRecordingStopwatch:",
                      [](const Block<void()>& block, const Ref<Self>& stopwatch) {
                        Self::runBlock(block, stopwatch);
                      }),
          classMethod("recordingStopwatches", [] { return arrayOf(Self::recordingStopwatches()); }),
          classMethod("tooSlowRecordingStopwatches",
                      [] { return arrayOf(Self::tooSlowRecordingStopwatches()); }),
          property("name", &Self::name),
          property("shortestRecordable", &Self::shortestRecordable),
          property("tooSlow", &Self::tooSlow),
          property("tooSlowMinimumCount", &Self::tooSlowMinimumCount),
          method("runBlock:", [](Self& self, const Block<void()>& block) { self.runBlock(block); }),
          method("total", &Self::total),
          method("count", &Self::count),
          method("average", &Self::average),
      });
  return cls;
}

}  // namespace zeb
