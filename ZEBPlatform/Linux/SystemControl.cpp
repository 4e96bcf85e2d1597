#include <ZEBPlatform/Linux/SystemControl.h>
#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>
#include <ZEBPlatform/Linux/detail/RegularFile.h>

#include <limits.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <iterator>
#include <type_traits>
#include <utility>
#include <vector>

namespace zeb {

namespace {

constexpr std::size_t maxValueSize = std::size_t{1} << 20;

// How the values of the table are read: from the process's facts, from sysconf, from a file.

template <auto function>
int readFact(std::string& value) {
  if constexpr (std::is_integral_v<decltype(function())>) {
    value = std::to_string(function());
  } else {
    value = function();
  }
  return 0;
}

template <int name>
int readConfiguration(std::string& value) {
  const long number = sysconf(name);
  if (number < 0) return ENOENT;  // the system has no such limit
  value = std::to_string(number);
  return 0;
}

template <const auto& path>
int readFile(std::string& value) {
  return readWholeFile(path, maxValueSize, value);
}

constexpr char versionFile[] = "/proc/version";
constexpr char maxFilesFile[] = "/proc/sys/fs/file-max";

int byteOrder() { return std::endian::native == std::endian::little ? 1234 : 4321; }

struct Control {
  int type;
  int subtype;
  std::string_view name;
  int (*read)(std::string& value);
};

enum Type { kernel = 1, hardware = 6 };

constexpr Control controls[] = {
    {kernel, 1, "kern.ostype", readFact<kernelName>},
    {kernel, 2, "kern.osrelease", readFact<kernelRelease>},
    {kernel, 4, "kern.version", readFile<versionFile>},
    {kernel, 6, "kern.maxproc", readConfiguration<_SC_CHILD_MAX>},
    {kernel, 7, "kern.maxfiles", readFile<maxFilesFile>},
    {kernel, 8, "kern.argmax", readConfiguration<_SC_ARG_MAX>},
    {kernel, 10, "kern.hostname", readFact<machineName>},
    {kernel, 65, "kern.osversion", readFact<kernelBuild>},
    {hardware, 1, "hw.machine", readMachineModel},
    {hardware, 3, "hw.ncpu", readFact<configuredProcessorCount>},
    {hardware, 4, "hw.byteorder", readFact<byteOrder>},
    {hardware, 7, "hw.pagesize", readConfiguration<_SC_PAGESIZE>},
    {hardware, 24, "hw.memsize", readFact<physicalMemorySize>},
    {hardware, 25, "hw.activecpu", readFact<usableProcessorCount>},
};

/// The entries below /proc/sys that a name leads through. Empty if it names no control.
std::vector<std::string> entriesOf(std::string_view name) {
  if (name.find('\0') != std::string_view::npos) return {};
  std::vector<std::string> entries;
  for (std::size_t begin = 0; begin <= name.size();) {
    const std::size_t end = std::min(name.find('.', begin), name.size());
    std::string entry(name.substr(begin, end - begin));
    std::ranges::replace(entry, '/', '.');
    if (entry.empty() || entry == "." || entry == "..") return {};
    entries.push_back(std::move(entry));
    begin = end + 1;
  }
  return entries;
}

int readBelowProcSys(std::string_view name, std::string& value) {
  if (name.size() >= PATH_MAX) return ENAMETOOLONG;
  const std::vector<std::string> entries = entriesOf(name);
  if (entries.empty()) return ENOENT;
  RegularFile file;
  const int failure = file.openBelow("/proc/sys", entries);
  return failure ? failure : readToEnd(file, maxValueSize, value);
}

/// Reads the control if there is one, else calls `readOther`.
template <class ReadOther>
int readControl(const Control* control, const ReadOther& readOther, std::string& value) {
  std::string text;
  const int failure = control != std::end(controls) ? control->read(text) : readOther(text);
  if (failure) return failure;
  if (text.empty()) return EINVAL;
  while (text.ends_with('\n')) text.pop_back();
  value = std::move(text);
  return 0;
}

int parseInteger(int failure, const std::string& text, std::int32_t& value) {
  if (failure) return failure;
  std::int64_t number = 0;
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (problem == std::errc::invalid_argument || end != text.data() + text.size()) return EINVAL;
  if (problem == std::errc::result_out_of_range || number < INT32_MIN || number > UINT32_MAX) {
    return ENOMEM;
  }
  value = static_cast<std::int32_t>(number);
  return 0;
}

}  // namespace

int readSystemControl(int type, int subtype, std::string& value) {
  const auto hasNumbers = [&](const Control& control) {
    return control.type == type && control.subtype == subtype;
  };
  return readControl(
      std::ranges::find_if(controls, hasNumbers), [](std::string&) { return ENOENT; }, value);
}

int readSystemControl(std::string_view name, std::string& value) {
  return readControl(
      std::ranges::find(controls, name, &Control::name),
      [name](std::string& text) { return readBelowProcSys(name, text); }, value);
}

int readSystemControl(int type, int subtype, std::int32_t& value) {
  std::string text;
  const int failure = readSystemControl(type, subtype, text);
  return parseInteger(failure, text, value);
}

int readSystemControl(std::string_view name, std::int32_t& value) {
  std::string text;
  const int failure = readSystemControl(name, text);
  return parseInteger(failure, text, value);
}

}  // namespace zeb
