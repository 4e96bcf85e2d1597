#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBUtilities/Timing/ZEBLaunchTime.h>

#include <cstdlib>

namespace zeb {

namespace {

// Written once at load, before other code of the library runs; constant afterwards.
constinit std::uint64_t launchStartTime = 0;
constinit double secondsPerTick = 0;

bool isGreetingWanted() noexcept {
  const char* refusal = std::getenv("ZEB_NO_GREETING");
  return ZEB_GREETING && !(refusal && *refusal);
}

}  // namespace

void YOVLoadProcessStartTime() noexcept {
  if (launchStartTime != 0) return;
  launchStartTime = mach_absolute_time();
  mach_timebase_info_data_t timebase{};
  if (mach_timebase_info(&timebase) == 0) {
    secondsPerTick = timebase.numer / (timebase.denom * 1e9);
  }
  if (isGreetingWanted()) writeToConsoleLog("ZEBUtilities says hello");
}

std::uint64_t ZEBLaunchStartTime() noexcept { return launchStartTime; }

double ZEBTimeIntervalSinceLaunch() noexcept {
  return ZEBTimeIntervalBetweenMachTimes(launchStartTime, mach_absolute_time());
}

double ZEBTimeIntervalBetweenMachTimes(std::uint64_t a, std::uint64_t b) noexcept {
  // Subtracts the smaller from the larger one, so that the unsigned difference never wraps.
  if (a > b) return -(static_cast<double>(a - b) * secondsPerTick);
  return static_cast<double>(b - a) * secondsPerTick;
}

}  // namespace zeb
