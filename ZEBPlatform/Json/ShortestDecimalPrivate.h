#pragma once

#include <ZEBPlatform/Json/FmtPrivate.h>

#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <type_traits>

namespace zeb::detail {

/// 0.DIGITS × 10^point, where DIGITS are seventeen, filled up with zeros at the end. A double never
/// needs more.
struct ShortestDecimal {
  std::uint64_t digits;
  int point;
};

namespace shortest_decimal {

inline constexpr std::uint64_t sixteenDigits = 10'000'000'000'000'000;

/// Chooses `one` if all bits of `mask` are set, and `other` if none is. Not written as a condition,
/// because the compiler makes branches of conditions, and the number of a double's digits cannot be
/// predicted.
constexpr std::uint64_t choose(std::uint64_t mask, std::uint64_t one,
                               std::uint64_t other) noexcept {
  return other ^ ((one ^ other) & mask);
}

/// A number with at most seventeen digits times 10^exponent.
[[gnu::always_inline]] inline ShortestDecimal filledUp(std::uint64_t number,
                                                       int exponent) noexcept {
  int count = 17;
  while (number < sixteenDigits / 10) [[unlikely]] {
    number *= 10;
    --count;
  }
  const auto isShort = static_cast<std::int64_t>(number - sixteenDigits) >> 63;
  return {choose(static_cast<std::uint64_t>(isShort), 10 * number, number),
          exponent + count + static_cast<int>(isShort)};
}

/// With the standard library.
template <class Number>
[[gnu::noinline]] ShortestDecimal convertPlainly(Number number) noexcept {
  char text[32];
  const std::to_chars_result result =
      std::to_chars(text, text + sizeof text, number, std::chars_format::scientific);
  const std::string_view written(text, static_cast<std::size_t>(result.ptr - text));
  const std::size_t mark = written.find('e');
  std::uint64_t digits = 0;
  int exponent = 0;
  std::from_chars(text + mark + (text[mark + 1] == '+' ? 2 : 1), result.ptr, exponent);
  for (const char character : written.substr(0, mark)) {
    if (character != '.') digits = 10 * digits + static_cast<std::uint64_t>(character - '0');
  }
  if (mark > 1) exponent -= static_cast<int>(mark) - 2;
  return filledUp(digits, exponent);
}

/// The largest integer that is not above the logarithm, for exponents of doubles. The factors are
/// the logarithms, multiplied by a power of two.
constexpr int floorOfLog10OfPowerOf2(int exponent) noexcept { return exponent * 1'262'611 >> 22; }
constexpr int floorOfLog2OfPowerOf10(int exponent) noexcept { return exponent * 1'741'647 >> 19; }

}  // namespace shortest_decimal

/// The fewest digits that read back as the same number, which is finite and positive; among these
/// the nearest to it. Zeros at the end are not removed: it is cheaper to count them in the text.
///
/// Numbers between two bounds, halfway to the neighbours of this number, are read back as this one.
/// A unit is the power of ten such that the bounds are one to ten units apart. So at most one
/// multiple of ten units lies between the bounds, and has the fewest digits then; otherwise the
/// nearest multiple of one unit does. Both questions are decided from estimates. The standard
/// library decides when they are too close, and for the few numbers whose bounds differ.
template <class Number>
[[gnu::always_inline]] inline ShortestDecimal shortestDecimal(Number number) noexcept {
  using namespace shortest_decimal;
  using Limits = std::numeric_limits<Number>;
  using Bits = std::conditional_t<sizeof(Number) == 8, std::uint64_t, std::uint32_t>;
  constexpr int fractionBits = Limits::digits - 1;
  const auto bits = std::bit_cast<Bits>(number);
  const std::uint64_t fraction = bits & ((Bits{1} << fractionBits) - 1);
  const int exponentField = static_cast<int>(bits >> fractionBits);
  const bool isSubnormal = exponentField == 0;
  if (!fmt_access::isKnownVersion || isSubnormal) [[unlikely]]
    return convertPlainly(number);

  // The number is significand × 2^exponent, and a unit 10^unitExponent.
  const std::uint64_t significand = fraction | std::uint64_t{1} << fractionBits;
  const int exponent = Limits::min_exponent - Limits::digits + exponentField - 1;
  const int unitExponent = floorOfLog10OfPowerOf2(exponent);
  const int shift = exponent + floorOfLog2OfPowerOf10(-unitExponent) + 1;  // 1 to 4
  const fmt_access::PowerOfTen power = fmt_access::powerOfTen(-unitExponent);

  // The number in quarters of a unit: 64 bits before the point and 64 after it, of which the last
  // one or two may be wrong.
  __extension__ using Wide = unsigned __int128;
  const std::uint64_t scaled = 4 * significand << shift;
  const auto low = static_cast<std::uint64_t>(static_cast<Wide>(scaled) * power.low >> 64);
  const Wide quarters = static_cast<Wide>(scaled) * power.high + low;

  // The estimates count in 2^-57 quarters, and each of them is wrong by less than two.
  constexpr int places = 57;
  constexpr std::int64_t unit = std::int64_t{4} << places;
  constexpr std::int64_t margin = 8;
  const std::uint64_t tens = static_cast<std::uint64_t>(quarters >> 64) / 40;
  const auto aboveTens = static_cast<std::int64_t>(
      static_cast<std::uint64_t>(quarters >> (64 - places)) - (40 * tens << places));
  const auto halfGap = static_cast<std::int64_t>(power.high >> (63 - places - shift));
  const std::int64_t belowNextTens = 10 * unit - aboveTens;

  // Below a power of two, the neighbour is half as far.
  const bool isPowerOfTwo = fraction == 0;
  if (isPowerOfTwo) [[unlikely]] {
    if (aboveTens + margin < halfGap / 2) return filledUp(10 * tens, unitExponent);
    return convertPlainly(number);
  }
  const std::int64_t tensOutside = aboveTens - halfGap;
  const std::int64_t nextTensOutside = belowNextTens - halfGap;
  const std::int64_t rounded = aboveTens + unit / 2;
  const auto isClose = [](std::int64_t distance) {
    return static_cast<std::uint64_t>(distance + margin) <= 2 * margin;
  };
  if (isClose(tensOutside) || isClose(nextTensOutside) ||
      isClose(((rounded + margin) & (unit - 1)) - margin)) [[unlikely]] {
    return convertPlainly(number);
  }
  const auto isTens = static_cast<std::uint64_t>((tensOutside | nextTensOutside) >> 63);
  const auto isNextTens = static_cast<std::uint64_t>(nextTensOutside >> 63);
  return filledUp(
      10 * tens + choose(isTens, isNextTens & 10, static_cast<std::uint64_t>(rounded) / unit),
      unitExponent);
}

}  // namespace zeb::detail
