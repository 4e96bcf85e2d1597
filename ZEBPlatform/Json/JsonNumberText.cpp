#include <ZEBPlatform/Json/FmtPrivate.h>
#include <ZEBPlatform/Json/detail/JsonNumberText.h>

#include <array>
#include <cmath>
#include <cstring>

namespace zeb::detail {

namespace {

constexpr std::uint64_t hundredMillion = 100'000'000;
constexpr std::uint64_t zeroCharacters = 0x3030303030303030u;

/// The eight digits of a number below 10⁸, one in each byte, the first in the lowest. The number is
/// split into groups of four, two and one digits, all groups in parallel. Within the range that
/// occurs here, the multiplications divide by 100 and by 10.
constexpr std::uint64_t eightDigits(std::uint32_t number) noexcept {
  const std::uint64_t fours = number / 10000 | std::uint64_t{number % 10000} << 32;
  const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007F0000007Fu;
  const std::uint64_t twos = hundreds | (fours - 100 * hundreds) << 16;
  const std::uint64_t tens = (twos * 103 >> 10) & 0x000F000F000F000Fu;
  return tens | (twos - 10 * tens) << 8;
}

[[gnu::always_inline]] inline char* writeEightDigits(char* target, std::uint32_t number) noexcept {
  const std::uint64_t digits = eightDigits(number) + zeroCharacters;
  std::memcpy(target, &digits, 8);
  return target + 8;
}

/// At most eight digits, without leading zeros.
char* writeFewDigits(char* target, std::uint32_t number) noexcept {
  if (number < 10) {
    *target = static_cast<char>('0' + number);
    return target + 1;
  }
  const std::uint64_t digits = eightDigits(number);
  const auto zeros = static_cast<unsigned>(__builtin_ctzll(digits)) & ~7u;
  const std::uint64_t characters = (digits + zeroCharacters) >> zeros;
  std::memcpy(target, &characters, 8);
  return target + 8 - zeros / 8;
}

/// Without leading zeros. May write up to eight bytes past the returned end.
char* writeDigits(char* target, std::uint64_t number) noexcept {
  const auto part = [](std::uint64_t digits) { return static_cast<std::uint32_t>(digits); };
  if (number < hundredMillion) return writeFewDigits(target, part(number));
  const std::uint64_t front = number / hundredMillion;
  if (front < hundredMillion) {
    target = writeFewDigits(target, part(front));
  } else {
    target = writeFewDigits(target, part(front / hundredMillion));
    target = writeEightDigits(target, part(front % hundredMillion));
  }
  return writeEightDigits(target, part(number % hundredMillion));
}

constexpr std::array<std::uint64_t, 20> powersOfTen = [] {
  std::array<std::uint64_t, 20> powers{1};
  for (std::size_t index = 1; index < powers.size(); ++index)
    powers[index] = powers[index - 1] * 10;
  return powers;
}();

/// How many decimal digits a number has; 1 for 0.
int digitCount(std::uint64_t number) noexcept {
  const auto bits = static_cast<unsigned>(64 - __builtin_clzll(number | 1));
  const unsigned guess = bits * 1233 >> 12;  // of the decimal logarithm; at most one too high
  return static_cast<int>(guess + 1 - (number < powersOfTen[guess]));
}

/// The digits of a significand, filled up with zeros to seventeen, which is the most that a double
/// has. No branch depends on the number of digits, because it would be mispredicted.
class SeventeenDigits {
 public:
  SeventeenDigits(std::uint64_t significand, int count) noexcept {
    const std::uint64_t full = significand * powersOfTen[static_cast<std::size_t>(17 - count)];
    const std::uint64_t front = full / hundredMillion;
    first_ = static_cast<char>('0' + front / hundredMillion);
    middle_ = eightDigits(static_cast<std::uint32_t>(front % hundredMillion)) + zeroCharacters;
    last_ = eightDigits(static_cast<std::uint32_t>(full % hundredMillion)) + zeroCharacters;
  }

  char first() const noexcept { return first_; }

  void write(char* target) const noexcept {
    *target = first_;
    std::memcpy(target + 1, &middle_, 8);
    std::memcpy(target + 9, &last_, 8);
  }

  /// With a point after `before` digits (1 to 8).
  void writeWithPoint(char* target, int before) const noexcept {
    const std::uint64_t afterPoint = middle_ >> (8 * (before - 1));
    *target = first_;
    std::memcpy(target + 1, &middle_, 8);
    target[before] = '.';
    std::memcpy(target + before + 1, &afterPoint, 8);
    std::memcpy(target + 10, &last_, 8);
  }

 private:
  char first_;
  std::uint64_t middle_;
  std::uint64_t last_;
};

/// From here on, plain digits would be read back as an integer that may differ from the double.
constexpr double firstInexactInteger = 9007199254740992.0;  // 2^53

template <class Number>
char* writeShortest(char* target, Number number) noexcept {
  *target = '-';
  target += std::signbit(number);
  number = std::abs(number);
  if (number == 0) {
    *target = '0';
    return target + 1;
  }
  const fmt_access::ShortestDecimal decimal = fmt_access::shortestDecimal(number);
  const int count = digitCount(decimal.significand);
  const SeventeenDigits digits(decimal.significand, count);
  const int point = count + decimal.exponent;  // how many digits stand before the point

  if (point > 0 && point <= 8 && point < count) {
    digits.writeWithPoint(target, point);
    return target + count + 1;
  }
  if (point > -6 && point <= 0) {
    std::memcpy(target, "0.000000", 8);
    digits.write(target + 2 - point);
    return target + 2 - point + count;
  }
  if (point >= count && number < firstInexactInteger) {
    digits.write(target);
    return target + point;
  }
  if (point > 8 && point < count) {
    digits.write(target);
    std::memmove(target + point + 1, target + point, static_cast<std::size_t>(count - point));
    target[point] = '.';
    return target + count + 1;
  }
  digits.write(target + 1);  // the first digit moves before the point
  target[0] = digits.first();
  target[1] = '.';
  char* end = count > 1 ? target + 1 + count : target + 1;
  *end++ = 'e';
  return writeJsonInteger(end, point - 1);
}

}  // namespace

char* writeJsonUnsigned(char* target, std::uint64_t number) noexcept {
  return writeDigits(target, number);
}

char* writeJsonInteger(char* target, std::int64_t number) noexcept {
  if (number >= 0) return writeJsonUnsigned(target, static_cast<std::uint64_t>(number));
  *target++ = '-';
  return writeJsonUnsigned(target, 0 - static_cast<std::uint64_t>(number));
}

char* writeJsonDouble(char* target, double number) noexcept {
  return writeShortest(target, number);
}
char* writeJsonFloat(char* target, float number) noexcept { return writeShortest(target, number); }

}  // namespace zeb::detail
