#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zeb::detail {

/// The name of an entity as one number: the first character is the highest byte, and zeros follow
/// the last one. So numbers have the order of the names' bytes.
using PackedEntityName = std::uint64_t;

inline constexpr std::size_t maxEntityNameLength = sizeof(PackedEntityName);

constexpr PackedEntityName packedEntityName(std::string_view name) noexcept {
  PackedEntityName packed = 0;
  for (std::size_t i = 0; i < maxEntityNameLength; ++i) {
    packed = packed << 8 | (i < name.size() ? static_cast<unsigned char>(name[i]) : 0u);
  }
  return packed;
}

/// The code unit of the entity; 0 if no entity has this name. Names are case-sensitive.
char16_t unitOfEntity(PackedEntityName name) noexcept;

}  // namespace zeb::detail
