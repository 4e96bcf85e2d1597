#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>

#include <sched.h>
#include <sys/auxv.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <string_view>

namespace zeb {

namespace {

/// Far more than any file that is read here has.
constexpr std::size_t maxFileSize = std::size_t{4} << 20;

std::uint64_t configuration(int name) noexcept {
  return static_cast<std::uint64_t>(std::max(sysconf(name), 0L));
}

template <std::size_t size>
std::string systemName(char (utsname::*field)[size]) {
  utsname names;
  return uname(&names) == 0 ? names.*field : "";
}

/// The number in a line such as "VmRSS:  2212 kB", in bytes.
std::optional<std::uint64_t> kilobytesLine(std::string_view status, std::string_view key) {
  const std::size_t line = status.find(key);
  if (line == std::string_view::npos) return std::nullopt;
  const std::size_t digits = status.find_first_of("0123456789", line + key.size());
  if (digits == std::string_view::npos) return std::nullopt;
  std::uint64_t kilobytes = 0;
  std::from_chars(status.data() + digits, status.data() + status.size(), kilobytes);
  return kilobytes * 1024;
}

}  // namespace

std::string executablePath() {
  std::error_code failure;
  std::string path = std::filesystem::read_symlink("/proc/self/exe", failure).string();
  if (failure) {
    // The path that the program was started by, if it does not depend on the working directory.
    const auto* const given = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
    return given && *given == '/' ? given : "";
  }
  // The system marks the name of a file that was deleted or replaced.
  constexpr std::string_view mark = " (deleted)";
  if (path.ends_with(mark) && !std::filesystem::exists(path, failure)) {
    path.resize(path.size() - mark.size());
  }
  return path;
}

std::int32_t processIdentifier() noexcept { return getpid(); }

std::vector<std::string> processArguments() {
  std::string content;
  readWholeFile("/proc/self/cmdline", maxFileSize, content);
  std::vector<std::string> arguments;
  for (std::size_t begin = 0; begin < content.size();) {
    const std::size_t end = std::min(content.find('\0', begin), content.size());
    arguments.push_back(content.substr(begin, end - begin));
    begin = end + 1;
  }
  return arguments;
}

std::vector<std::pair<std::string, std::string>> processEnvironment() {
  std::vector<std::pair<std::string, std::string>> variables;
  for (char** variable = environ; variable && *variable; ++variable) {
    const std::string_view text(*variable);
    const std::size_t equals = text.find('=');
    if (equals == std::string_view::npos) continue;
    variables.emplace_back(text.substr(0, equals), text.substr(equals + 1));
  }
  return variables;
}

std::string machineName() { return systemName(&utsname::nodename); }

std::size_t configuredProcessorCount() noexcept {
  return std::max<std::size_t>(configuration(_SC_NPROCESSORS_CONF), 1);
}

std::size_t usableProcessorCount() noexcept {
  cpu_set_t usable;
  // This fails on machines with more processors than the set can hold.
  if (sched_getaffinity(0, sizeof usable, &usable) != 0) {
    return std::max<std::size_t>(configuration(_SC_NPROCESSORS_ONLN), 1);
  }
  return static_cast<std::size_t>(CPU_COUNT(&usable));
}

std::uint64_t physicalMemorySize() noexcept {
  return configuration(_SC_PHYS_PAGES) * configuration(_SC_PAGESIZE);
}

std::uint64_t freePhysicalMemorySize() noexcept {
  return configuration(_SC_AVPHYS_PAGES) * configuration(_SC_PAGESIZE);
}

std::optional<TaskMemory> taskMemory() {
  std::string status;
  if (readWholeFile("/proc/self/status", maxFileSize, status)) return std::nullopt;
  const auto virtualSize = kilobytesLine(status, "\nVmSize:");
  const auto residentSize = kilobytesLine(status, "\nVmRSS:");
  const auto maxResidentSize = kilobytesLine(status, "\nVmHWM:");
  if (!virtualSize || !residentSize || !maxResidentSize) return std::nullopt;
  return TaskMemory{*virtualSize, *residentSize, *maxResidentSize};
}

int readMachineModel(std::string& model) {
  for (const char* const path :
       {"/sys/devices/virtual/dmi/id/product_name", "/sys/firmware/devicetree/base/model"}) {
    std::string content;
    const int failure = readWholeFile(path, maxFileSize, content);
    // Later attempts may succeed, so the instruction set would be a wrong answer.
    if (failure == EMFILE || failure == ENFILE || failure == ENOMEM) return failure;
    // The text ends with a line end in one of the files, and with a zero byte in the other one.
    content.resize(std::min(content.find('\0'), content.size()));
    while (content.ends_with('\n') || content.ends_with(' ')) content.pop_back();
    if (content.empty()) continue;
    model = std::move(content);
    return 0;
  }
  model = systemName(&utsname::machine);
  return 0;
}

std::string kernelName() { return systemName(&utsname::sysname); }
std::string kernelRelease() { return systemName(&utsname::release); }
std::string kernelBuild() { return systemName(&utsname::version); }

std::string operatingSystemName() {
  std::string content;
  readWholeFile("/etc/os-release", maxFileSize, content);
  constexpr std::string_view key = "PRETTY_NAME=";
  std::size_t begin = content.starts_with(key) ? 0 : content.find("\n" + std::string(key));
  if (begin == std::string::npos) return "Linux";
  begin = content.find('=', begin) + 1;
  std::string name = content.substr(begin, content.find('\n', begin) - begin);
  std::erase(name, '"');
  return name;
}

}  // namespace zeb
