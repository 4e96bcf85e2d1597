#include <ZEBPlatform/Linux/detail/AddressWait.h>

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <climits>

namespace zeb {

namespace {

constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;

void callFutex(const std::atomic<std::uint32_t>& word, int operation, std::uint32_t value,
               const timespec* deadline) noexcept {
  // The last argument selects waiters in the operation that takes an absolute deadline.
  syscall(SYS_futex, &word, operation | FUTEX_PRIVATE_FLAG, value, deadline, nullptr,
          FUTEX_BITSET_MATCH_ANY);
}

}  // namespace

void waitOnAddress(const std::atomic<std::uint32_t>& word, std::uint32_t expected,
                   std::uint64_t deadline) noexcept {
  if (deadline == UINT64_MAX) return callFutex(word, FUTEX_WAIT_BITSET, expected, nullptr);
  const timespec moment{.tv_sec = static_cast<time_t>(deadline / nanosecondsPerSecond),
                        .tv_nsec = static_cast<long>(deadline % nanosecondsPerSecond)};
  callFutex(word, FUTEX_WAIT_BITSET, expected, &moment);
}

void wakeOneOnAddress(const std::atomic<std::uint32_t>& word) noexcept {
  callFutex(word, FUTEX_WAKE, 1, nullptr);
}

void wakeAllOnAddress(const std::atomic<std::uint32_t>& word) noexcept {
  callFutex(word, FUTEX_WAKE, INT_MAX, nullptr);
}

}  // namespace zeb
