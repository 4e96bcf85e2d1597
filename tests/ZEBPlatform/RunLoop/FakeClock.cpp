#include "FakeClock.h"

#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <map>
#include <mutex>

namespace zeb::test {

namespace {

constexpr std::int64_t second = 1'000'000'000;

constinit std::atomic<bool> isFaked{false};
constinit std::atomic<std::int64_t> monotonicTime{0};
constinit std::atomic<std::int64_t> wallTime{0};

std::mutex mutex;
std::map<int, std::int64_t> moments;  ///< of the timer descriptors

int setReal(int descriptor, int flags, const itimerspec* value, itimerspec* old) {
  return static_cast<int>(syscall(SYS_timerfd_settime, descriptor, flags, value, old));
}

/// Makes the descriptors readable whose moments have come.
void fireDue() {
  std::erase_if(moments, [](const auto& entry) {
    if (entry.second > monotonicTime) return false;
    const itimerspec now{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_nsec = 1}};
    setReal(entry.first, 0, &now, nullptr);
    return true;
  });
}

}  // namespace

FakeClock::FakeClock() {
  monotonicTime = 1000 * second;
  wallTime = 1'700'000'000 * second;
  isFaked = true;
}

FakeClock::~FakeClock() {
  std::lock_guard guard(mutex);
  isFaked = false;
  moments.clear();
}

void FakeClock::advance(double seconds) {
  std::lock_guard guard(mutex);
  setWallClockForward(seconds);
  monotonicTime += static_cast<std::int64_t>(seconds * second);
  fireDue();
}

void FakeClock::setWallClockForward(double seconds) {
  wallTime += static_cast<std::int64_t>(seconds * second);
}

}  // namespace zeb::test

// These stand in front of the C library's own for the whole test program.

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  using namespace zeb::test;
  if (!isFaked || (clock != CLOCK_MONOTONIC && clock != CLOCK_REALTIME)) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  }
  const std::int64_t time = clock == CLOCK_MONOTONIC ? monotonicTime : wallTime;
  *now = {.tv_sec = time / second, .tv_nsec = time % second};
  return 0;
}

extern "C" int timerfd_settime(int descriptor, int flags, const itimerspec* value,
                               itimerspec* old) noexcept {
  using namespace zeb::test;
  std::lock_guard guard(mutex);
  if (!isFaked) return setReal(descriptor, flags, value, old);
  const itimerspec never{};
  const std::int64_t moment = value->it_value.tv_sec * second + value->it_value.tv_nsec;
  moments.erase(descriptor);
  if (moment != 0) moments[descriptor] = moment;
  const int result = setReal(descriptor, 0, &never, old);
  fireDue();
  return result;
}
