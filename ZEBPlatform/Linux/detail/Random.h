#pragma once

#include <cstddef>
#include <span>

namespace zeb {

/// Fills `bytes` from the kernel's random source. Stops the process if there is none, because no
/// caller could safely continue without randomness.
void fillWithRandomBytes(std::span<std::byte> bytes) noexcept;

}  // namespace zeb
