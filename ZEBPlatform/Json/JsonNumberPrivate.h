#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Foundation/detail/NumberText.h>
#include <ZEBPlatform/Json/SimdjsonPrivate.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zeb::detail {

/// Where a number ends, or what is wrong with it.
struct JsonNumberEnd {
  const char* end = nullptr;    ///< past the last character taken; null when malformed
  const char* fault = nullptr;  ///< why the number is malformed; else null
};

namespace json_number {

inline bool isDigit(char character) noexcept {
  return static_cast<unsigned char>(character - '0') < 10;
}

inline bool isEightDigits(std::uint64_t word) noexcept {
  return ((word & 0xF0F0F0F0F0F0F0F0u) |
          (((word + 0x0606060606060606u) & 0xF0F0F0F0F0F0F0F0u) >> 4)) == 0x3333333333333333u;
}

/// The value of eight digit characters. Combines them into pairs, then fours, then all eight.
inline std::uint64_t valueOfEightDigits(std::uint64_t word) noexcept {
  word = (word & 0x0F0F0F0F0F0F0F0Fu) * 2561 >> 8;
  word = (word & 0x00FF00FF00FF00FFu) * 6553601 >> 16;
  return (word & 0x0000FFFF0000FFFFu) * 42949672960001u >> 32;
}

/// Takes digits. More than 19 of them may overflow the mantissa; the caller counts them.
inline const char* takeDigits(const char* at, const char* limit, std::uint64_t& mantissa) noexcept {
  while (limit - at >= 8) {
    std::uint64_t word;
    std::memcpy(&word, at, 8);
    if (!isEightDigits(word)) break;
    mantissa = mantissa * 100'000'000 + valueOfEightDigits(word);
    at += 8;
  }
  while (at != limit && isDigit(*at)) {
    mantissa = mantissa * 10 + static_cast<std::uint64_t>(*at - '0');
    ++at;
  }
  return at;
}

inline JsonNumberEnd malformed(const char* fault) noexcept { return {nullptr, fault}; }

/// Receives the two words of the number's value.
struct Target {
  std::uint64_t& head;
  std::uint64_t& payload;

  void setSigned(std::uint64_t bits) const noexcept {
    head = Value::headOf(ValueKind::SignedInteger, 'q');
    payload = bits;
  }
  void setUnsigned(std::uint64_t bits) const noexcept {
    head = Value::headOf(ValueKind::UnsignedInteger, 'Q');
    payload = bits;
  }
  void setDouble(double number) const noexcept {
    head = Value::headOf(ValueKind::Double, 'd');
    payload = std::bit_cast<std::uint64_t>(number);
  }
};

/// The exact conversion, for numbers that the fast ones cannot decide.
[[gnu::noinline]] inline JsonNumberEnd convertExactly(const char* start, const char* end,
                                                      Target target) noexcept {
  double number = 0;
  const std::from_chars_result result = std::from_chars(start, end, number);
  if (result.ec == std::errc::result_out_of_range) {
    const bool tiny = isTinyDecimal({start, static_cast<std::size_t>(end - start)});
    if (!tiny) return malformed("Number too large for a double");
    number = *start == '-' ? -0.0 : 0.0;
  }
  target.setDouble(number);
  return {end, nullptr};
}

/// For integers of 19 digits and more, which may not fit into 64 bits.
[[gnu::noinline]] inline JsonNumberEnd convertLongInteger(const char* start, const char* end,
                                                          Target target) noexcept {
  std::int64_t asSigned;
  std::uint64_t asUnsigned;
  if (std::from_chars(start, end, asSigned).ec == std::errc()) {
    target.setSigned(static_cast<std::uint64_t>(asSigned));
  } else if (*start != '-' && std::from_chars(start, end, asUnsigned).ec == std::errc()) {
    target.setUnsigned(asUnsigned);
  } else {
    return convertExactly(start, end, target);
  }
  return {end, nullptr};
}

}  // namespace json_number

/// Reads the number that starts at `start` and must end before `limit` (RFC 8259, section 6), into
/// the two words of a value. Integers stay exact as signed or unsigned 64-bit where they fit; -0,
/// fractions and larger integers become the nearest double; a number beyond the range of doubles is
/// malformed. The caller checks what follows the number.
[[gnu::always_inline]] inline JsonNumberEnd readJsonNumber(const char* start, const char* limit,
                                                           std::uint64_t& head,
                                                           std::uint64_t& payload) noexcept {
  using namespace json_number;
  const Target target{head, payload};
  const char* at = start;
  const bool negative = *at == '-';
  if (negative) ++at;
  if (at == limit || !isDigit(*at)) return malformed("A digit was expected");

  std::uint64_t mantissa = 0;
  const char* const firstDigit = at;
  at = takeDigits(at, limit, mantissa);
  auto digits = static_cast<std::size_t>(at - firstDigit);
  if (digits > 1 && *firstDigit == '0') return malformed("A number must not begin with zeros");

  const bool hasFraction = at != limit && *at == '.';
  const bool hasExponent = at != limit && !hasFraction && (*at | 0x20) == 'e';
  if (!hasFraction && !hasExponent) {
    if (digits > 18) return convertLongInteger(start, at, target);
    if (negative && mantissa == 0) {
      target.setDouble(-0.0);
    } else {
      target.setSigned(negative ? 0 - mantissa : mantissa);
    }
    return {at, nullptr};
  }

  std::int64_t exponent = 0;
  if (hasFraction) {
    const char* const firstFractionDigit = ++at;
    at = takeDigits(at, limit, mantissa);
    if (at == firstFractionDigit) return malformed("A digit was expected");
    exponent = firstFractionDigit - at;
    digits += static_cast<std::size_t>(at - firstFractionDigit);
  }
  if (at != limit && (*at | 0x20) == 'e') {
    ++at;
    const bool negativeExponent = at != limit && *at == '-';
    if (at != limit && (*at == '-' || *at == '+')) ++at;
    if (at == limit || !isDigit(*at)) return malformed("A digit was expected");
    std::int64_t written = 0;
    while (at != limit && isDigit(*at)) {
      if (written < 100'000'000) written = written * 10 + (*at - '0');
      ++at;
    }
    exponent += negativeExponent ? -written : written;
  }
  // Nineteen digits always fit; leading zeros do not count.
  if (digits > 19) {
    const char* first = firstDigit;
    while (first != at && (*first == '0' || *first == '.')) {
      if (*first == '0') --digits;
      ++first;
    }
  }
  double number;
  if (digits > 19 || !simdjson_access::nearestDouble(exponent, mantissa, negative, number)) {
    return convertExactly(start, at, target);
  }
  target.setDouble(number);
  return {at, nullptr};
}

}  // namespace zeb::detail
