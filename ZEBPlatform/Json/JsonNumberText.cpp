#include <ZEBPlatform/Json/ShortestDecimalPrivate.h>
#include <ZEBPlatform/Json/detail/JsonNumberText.h>

#include <bit>
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

/// The digits of a decimal as text. No branch depends on how many they are, because it would be
/// mispredicted.
class SeventeenDigits {
 public:
  explicit SeventeenDigits(std::uint64_t digits) noexcept {
    const std::uint64_t front = digits / hundredMillion;
    const std::uint64_t middle = eightDigits(static_cast<std::uint32_t>(front % hundredMillion));
    const std::uint64_t last = eightDigits(static_cast<std::uint32_t>(digits % hundredMillion));
    const auto zeros =
        static_cast<unsigned>(last ? std::countl_zero(last) : 64 + std::countl_zero(middle));
    count_ = static_cast<int>(17 - zeros / 8);
    first_ = static_cast<char>('0' + front / hundredMillion);
    middle_ = middle + zeroCharacters;
    last_ = last + zeroCharacters;
  }

  char first() const noexcept { return first_; }
  /// How many there are without the zeros at the end.
  int count() const noexcept { return count_; }

  void write(char* target) const noexcept {
    *target = first_;
    std::memcpy(target + 1, &middle_, 8);
    std::memcpy(target + 9, &last_, 8);
  }

  /// Plain notation, with `point` digits (-7 to 8) before the point, or that many zeros after it.
  char* writePlainly(char* target, int point) const noexcept {
    const bool isBelowOne = point <= 0;
    char* const start = target + (isBelowOne ? 2 - point : 0);
    char* const dot = isBelowOne ? target + 1 : target + point;
    const std::uint64_t afterDot = middle_ >> (isBelowOne ? 0 : 8 * (point - 1));
    // Each line overwrites what the lines above wrote too much.
    std::memcpy(target, "0.000000", 8);
    *start = first_;
    std::memcpy(start + 1, &middle_, 8);
    *dot = '.';
    std::memcpy(isBelowOne ? start + 1 : dot + 1, &afterDot, 8);
    std::memcpy(start + 10 - isBelowOne, &last_, 8);
    return start + (count_ > point ? count_ + !isBelowOne : point);
  }

 private:
  int count_;
  char first_;
  std::uint64_t middle_;
  std::uint64_t last_;
};

/// From here on, plain digits would be read back as an integer that may differ from the double.
constexpr double firstInexactInteger = 9007199254740992.0;  // 2^53

/// For numbers that are larger or smaller than usual.
[[gnu::noinline]] char* writeUnusual(char* target, const SeventeenDigits& digits, int point,
                                     bool isExactInteger) noexcept {
  const int count = digits.count();
  if (point >= count && isExactInteger) {
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

template <class Number>
[[gnu::always_inline]] inline char* writeShortest(char* target, Number number) noexcept {
  *target = '-';
  target += std::signbit(number);
  number = std::abs(number);
  if (number == 0) {
    *target = '0';
    return target + 1;
  }
  const ShortestDecimal decimal = shortestDecimal(number);
  const SeventeenDigits digits(decimal.digits);
  const int point = decimal.point;  // how many digits stand before the point
  if (point > -6 && point <= 8) [[likely]]
    return digits.writePlainly(target, point);
  return writeUnusual(target, digits, point, number < firstInexactInteger);
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
