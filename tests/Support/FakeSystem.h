#pragma once

#include <atomic>
#include <string>

namespace zeb::test {

/// Whether the program seems to have raised privileges.
extern constinit std::atomic<bool> fakeRaisedPrivileges;

/// The first datagram that was sent to the system's log, which is sent at load; empty without one.
std::string greetingAtLoad();

}  // namespace zeb::test
