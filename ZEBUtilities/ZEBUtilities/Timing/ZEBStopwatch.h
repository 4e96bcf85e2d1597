#pragma once

#include <ZEBPlatform/Memory/NSObject.h>

#include <chrono>

namespace zeb {

/// Measures the time since its start and between readings, by the monotonic clock. Made with
/// `makeRef<ZEBStopwatch>()`. One thread at a time.
class ZEBStopwatch : public NSObject {
 public:
  /// Starts now.
  ZEBStopwatch() noexcept;
  /// Counts as started so many seconds ago.
  explicit ZEBStopwatch(double timeIntervalSinceStart) noexcept;
  explicit ZEBStopwatch(std::chrono::duration<double> timeSinceStart) noexcept
      : ZEBStopwatch(timeSinceStart.count()) {}

  /// "ZEBStopwatch", with everything here by its selectors; the initialisers are class methods there.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Seconds since the last call, or since the start for the first one: a lap.
  double timeInterval() noexcept;
  /// Seconds since the start. Changes nothing.
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
