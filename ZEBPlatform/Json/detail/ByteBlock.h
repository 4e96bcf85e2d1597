#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace zeb::detail {

/// Sixteen bytes that are processed together; a vector register where the processor has one.
using ByteBlock = std::uint8_t __attribute__((vector_size(16)));

inline constexpr ByteBlock laneNumbers = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};

inline ByteBlock loadBlock(const char* from) noexcept {
  ByteBlock block;
  std::memcpy(&block, from, sizeof block);
  return block;
}

constexpr std::uint64_t everyByte(std::uint64_t byte) noexcept {
  return byte * 0x0101010101010101u;
}

/// Non-zero if one of a word's eight bytes is zero; the lowest bit set is in the first such byte.
constexpr std::uint64_t zeroBytes(std::uint64_t word) noexcept {
  return (word - everyByte(1)) & ~word & everyByte(0x80);
}

inline bool anySet(ByteBlock block) noexcept {
  std::uint64_t halves[2];
  std::memcpy(halves, &block, sizeof block);
  return (halves[0] | halves[1]) != 0;
}

/// The index of the first byte that is not zero; the block's size when there is none.
inline std::size_t firstSet(ByteBlock block) noexcept {
  std::uint64_t halves[2];
  std::memcpy(halves, &block, sizeof block);
  if (halves[0]) return static_cast<std::size_t>(__builtin_ctzll(halves[0])) / 8;
  if (halves[1]) return 8 + static_cast<std::size_t>(__builtin_ctzll(halves[1])) / 8;
  return sizeof block;
}

}  // namespace zeb::detail
