#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Timing/ZEBLaunchTime.h>
#include <ZEBUtilities/Timing/ZEBStopwatch.h>

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

Class* ZEBStopwatch::runtimeClass() {
  using Self = ZEBStopwatch;
  static Class* const cls = registerClass(
      "ZEBStopwatch", {
                          classMethod("init", [] { return makeRef<Self>(); }),
                          classMethod("new", [] { return makeRef<Self>(); }),
                          classMethod("initWithTimeIntervalSinceStart:",
                                      [](double timeIntervalSinceStart) {
                                        return makeRef<Self>(timeIntervalSinceStart);
                                      }),
                          method("timeInterval", &Self::timeInterval),
                          method("timeIntervalSinceStart", &Self::timeIntervalSinceStart),
                          property("startIntervalSinceLaunch", &Self::startIntervalSinceLaunch,
                                   &Self::setStartIntervalSinceLaunch),
                          property("intervalSinceLaunchForTimeIntervalMethod",
                                   &Self::intervalSinceLaunchForTimeIntervalMethod,
                                   &Self::setIntervalSinceLaunchForTimeIntervalMethod),
                      });
  return cls;
}

}  // namespace zeb
