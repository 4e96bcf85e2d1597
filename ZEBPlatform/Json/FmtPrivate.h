#pragma once

// The only header that uses fmt's internal functions: its shortest decimal conversion, without the
// formatting around it. With an fmt version whose internals are unknown, the standard library
// converts instead.
//
// The conversion is compiled here because the one in fmt's library uses a compressed table, which
// makes it a third slower. Its symbols are hidden, so that they cannot collide with another fmt in
// the program. The headers that fmt includes are included first, so that their symbols stay
// visible.
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

#include <charconv>
#include <cstdint>
#include <string_view>

namespace zeb::detail::fmt_access {

/// significand × 10^exponent, the significand without trailing zeros.
struct ShortestDecimal {
  std::uint64_t significand;
  int exponent;
};

/// The fewest digits that read back as the same number, which is finite and positive.
template <class Number>
ShortestDecimal shortestDecimal(Number number) noexcept {
#if FMT_VERSION >= 90000 && FMT_VERSION < 100000
  const auto decimal = fmt::detail::dragonbox::to_decimal(number);
  return {decimal.significand, decimal.exponent};
#else
  char text[32];
  const std::to_chars_result result =
      std::to_chars(text, text + sizeof text, number, std::chars_format::scientific);
  ShortestDecimal decimal{0, 0};
  const std::string_view written(text, static_cast<std::size_t>(result.ptr - text));
  const std::size_t mark = written.find('e');
  bool fraction = false;
  for (const char character : written.substr(0, mark)) {
    if (character == '.') {
      fraction = true;
      continue;
    }
    decimal.significand = decimal.significand * 10 + static_cast<std::uint64_t>(character - '0');
    if (fraction) --decimal.exponent;
  }
  int exponent = 0;
  const char* start = text + mark + 1;
  std::from_chars(*start == '+' ? start + 1 : start, result.ptr, exponent);
  decimal.exponent += exponent;
  while (decimal.significand % 10 == 0) {
    decimal.significand /= 10;
    ++decimal.exponent;
  }
  return decimal;
#endif
}

}  // namespace zeb::detail::fmt_access
