#pragma once

#include <ZEBPlatform/Memory/NSObject.h>

#include <chrono>

namespace zeb {

/// Measures the time since its start and between readings with the monotonic clock. Made with
/// `makeRef<ZEBStopwatch>()`. May be used by one thread at a time.
class ZEBStopwatch : public NSObject {
 public:
  /// Starts now.
  ZEBStopwatch() noexcept;
  /// Counts as started this long ago, in seconds.
  explicit ZEBStopwatch(double timeIntervalSinceStart) noexcept;
  explicit ZEBStopwatch(std::chrono::duration<double> timeSinceStart) noexcept
      : ZEBStopwatch(timeSinceStart.count()) {}

  /// Registered as "ZEBStopwatch", with all functions here under their selectors. The initialisers
  /// are class methods there.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// A lap time: seconds since the last call or, for the first call, since the start.
  double timeInterval() noexcept;
  /// Seconds since the start. Does not begin a new lap.
  double timeIntervalSinceStart() const noexcept;

  /// Seconds between the library's loading and the start.
  double startIntervalSinceLaunch() const noexcept { return startIntervalSinceLaunch_; }
  void setStartIntervalSinceLaunch(double seconds) noexcept { startIntervalSinceLaunch_ = seconds; }

  /// Seconds between the library's loading and the last `timeInterval` reading.
  double intervalSinceLaunchForTimeIntervalMethod() const noexcept {
    return intervalSinceLaunchForTimeIntervalMethod_;
  }
  void setIntervalSinceLaunchForTimeIntervalMethod(double seconds) noexcept {
    intervalSinceLaunchForTimeIntervalMethod_ = seconds;
  }

 private:
  double startIntervalSinceLaunch_;
  double intervalSinceLaunchForTimeIntervalMethod_;
};

}  // namespace zeb
