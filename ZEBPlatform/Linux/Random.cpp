#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Linux/detail/Random.h>

#include <sys/random.h>

#include <algorithm>
#include <cerrno>

namespace zeb {

void fillWithRandomBytes(std::span<std::byte> bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t got = getrandom(bytes.data(), bytes.size(), 0);
    if (got < 0) {
      if (errno == EINTR) continue;
      fatal("the system has no random source");
    }
    bytes = bytes.subspan(static_cast<std::size_t>(got));
  }
}

RandomNumbers::RandomNumbers(std::size_t expected) noexcept
    : size_(std::clamp(expected, std::size_t{1}, numbers_.size())), used_(size_) {}

void RandomNumbers::fetch() noexcept {
  fillWithRandomBytes(std::as_writable_bytes(std::span(numbers_).first(size_)));
  used_ = 0;
}

// The upper half of number * bound is below the bound. Each result has the same number of lower
// halves once the lowest 2^32 % bound of them are refused.
std::uint32_t RandomNumbers::below(std::uint32_t bound) noexcept {
  std::uint64_t product = std::uint64_t{next()} * bound;
  if (static_cast<std::uint32_t>(product) < bound) {
    const std::uint32_t refused = -bound % bound;  // 2^32 % bound
    while (static_cast<std::uint32_t>(product) < refused) product = std::uint64_t{next()} * bound;
  }
  return static_cast<std::uint32_t>(product >> 32);
}

}  // namespace zeb
