#include "Support/FakeSystem.h"

#include <sys/auxv.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/timerfd.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <cmath>
#include <cstring>
#include <map>
#include <mutex>

#include "Support/FakeClock.h"

namespace zeb::test {

constinit std::atomic<bool> fakeRaisedPrivileges = false;

// Written before any initialiser of this program runs.
static constinit char systemLog[1000] = {};

std::string greetingAtLoad() { return systemLog; }

namespace {

constexpr std::int64_t second = 1'000'000'000;

constinit std::atomic<bool> isFaked{false};
constinit std::atomic<std::int64_t> monotonicTime{0}, timePerReading{0}, wallTime{0};

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

FakeClock::FakeClock(std::uint64_t monotonicStart) {
  monotonicTime = static_cast<std::int64_t>(monotonicStart);
  timePerReading = 0;
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
  monotonicTime += std::llround(seconds * 1e9);
  fireDue();
}

void FakeClock::setWallClockForward(double seconds) { wallTime += std::llround(seconds * 1e9); }

void FakeClock::advanceAtEachReading(std::int64_t nanoseconds) { timePerReading = nanoseconds; }

}  // namespace zeb::test

// These stand in front of the C library's own for the whole test program.

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  using namespace zeb::test;
  const bool isMonotonic = clock == CLOCK_MONOTONIC;
  if (!isFaked || !(isMonotonic || clock == CLOCK_REALTIME))
    return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  const std::int64_t time = isMonotonic ? monotonicTime += timePerReading : wallTime.load();
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

extern "C" ssize_t sendto(int, const void* bytes, std::size_t count, int, const sockaddr* address,
                          socklen_t) {
  const auto* named = reinterpret_cast<const sockaddr_un*>(address);
  if (!zeb::test::systemLog[0] && std::strcmp(named->sun_path, "/dev/log") == 0) {
    std::memcpy(zeb::test::systemLog, bytes, std::min(count, sizeof zeb::test::systemLog - 1));
  }
  return static_cast<ssize_t>(count);
}

extern "C" unsigned long __getauxval(unsigned long type) noexcept;

extern "C" unsigned long getauxval(unsigned long type) noexcept {
  return type == AT_SECURE && zeb::test::fakeRaisedPrivileges ? 1 : __getauxval(type);
}
