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

/// Starts a thread that calls the function and that nothing waits for. Its stack has `stackBytes`, rounded up
/// to what the system allows, or the system's usual size for 0. False when the system refuses.
bool startThread(std::size_t stackBytes, void (*function)(void* argument), void* argument) noexcept;

}  // namespace zeb
