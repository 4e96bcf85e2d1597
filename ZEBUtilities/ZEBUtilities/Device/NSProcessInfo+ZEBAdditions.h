#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Process/NSProcessInfo.h>

#include <cstdint>

namespace zeb {

// All of these return nil or 0 for a nil object, and may be called from any thread. Each call asks
// the system again, unless it says otherwise.

/// The process's memory in bytes: the addresses in use, the memory behind them, and the most that
/// this has been since the program started. Fills those that are not null. Changes none if the
/// system does not answer, for example because no file descriptor is left.
void zeb_getVirtualMemory(const Ref<NSProcessInfo>& info, std::uint64_t* virtualMemory,
                          std::uint64_t* residentMemory,
                          std::uint64_t* residentMemoryHighWatermark);

/// One of them; 0 if the system does not answer.
std::uint64_t zeb_virtualMemory(const Ref<NSProcessInfo>& info);
std::uint64_t zeb_residentMemory(const Ref<NSProcessInfo>& info);
std::uint64_t zeb_residentMemoryHighWatermark(const Ref<NSProcessInfo>& info);

/// The machine's memory in bytes that holds nothing, not even cached files; 0 if the system does
/// not answer.
std::uint64_t zeb_freePhysicalMemory(const Ref<NSProcessInfo>& info);

/// The text of the operating system's build: the system control (1, 65), see Linux/SystemControl.h.
/// Read once.
NSString zeb_buildNumberString(const Ref<NSProcessInfo>& info);

}  // namespace zeb
