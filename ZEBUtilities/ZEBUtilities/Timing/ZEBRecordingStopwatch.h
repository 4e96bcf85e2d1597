#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <chrono>
#include <cstddef>
#include <vector>

namespace zeb {

/// Adds up how long blocks take to run, under a name, for performance logs. The process knows all that are
/// alive. Any thread; the sums are kept on a serial queue of the background's quality of service.
class ZEBRecordingStopwatch final : public NSObject {
 public:
  /// Runs of less than `shortestRecordable` seconds are not recorded. From `tooSlowMinimumCount` recorded
  /// runs on, an average of `tooSlow` seconds or more is too slow; 0 seconds: it never is.
  explicit ZEBRecordingStopwatch(const NSString& name, double shortestRecordable = 0,
                                 double tooSlow = 0, std::size_t tooSlowMinimumCount = 0);
  ZEBRecordingStopwatch(const NSString& name, std::chrono::duration<double> shortestRecordable,
                        std::chrono::duration<double> tooSlow = {},
                        std::size_t tooSlowMinimumCount = 0)
      : ZEBRecordingStopwatch(name, shortestRecordable.count(), tooSlow.count(),
                              tooSlowMinimumCount) {}

  /// "ZEBRecordingStopwatch", with everything here by its selectors; the initialisers are class methods
  /// there, and blocks travel as Runtime/BlockConversion.h says.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  const NSString& name() const noexcept { return name_; }
  double shortestRecordable() const noexcept { return shortestRecordable_; }
  double tooSlow() const noexcept { return tooSlow_; }
  std::size_t tooSlowMinimumCount() const noexcept { return tooSlowMinimumCount_; }

  /// Runs the block on this thread and records its time a little later: a reading made right afterwards may
  /// not know of it yet. A run that ends by an exception is not recorded. Nil: nothing.
  void runBlock(FunctionView<void()> block);
  /// The same; a nil stopwatch records nothing.
  static void runBlock(FunctionView<void()> block, const Ref<ZEBRecordingStopwatch>& stopwatch);

  /// Seconds.
  double total() const;
  std::size_t count() const;
  /// Seconds; 0 without any run.
  double average() const;

  /// Those that are alive, oldest first.
  static std::vector<Ref<ZEBRecordingStopwatch>> recordingStopwatches();
  /// Those of them that are too slow.
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
