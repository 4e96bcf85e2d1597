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

/// Sends a signal to a thread that runs. Answers false if the system refuses.
bool sendSignal(ThreadHandle thread, int signal) noexcept;

/// Sets the name that debuggers and `top` show: the first 15 bytes of the UTF-8 text, cut off
/// between two characters.
void setThreadName(ThreadHandle thread, std::string_view name) noexcept;

/// Makes the calling thread's timed waits end as exactly as the system can. Without it the system
/// combines wake-ups that lie some microseconds apart.
void setExactTimeouts() noexcept;

/// Starts a detached thread that calls the function. Its stack has `stackBytes`, rounded up to a
/// size that the system allows; 0 means the system's usual size. It blocks the signals that the
/// calling thread blocks. Answers false if the system refuses.
bool startThread(std::size_t stackBytes, void (*function)(void* argument), void* argument) noexcept;

/// Starts such a thread for the library's own use. `name` must stay valid. The thread blocks
/// signals, so that they go to the application's threads, except two kinds: signals that a thread's
/// own fault raises (`SIGSEGV` and similar ones), for crash handlers, and `SIGPROF`, for sampling
/// profilers.
bool startServiceThread(const char* name, void (*function)(void* argument),
                        void* argument) noexcept;

}  // namespace zeb
