#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zeb {

// Facts about the process and the machine. All texts are bytes as the system has them, mostly
// UTF-8, and empty if the system does not provide them. All functions may be called from any
// thread.

/// The absolute path of the running program's file.
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
/// The machine's memory in bytes.
std::uint64_t physicalMemorySize() noexcept;

/// The kernel's release, such as "6.1.0-18-amd64", and the name of the distribution.
std::string kernelRelease();
std::string operatingSystemName();

}  // namespace zeb
