#pragma once

#include <string_view>

namespace zeb {

/// Writes one line to the system's log (the datagram socket /dev/log) at information level. Opens no
/// connection, keeps no descriptor and never waits: where no log service listens, or it has no room,
/// the line is lost. Does not touch what the program has set with `openlog`. UTF-8.
void writeToConsoleLog(std::string_view message) noexcept;

/// Stops the process for a programming error: writes exactly `message` to the system's log and to
/// standard error, then aborts.
[[noreturn]] void fatal(std::string_view message) noexcept;

}  // namespace zeb
