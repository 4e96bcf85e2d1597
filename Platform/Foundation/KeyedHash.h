#pragma once

#include <cstdint>
#include <string_view>

namespace zeb::detail {

/// SipHash-1-3 under a secret key that is drawn once per process. Takes over where somebody chose
/// keys that collide under the public hash; slower, but its collisions can't be prepared.
std::uint64_t keyedHash(std::string_view bytes) noexcept;

}  // namespace zeb::detail
