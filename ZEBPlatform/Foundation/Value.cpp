#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Foundation/detail/NumberText.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <ostream>

namespace zeb {

namespace {

/// The leading ASCII characters of a text, which are all that the numeric readings use.
std::string asciiPrefix(const detail::StringStorage& text) {
  std::string prefix;
  if (!text.isWide()) return std::string(text.ascii(), text.length);
  for (const char16_t unit : std::u16string_view(text.units(), text.length)) {
    if (unit >= 0x80) break;
    prefix.push_back(static_cast<char>(unit));
  }
  return prefix;
}

/// Calls `read` with the leading ASCII characters of a string value.
template <class Read>
auto readString(const Value& value, const Read& read) {
  const auto& text = *value.storageAs<detail::StringStorage>();
  if (!text.isWide()) return read(std::string_view(text.ascii(), text.length));
  return read(std::string_view(asciiPrefix(text)));
}

float inlineFloat(const Value& value) noexcept {
  return std::bit_cast<float>(static_cast<std::uint32_t>(value.payload()));
}

/// The number in a value that is a float or a double.
double inlineNumber(const Value& value) noexcept {
  return value.kind() == ValueKind::Float ? double{inlineFloat(value)}
                                          : std::bit_cast<double>(value.payload());
}

}  // namespace

// A float is stored as its own bits: converting it to a double and back would change some.
Value::Value(float number) noexcept
    : head_(headOf(Kind::Float, 'f')), payload_(std::bit_cast<std::uint32_t>(number)) {}

Value::Value(double number) noexcept
    : head_(headOf(Kind::Double, 'd')), payload_(std::bit_cast<std::uint64_t>(number)) {}

bool Value::boolValue() const noexcept {
  switch (kind()) {
    case Kind::Boolean:
    case Kind::SignedInteger:
    case Kind::UnsignedInteger:
      return payload_ != 0;
    case Kind::Float:
    case Kind::Double:
      return inlineNumber(*this) != 0;
    case Kind::String:
      return readString(*this, detail::leadingBoolean);
    default:
      return false;
  }
}

std::int32_t Value::intValue() const noexcept {
  using Limits = std::numeric_limits<std::int32_t>;
  switch (kind()) {
    case Kind::Float:
    case Kind::Double: {
      const double number = inlineNumber(*this);
      if (number >= Limits::max()) return Limits::max();
      if (number <= Limits::min()) return Limits::min();
      return static_cast<std::int32_t>(detail::saturatedInteger(number));
    }
    case Kind::String:
      return readString(*this, [](std::string_view text) {
        return static_cast<std::int32_t>(
            detail::leadingInteger(text, Limits::min(), Limits::max()));
      });
    default:
      return static_cast<std::int32_t>(longLongValue());
  }
}

std::int64_t Value::convertedInteger() const noexcept {
  using Limits = std::numeric_limits<std::int64_t>;
  switch (kind()) {
    case Kind::Float:
    case Kind::Double:
      return detail::saturatedInteger(inlineNumber(*this));
    case Kind::String:
      return readString(*this, [](std::string_view text) {
        return detail::leadingInteger(text, Limits::min(), Limits::max());
      });
    default:
      return 0;
  }
}

float Value::floatValue() const noexcept {
  // Integers are rounded only once: by way of a double, some would be wrong by one step.
  if (kind() == Kind::SignedInteger) return static_cast<float>(static_cast<std::int64_t>(payload_));
  if (kind() == Kind::UnsignedInteger) return static_cast<float>(payload_);
  if (kind() == Kind::Float) return inlineFloat(*this);
  const double number = doubleValue();
  using Limits = std::numeric_limits<float>;
  // From half a step beyond the largest float on, rounding gives infinity, but the conversion
  // itself would be undefined for all numbers beyond the largest float.
  constexpr double end = 0x1.ffffffp127;
  if (number >= end) return Limits::infinity();
  if (number <= -end) return -Limits::infinity();
  return static_cast<float>(std::clamp<double>(number, Limits::lowest(), Limits::max()));
}

double Value::doubleValue() const noexcept {
  switch (kind()) {
    case Kind::Boolean:
    case Kind::SignedInteger:
      return static_cast<double>(static_cast<std::int64_t>(payload_));
    case Kind::UnsignedInteger:
      return static_cast<double>(payload_);
    case Kind::Float:
    case Kind::Double:
      return inlineNumber(*this);
    case Kind::String:
      return readString(*this, detail::leadingDouble);
    default:
      return 0;
  }
}

std::uint64_t NSNumber::unsignedLongLongValue() const noexcept {
  switch (kind()) {
    case Kind::Float:
    case Kind::Double:
      return detail::saturatedUnsigned(inlineNumber(*this));
    default:
      return payload();
  }
}

bool NSNumber::isSigned64() const noexcept {
  return kind() == Kind::SignedInteger ||
         (kind() == Kind::UnsignedInteger &&
          payload() <= std::uint64_t{std::numeric_limits<std::int64_t>::max()});
}

NSString NSNumber::stringValue() const { return description(); }

std::ostream& operator<<(std::ostream& stream, const Value& value) {
  return stream << value.description().utf8();
}

}  // namespace zeb
