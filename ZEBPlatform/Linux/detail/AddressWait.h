#pragma once

#include <atomic>
#include <cstdint>

namespace zeb {

/// Sleeps while the word has the expected value, until another thread wakes this one or the monotonic
/// clock reaches the deadline (ticks of `mach_absolute_time()`, `UINT64_MAX` for never). It may also
/// return without a reason: callers test their condition again. It needs no file descriptor.
void waitOnAddress(const std::atomic<std::uint32_t>& word, std::uint32_t expected,
                   std::uint64_t deadline) noexcept;

/// Wakes one of the threads that wait on the word, or all. They use the word's address only, so the
/// word may have been destroyed by then.
void wakeOneOnAddress(const std::atomic<std::uint32_t>& word) noexcept;
void wakeAllOnAddress(const std::atomic<std::uint32_t>& word) noexcept;

}  // namespace zeb
