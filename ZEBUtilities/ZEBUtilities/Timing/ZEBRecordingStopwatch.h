#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <chrono>
#include <cstddef>
#include <vector>

namespace zeb {

/// Adds up the running times of blocks under a name, for performance logs. All existing stopwatches
/// can be listed. May be used from any thread; the sums are kept on a serial queue with background
/// quality of service.
class ZEBRecordingStopwatch final : public NSObject {
 public:
  /// Runs of less than `shortestRecordable` seconds are not recorded. The stopwatch counts as too
  /// slow when it has recorded at least `tooSlowMinimumCount` runs with an average of at least
  /// `tooSlow` seconds. With 0 for `tooSlow` it never does.
  explicit ZEBRecordingStopwatch(const NSString& name, double shortestRecordable = 0,
                                 double tooSlow = 0, std::size_t tooSlowMinimumCount = 0);
  ZEBRecordingStopwatch(const NSString& name, std::chrono::duration<double> shortestRecordable,
                        std::chrono::duration<double> tooSlow = {},
                        std::size_t tooSlowMinimumCount = 0)
      : ZEBRecordingStopwatch(name, shortestRecordable.count(), tooSlow.count(),
                              tooSlowMinimumCount) {}

  /// Registered as "ZEBRecordingStopwatch", with all functions here under their selectors. The
  /// initialisers are class methods there, and blocks are passed as described in
  /// Runtime/BlockConversion.h.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  const NSString& name() const noexcept { return name_; }
  double shortestRecordable() const noexcept { return shortestRecordable_; }
  double tooSlow() const noexcept { return tooSlow_; }
  std::size_t tooSlowMinimumCount() const noexcept { return tooSlowMinimumCount_; }

  /// Runs the block on this thread. Records its time asynchronously, so that a reading right
  /// afterwards may not include it yet. A run that ends with an exception is not recorded. A nil
  /// block does nothing.
  void runBlock(FunctionView<void()> block);
  /// The same for an optional stopwatch. With a nil stopwatch, runs the block without recording.
  static void runBlock(FunctionView<void()> block, const Ref<ZEBRecordingStopwatch>& stopwatch);

  /// Seconds.
  double total() const;
  std::size_t count() const;
  /// Seconds; 0 before the first recorded run.
  double average() const;

  /// All existing stopwatches, oldest first.
  static std::vector<Ref<ZEBRecordingStopwatch>> recordingStopwatches();
  /// All existing stopwatches that are too slow.
  static std::vector<Ref<ZEBRecordingStopwatch>> tooSlowRecordingStopwatches();

  std::string description() const override;

 private:
  struct Sums {
    double total = 0;
    std::size_t count = 0;
    double average() const noexcept { return count == 0 ? 0 : total / static_cast<double>(count); }
  };
  Sums sums() const;

  const NSString name_;
  const double shortestRecordable_;
  const double tooSlow_;
  const std::size_t tooSlowMinimumCount_;
  Sums sums_;  ///< on the recording queue only
};

}  // namespace zeb
