#pragma once

#include <cstddef>
#include <span>

namespace zeb {

/// Fills `bytes` from the kernel's random source. Stops the process when there is none: nothing that
/// asks for randomness could go on safely.
void fillWithRandomBytes(std::span<std::byte> bytes) noexcept;

}  // namespace zeb
