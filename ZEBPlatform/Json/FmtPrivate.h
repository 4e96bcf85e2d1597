#pragma once

// The only header that uses fmt's internals: its table of powers of ten. With an fmt version whose
// internals are unknown, the standard library converts numbers instead.
//
// The table is compiled here because the one in fmt's library is compressed. Its symbols are
// hidden, so that they cannot collide with another fmt in the program. The headers that fmt
// includes are included first, so that their symbols stay visible.
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <iterator>
#include <limits>
#include <locale>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <type_traits>
#include <utility>

#define FMT_HEADER_ONLY
#define FMT_USE_FULL_CACHE_DRAGONBOX 1
#pragma GCC visibility push(hidden)
#include <fmt/format.h>
#pragma GCC visibility pop

namespace zeb::detail::fmt_access {

inline constexpr bool isKnownVersion = FMT_VERSION >= 90000 && FMT_VERSION < 100000;

struct PowerOfTen {
  std::uint64_t high;
  std::uint64_t low;
};

/// The first 128 bits of 10^exponent, rounded up: a number from 2^127 to 2^128. The exponent is
/// -292 to 326.
inline PowerOfTen powerOfTen(int exponent) noexcept {
#if FMT_VERSION >= 90000 && FMT_VERSION < 100000
  const auto power = fmt::detail::dragonbox::cache_accessor<double>::get_cached_power(exponent);
  return {power.high(), power.low()};
#else
  return {static_cast<std::uint64_t>(exponent), 0};
#endif
}

}  // namespace zeb::detail::fmt_access
