#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb {

enum class SecRandomSource : std::uint8_t { system };
inline constexpr SecRandomSource kSecRandomDefault = SecRandomSource::system;

/// Fills `bytes` from the system's secure random source. 0 on success.
int SecRandomCopyBytes(SecRandomSource source, std::span<std::byte> bytes) noexcept;

}  // namespace zeb
