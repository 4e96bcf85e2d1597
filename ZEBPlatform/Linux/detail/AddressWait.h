#pragma once

#include <atomic>
#include <cstdint>

namespace zeb {

/// If the word has the expected value, sleeps until another thread wakes this one or the monotonic
/// clock reaches the deadline (ticks of `mach_absolute_time()`, `UINT64_MAX` for never). It may
/// also return without a reason, so callers test their condition again. It orders no memory and
/// needs no file descriptor.
void waitOnAddress(const std::atomic<std::uint32_t>& word, std::uint32_t expected,
                   std::uint64_t deadline) noexcept;

/// Wake one of the threads that wait on the word, or all of them. Only the address is used, so the
/// word may have been destroyed already.
void wakeOneOnAddress(const std::atomic<std::uint32_t>& word) noexcept;
void wakeAllOnAddress(const std::atomic<std::uint32_t>& word) noexcept;

}  // namespace zeb
