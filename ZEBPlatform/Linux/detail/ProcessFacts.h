#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace zeb {

/// What the system tells about the process and the machine. All texts are bytes as the system has them,
/// mostly UTF-8; empty where it does not tell. Any thread.

/// The absolute path of the running program's file.
std::string executablePath();

std::int32_t processIdentifier() noexcept;
/// What the program was called with, its name first.
std::vector<std::string> processArguments();
/// Must not run while another thread changes the environment.
std::vector<std::pair<std::string, std::string>> processEnvironment();

std::string machineName();
/// Processors that the machine has.
std::size_t configuredProcessorCount() noexcept;
/// Processors that the process may run on now.
std::size_t usableProcessorCount() noexcept;
/// Bytes of memory that the machine has.
std::uint64_t physicalMemorySize() noexcept;

/// The kernel's release, such as "6.1.0-18-amd64", and the name of the distribution.
std::string kernelRelease();
std::string operatingSystemName();

}  // namespace zeb
