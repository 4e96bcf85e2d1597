#include <ZEBPlatform/Foundation/detail/NumberText.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

namespace zeb::detail {

namespace {

bool isDigit(char character) noexcept { return character >= '0' && character <= '9'; }

std::string_view withoutLeadingSpace(std::string_view text) noexcept {
  const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

/// Takes a sign off the front; whether it was a minus.
bool takeSign(std::string_view& text) noexcept {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  const bool minus = text.front() == '-';
  text.remove_prefix(1);
  return minus;
}

template <class Number>
std::string shortest(Number number) {
  if (std::isnan(number)) return "nan";
  char buffer[32];
  const std::to_chars_result result = std::to_chars(buffer, buffer + sizeof buffer, number);
  return std::string(buffer, result.ptr);
}

}  // namespace

std::int64_t leadingInteger(std::string_view text, std::int64_t lowest,
                            std::int64_t highest) noexcept {
  text = withoutLeadingSpace(text);
  const bool minus = takeSign(text);
  std::int64_t value = 0;  // negative, because the negative range is larger by one
  for (const char character : text) {
    if (!isDigit(character)) break;
    if (__builtin_mul_overflow(value, std::int64_t{10}, &value) ||
        __builtin_sub_overflow(value, std::int64_t{character - '0'}, &value)) {
      return minus ? lowest : highest;
    }
  }
  if (minus) return value < lowest ? lowest : value;
  return value < -highest ? highest : -value;
}

double leadingDouble(std::string_view text) noexcept {
  text = withoutLeadingSpace(text);
  const bool minus = takeSign(text);
  // The conversion would take words such as "inf", which do not count as numbers here.
  const bool startsWithNumber =
      !text.empty() &&
      (isDigit(text.front()) || (text.front() == '.' && text.size() > 1 && isDigit(text[1])));
  if (!startsWithNumber) return 0;
  double value = 0;
  const std::from_chars_result result =
      std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    const bool isTiny = isTinyDecimal({text.data(), result.ptr});
    value = isTiny ? 0 : std::numeric_limits<double>::infinity();
  }
  return minus ? -value : value;
}

bool leadingBoolean(std::string_view text) noexcept {
  text = withoutLeadingSpace(text);
  if (!text.empty() && std::string_view("YyTt").find(text.front()) != std::string_view::npos) {
    return true;
  }
  takeSign(text);
  const std::size_t nonZero = text.find_first_not_of('0');
  return nonZero != std::string_view::npos && isDigit(text[nonZero]);
}

bool isTinyDecimal(std::string_view number) noexcept {
  const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
  const std::string_view exponentText = number.substr(std::min(mark + 1, number.size()));
  const std::int64_t exponent = leadingInteger(exponentText, -1'000'000'000'000, 1'000'000'000'000);
  const std::string_view digits = number.substr(0, mark);
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const std::size_t first = digits.find_first_of("123456789");
  // The power of ten of the first digit that is not zero.
  const std::int64_t magnitude = first < point ? static_cast<std::int64_t>(point - first)
                                               : -static_cast<std::int64_t>(first - point);
  return magnitude + exponent < 0;
}

std::string shortestText(double number) { return shortest(number); }
std::string shortestText(float number) { return shortest(number); }

std::int64_t saturatedInteger(double number) noexcept {
  constexpr double end = 9223372036854775808.0;
  if (std::isnan(number)) return 0;
  if (number >= end) return std::numeric_limits<std::int64_t>::max();
  if (number < -end) return std::numeric_limits<std::int64_t>::min();
  return static_cast<std::int64_t>(number);
}

std::uint64_t saturatedUnsigned(double number) noexcept {
  constexpr double end = 18446744073709551616.0;
  if (!(number > 0)) return 0;
  if (number >= end) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(number);
}

}  // namespace zeb::detail
