#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb {

/// Fills `bytes` from the kernel's random source. Stops the process if there is none, because no
/// caller could safely continue without randomness.
void fillWithRandomBytes(std::span<std::byte> bytes) noexcept;

/// Random numbers for one piece of work, fetched from the kernel in blocks, because a system call
/// takes much longer than a number. Numbers that are kept across a fork would be the same in both
/// processes, so make one for each piece of work.
class RandomNumbers {
 public:
  /// `expected` is about how many numbers will be used; the blocks are not larger than that.
  explicit RandomNumbers(std::size_t expected) noexcept;
  RandomNumbers(const RandomNumbers&) = delete;
  RandomNumbers& operator=(const RandomNumbers&) = delete;

  std::uint32_t next() noexcept {
    if (used_ == size_) fetch();
    return numbers_[used_++];
  }

  /// A number below `bound`, each with exactly the same probability. The bound must not be 0.
  std::uint32_t below(std::uint32_t bound) noexcept;

 private:
  void fetch() noexcept;

  std::array<std::uint32_t, 1024> numbers_;
  std::size_t size_;
  std::size_t used_;
};

}  // namespace zeb
