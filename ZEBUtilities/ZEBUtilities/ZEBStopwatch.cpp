#include <ZEBUtilities/ZEBLaunchTime.h>
#include <ZEBUtilities/ZEBStopwatch.h>

#include <utility>

namespace zeb {

ZEBStopwatch::ZEBStopwatch() noexcept : ZEBStopwatch(0) {}

ZEBStopwatch::ZEBStopwatch(double timeIntervalSinceStart) noexcept
    : startIntervalSinceLaunch_(ZEBTimeIntervalSinceLaunch() - timeIntervalSinceStart),
      intervalSinceLaunchForTimeIntervalMethod_(startIntervalSinceLaunch_) {}

double ZEBStopwatch::timeInterval() noexcept {
  const double now = ZEBTimeIntervalSinceLaunch();
  return now - std::exchange(intervalSinceLaunchForTimeIntervalMethod_, now);
}

double ZEBStopwatch::timeIntervalSinceStart() const noexcept {
  return ZEBTimeIntervalSinceLaunch() - startIntervalSinceLaunch_;
}

}  // namespace zeb
