#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NumberOrderPrivate.h>
#include <ZEBPlatform/Foundation/detail/StringHash.h>

#include <bit>
#include <cmath>

namespace zeb {

namespace detail {

namespace {

/// An integer of either sign, wide enough for both 64-bit kinds.
struct Integer {
  bool negative;
  std::uint64_t bits;  ///< two's complement

  friend std::strong_ordering operator<=>(const Integer& left, const Integer& right) noexcept {
    if (left.negative != right.negative) {
      return left.negative ? std::strong_ordering::less : std::strong_ordering::greater;
    }
    return left.bits <=> right.bits;
  }
};

bool isFloating(const Value& number) noexcept {
  return number.kind() == ValueKind::Float || number.kind() == ValueKind::Double;
}

Integer integerOf(const Value& number) noexcept {
  const std::uint64_t bits = number.payload();
  return {number.kind() == ValueKind::SignedInteger && static_cast<std::int64_t>(bits) < 0, bits};
}

constexpr double signedEnd = 9223372036854775808.0;     // 2^63
constexpr double unsignedEnd = 18446744073709551616.0;  // 2^64

/// Order of an integer and a double; neither is rounded.
std::partial_ordering orderMixed(Integer integer, double number) noexcept {
  if (std::isnan(number)) return std::partial_ordering::unordered;
  if (number >= unsignedEnd) return std::partial_ordering::less;
  if (number < -signedEnd) return std::partial_ordering::greater;
  const double whole = std::floor(number);
  const Integer floored =
      whole < 0 ? Integer{true, static_cast<std::uint64_t>(static_cast<std::int64_t>(whole))}
                : Integer{false, static_cast<std::uint64_t>(whole)};
  const std::strong_ordering order = integer <=> floored;
  if (order == 0 && whole != number) return std::partial_ordering::less;
  return order;
}

}  // namespace

std::partial_ordering orderNumbers(const Value& left, const Value& right) noexcept {
  const bool leftFloats = isFloating(left);
  const bool rightFloats = isFloating(right);
  if (leftFloats && rightFloats) return left.doubleValue() <=> right.doubleValue();
  if (rightFloats) return orderMixed(integerOf(left), right.doubleValue());
  if (leftFloats) return 0 <=> orderMixed(integerOf(right), left.doubleValue());
  return integerOf(left) <=> integerOf(right);
}

std::size_t hashOfNumber(const Value& number) noexcept {
  std::uint64_t bits = number.payload();
  if (isFloating(number)) {
    const double value = number.doubleValue();
    const bool isInteger = value >= -signedEnd && value < unsignedEnd && std::floor(value) == value;
    if (!isInteger) {
      bits = std::bit_cast<std::uint64_t>(value);
    } else {
      bits = value < 0 ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value))
                       : static_cast<std::uint64_t>(value);
    }
  }
  return mixHash(0, bits);
}

}  // namespace detail

NSComparisonResult NSNumber::compare(const NSNumber& other) const noexcept {
  if (isNil() || other.isNil()) {
    if (isNil() && other.isNil()) return NSOrderedSame;
    return isNil() ? NSOrderedAscending : NSOrderedDescending;
  }
  const std::partial_ordering order = detail::orderNumbers(*this, other);
  if (order < 0) return NSOrderedAscending;
  if (order > 0) return NSOrderedDescending;
  if (order == 0) return NSOrderedSame;
  const bool leftIsNumber = !std::isnan(doubleValue());
  const bool rightIsNumber = !std::isnan(other.doubleValue());
  if (leftIsNumber == rightIsNumber) return NSOrderedSame;
  return leftIsNumber ? NSOrderedDescending : NSOrderedAscending;
}

}  // namespace zeb
