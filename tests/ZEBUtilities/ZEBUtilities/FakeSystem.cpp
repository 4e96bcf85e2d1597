#include "FakeSystem.h"

#include <sys/auxv.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

namespace zeb::test {

constinit thread_local std::uint64_t fakeClock = 0;
constinit thread_local std::uint64_t fakeClockStep = 0;
constinit thread_local std::int64_t fakeDate = 0;
constinit std::atomic<bool> fakeRaisedPrivileges = false;

// Written before any initialiser of this program runs.
static constinit char systemLog[1000] = {};

std::string greetingAtLoad() { return systemLog; }

}  // namespace zeb::test

// These stand in front of the C library's own for the whole test program.

extern "C" int clock_gettime(clockid_t clock, timespec* now) noexcept {
  using namespace zeb::test;
  if (clock == CLOCK_REALTIME && fakeDate != 0) {
    *now = {fakeDate, 0};
    return 0;
  }
  if (clock != CLOCK_MONOTONIC || fakeClock == 0) {
    return static_cast<int>(syscall(SYS_clock_gettime, clock, now));
  }
  fakeClock += fakeClockStep;
  now->tv_sec = static_cast<time_t>(fakeClock / 1'000'000'000);
  now->tv_nsec = static_cast<long>(fakeClock % 1'000'000'000);
  return 0;
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
