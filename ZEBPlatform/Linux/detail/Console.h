#pragma once

#include <string_view>

namespace zeb {

/// Writes one line of UTF-8 to the system's log (the datagram socket /dev/log) at information
/// level. It opens no connection, keeps no descriptor and never waits: if no log service listens or
/// the service has no room, the line is lost. The program's own settings of `openlog` stay as they
/// are.
void writeToConsoleLog(std::string_view message) noexcept;

/// Stops the process for a programming error: writes exactly `message` to the system's log and to
/// standard error, then aborts.
[[noreturn]] void fatal(std::string_view message) noexcept;

}  // namespace zeb
