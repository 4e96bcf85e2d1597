#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace zeb::test {

/// The calling thread's monotonic clock in nanoseconds; goes by the real one while this is 0.
extern constinit thread_local std::uint64_t fakeClock;
/// What each reading, itself included, adds to it.
extern constinit thread_local std::uint64_t fakeClockStep;
/// The calling thread's wall clock in seconds since 1970; goes by the real one while this is 0.
extern constinit thread_local std::int64_t fakeDate;

/// Whether the program seems to have raised privileges.
extern constinit std::atomic<bool> fakeRaisedPrivileges;

/// The first datagram that was sent to the system's log, which is the one at load; empty without one.
std::string greetingAtLoad();

}  // namespace zeb::test
