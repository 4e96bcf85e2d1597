#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zeb::detail {

/// Eight code units that are processed together; a vector register where the processor has one.
using UnitBlock = std::uint16_t __attribute__((vector_size(16)));
inline constexpr std::size_t unitsPerBlock = sizeof(UnitBlock) / sizeof(char16_t);

inline UnitBlock loadUnits(const char16_t* from) noexcept {
  UnitBlock block;
  std::memcpy(&block, from, sizeof block);
  return block;
}

/// Ones in all bits of the lanes whose units are between the two, which are included. The numbers
/// are moved so that one signed comparison is enough: vectors of 16-bit numbers have no unsigned
/// one.
inline UnitBlock isBetween(UnitBlock units, std::uint16_t first, std::uint16_t last) noexcept {
  using SignedBlock = std::int16_t __attribute__((vector_size(16)));
  constexpr unsigned lowest = 0x8000;
  const UnitBlock moved = units - static_cast<std::uint16_t>(first + lowest);
  const auto end = static_cast<std::int16_t>(static_cast<std::uint16_t>(last - first + 1 + lowest));
  return reinterpret_cast<UnitBlock>(reinterpret_cast<SignedBlock>(moved) < end);
}

inline UnitBlock isUnit(UnitBlock units, std::uint16_t unit) noexcept {
  return reinterpret_cast<UnitBlock>(units == unit);
}

inline bool anySet(UnitBlock block) noexcept {
  std::uint64_t halves[2];
  std::memcpy(halves, &block, sizeof block);
  return (halves[0] | halves[1]) != 0;
}

/// Calls `visit` with the units in blocks. Zeros follow the last unit.
template <class Visit>
void forEachBlock(std::u16string_view units, const Visit& visit) noexcept {
  for (; units.size() >= unitsPerBlock; units.remove_prefix(unitsPerBlock)) {
    visit(loadUnits(units.data()));
  }
  char16_t rest[unitsPerBlock] = {};
  units.copy(rest, units.size());
  visit(loadUnits(rest));
}

/// The number of units for which `test` sets the lane. It must not set the lanes of zeros.
template <class Test>
std::size_t countUnits(std::u16string_view units, const Test& test) noexcept {
  // A 16-bit lane that counts one in each block overflows only after this number of units.
  constexpr std::size_t unitsAtOnce = std::size_t{0xFFFF} * unitsPerBlock;
  std::size_t count = 0;
  while (!units.empty()) {
    const std::u16string_view part = units.substr(0, unitsAtOnce - unitsPerBlock);
    UnitBlock counts{};
    forEachBlock(part, [&](UnitBlock block) { counts -= test(block); });  // a set lane is -1
    for (std::size_t lane = 0; lane < unitsPerBlock; ++lane) count += counts[lane];
    units.remove_prefix(part.size());
  }
  return count;
}

}  // namespace zeb::detail
