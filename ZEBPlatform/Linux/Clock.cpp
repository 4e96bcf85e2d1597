#include <ZEBPlatform/Linux/Clock.h>

#include <time.h>

#include <cerrno>

namespace zeb {

namespace {

constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;

}  // namespace

std::uint64_t mach_absolute_time() noexcept {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * nanosecondsPerSecond +
         static_cast<std::uint64_t>(now.tv_nsec);
}

int mach_timebase_info(mach_timebase_info_data_t* info) noexcept {
  timespec now{};
  if (clock_gettime(CLOCK_MONOTONIC, &now) != 0) return errno;
  *info = {1, 1};
  return 0;
}

double secondsSince1970() noexcept {
  timespec now{};
  clock_gettime(CLOCK_REALTIME, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace zeb
