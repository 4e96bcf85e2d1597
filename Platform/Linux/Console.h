#pragma once

#include <string_view>

namespace zeb {

/// Writes one line to the system's log (syslog) at information level. Nothing happens where no log
/// service listens. UTF-8.
void writeToConsoleLog(std::string_view message) noexcept;

/// Stops the process for a programming error: writes exactly `message` to the system's log and to
/// standard error, then aborts.
[[noreturn]] void fatal(std::string_view message) noexcept;

}  // namespace zeb
