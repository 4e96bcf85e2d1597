#include <ZEBPlatform/Linux/detail/Console.h>

#include <errno.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace zeb {

namespace {

constexpr sockaddr_un systemLogAddress{AF_UNIX, "/dev/log"};

/// The form that log services expect: "<priority>program[process]: text". They add the time
/// themselves.
std::string systemLogLine(int priority, std::string_view message) {
  std::string line = "<" + std::to_string(priority) + ">";
  line.append(program_invocation_short_name).append("[").append(std::to_string(getpid()));
  return line.append("]: ").append(message);
}

}  // namespace

void writeToConsoleLog(std::string_view message) noexcept try {
  const std::string line = systemLogLine(LOG_USER | LOG_INFO, message);
  const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0) return;
  // There is no connection and no wait: without a service that has room, only this line is lost.
  (void)sendto(descriptor, line.data(), line.size(), MSG_DONTWAIT | MSG_NOSIGNAL,
               reinterpret_cast<const sockaddr*>(&systemLogAddress), sizeof systemLogAddress);
  close(descriptor);
} catch (...) {
  // A line for which there is no memory is lost.
}

void fatal(std::string_view message) noexcept {
  std::fwrite(message.data(), 1, message.size(), stderr);
  std::fputc('\n', stderr);
  std::fflush(stderr);
  // Unlike other lines this one may wait for the log service: it is the last one.
  syslog(LOG_USER | LOG_CRIT, "%.*s", static_cast<int>(message.size()), message.data());
  std::abort();
}

}  // namespace zeb
