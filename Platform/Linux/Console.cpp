#include <Linux/Console.h>

#include <syslog.h>

#include <cstdio>
#include <cstdlib>

namespace zeb {

namespace {

void writeToSystemLog(int priority, std::string_view message) noexcept {
  syslog(priority, "%.*s", static_cast<int>(message.size()), message.data());
}

}  // namespace

void writeToConsoleLog(std::string_view message) noexcept {
  writeToSystemLog(LOG_USER | LOG_INFO, message);
}

void fatal(std::string_view message) noexcept {
  std::fwrite(message.data(), 1, message.size(), stderr);
  std::fputc('\n', stderr);
  std::fflush(stderr);
  writeToSystemLog(LOG_USER | LOG_CRIT, message);
  std::abort();
}

}  // namespace zeb
