#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Memory/detail/ObserverIndex.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Timing/ZEBRecordingStopwatch.h>
#include <ZEBUtilities/Timing/ZEBStopwatch.h>

namespace zeb {

namespace {

struct Entry final : detail::ObserverEntry {
  explicit Entry(ZEBRecordingStopwatch& itsStopwatch) : stopwatch(&itsStopwatch) {}
  bool isDead() const noexcept { return !stopwatch.isAlive(); }
  const WeakRef<ZEBRecordingStopwatch> stopwatch;
};

struct Recording {
  const dispatch_queue_t queue =
      dispatch_queue_create(std::string(ZEBUtilitiesIdentifierPrefix) + ".ZEBRecordingStopwatch",
                            DispatchQueueKind::serial, QOS_CLASS_BACKGROUND);
  // To be used on the queue only. Entries own nothing of a user and may be released there.
  detail::ObserverList<Entry> registry;
  detail::ObserverIndex<Entry> index;
};

Recording& recording() {
  // Blocks may be timed while the process ends.
  static detail::NeverDestroyed<Recording> recording;
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
    if (all.index.isRemovalDue()) {
      for (Entry* dead : all.index.deadEntries()) {
        all.index.remove(*dead);
        (void)all.registry.remove(*dead);
      }
    }
    const auto entry = makeRef<Entry>(*this);
    all.index.reserve(entry.get());
    (void)all.registry.add(entry);
    all.index.add(entry.get(), *entry);
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
    for (const Ref<Entry>& entry : recording().registry.snapshot()) {
      alive.push_back(entry->stopwatch.lock());
    }
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
