#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>

namespace zeb {

/// A boolean, an integer of up to 64 bits, a float or a double, which remembers which of these it
/// is. Numbers of different type codes are equal if their values are.
class NSNumber : public Value {
 public:
  constexpr NSNumber() noexcept = default;
  constexpr NSNumber(std::nullptr_t) noexcept {}
  NSNumber(std::same_as<bool> auto boolean) noexcept : Value(boolean) {}
  template <std::integral Integer>
    requires(!std::same_as<Integer, bool>)
  NSNumber(Integer integer) noexcept : Value(integer) {}
  NSNumber(std::floating_point auto number) noexcept : Value(number) {}
  /// The value when it is a number, else nil.
  template <detail::ValueBeside<NSNumber> Source>
  explicit NSNumber(const Source& value) noexcept : Value(value.isNumber() ? value : Value()) {}

  /// The type code: c for a boolean or signed char; s i q for signed integers of 2, 4 and 8 bytes;
  /// their capitals for unsigned ones; f for a float, d for a double; 0 for nil.
  char objCType() const noexcept { return typeCode(); }

  /// The reading as unsigned 64-bit integer; negative integers wrap, doubles saturate.
  std::uint64_t unsignedLongLongValue() const noexcept;

  /// Whether it is an integer that fits a signed 64-bit one (booleans are not integers here).
  bool isSigned64() const noexcept;

  /// By value, exactly, across type codes; not-a-number sorts before everything.
  NSComparisonResult compare(const NSNumber& other) const noexcept;

  /// Decimal digits; doubles with the smallest number of digits that reads back as the same value;
  /// booleans as 1 and 0.
  NSString stringValue() const;
};

}  // namespace zeb
