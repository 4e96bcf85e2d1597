#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zeb {

/// Whether the calling thread is the one that the process started with.
bool isMainThread() noexcept;

/// The system's handle of a thread, valid while the thread runs.
using ThreadHandle = std::uintptr_t;

ThreadHandle currentThreadHandle() noexcept;

/// The name that debuggers and `top` show: the first 15 bytes, whole characters. UTF-8.
void setThreadName(ThreadHandle thread, std::string_view name) noexcept;

/// From here on the calling thread's timed waits end as exactly as the system can, which otherwise puts
/// together what lies some microseconds apart.
void setExactTimeouts() noexcept;

/// Starts a thread that calls the function and that nothing waits for. Its stack has `stackBytes`, rounded up
/// to what the system allows, or the system's usual size for 0. It blocks the signals that the calling
/// thread blocks. False when the system refuses.
bool startThread(std::size_t stackBytes, void (*function)(void* argument), void* argument) noexcept;

/// The same for a thread of the library's own, which the application knows nothing of. It has that name, a
/// constant, and blocks all signals, so that they go to the application's threads. Only those stay open that a
/// thread's own fault raises (`SIGSEGV` and its like), for crash handlers, and `SIGPROF`, for sampling profilers.
bool startServiceThread(const char* name, void (*function)(void* argument),
                        void* argument) noexcept;

}  // namespace zeb
