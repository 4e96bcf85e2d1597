#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zeb {

// Facts about the process and the machine. All texts are bytes as the system has them, mostly
// UTF-8, and empty if the system does not provide them. All functions may be called from any
// thread.

/// The absolute path of the running program's file; the path that it had if it has been deleted or
/// replaced. Without /proc the path that the program was started by, if that is absolute.
std::string executablePath();

std::int32_t processIdentifier() noexcept;
/// The program's command line, beginning with its name.
std::vector<std::string> processArguments();
/// Must not run while another thread changes the environment.
std::vector<std::pair<std::string, std::string>> processEnvironment();

std::string machineName();
/// The number of the machine's processors.
std::size_t configuredProcessorCount() noexcept;
/// The number of processors that the process may run on now.
std::size_t usableProcessorCount() noexcept;
/// The machine's memory, and the part of it that holds nothing, in bytes; 0 if unknown. Memory that
/// only caches files is not free in this sense.
std::uint64_t physicalMemorySize() noexcept;
std::uint64_t freePhysicalMemorySize() noexcept;

/// The process's memory in bytes.
struct TaskMemory {
  std::uint64_t virtualSize;
  std::uint64_t residentSize;
  std::uint64_t maxResidentSize;  ///< since the program started
};
/// Nothing if the system does not answer, for example because no file descriptor is left.
std::optional<TaskMemory> taskMemory();

/// The model that the machine's firmware states, such as "ThinkPad X1" or "Raspberry Pi 4 Model B";
/// the instruction set, such as "x86_64", if it states none. Returns 0, or the error number if the
/// process lacks what it needs to read it, such as a file descriptor; `model` then stays as it is.
int readMachineModel(std::string& model);

/// What `uname` prints for "-s", "-r" and "-v": "Linux"; the kernel's release, such as
/// "6.1.0-18-amd64"; and its build, such as "#1 SMP PREEMPT_DYNAMIC Debian 6.1.76-1 (2024-02-01)".
std::string kernelName();
std::string kernelRelease();
std::string kernelBuild();
/// The name of the distribution.
std::string operatingSystemName();

}  // namespace zeb
