#include <ZEBPlatform/Foundation/ArraySortingPrivate.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/detail/ArrayEnumeration.h>
#include <ZEBPlatform/Foundation/detail/NaturalOrder.h>
#include <ZEBPlatform/Foundation/detail/StableSort.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <numeric>
#include <span>
#include <string_view>

namespace zeb::detail {

namespace {

/// An element's position, and a number that begins the comparison: elements with different keys
/// have the order of their keys.
struct KeyedPosition {
  std::uint64_t key;
  std::uint32_t position;
};

/// Numbers in their order, not-a-number first and the two zeros equal. Conversion of an integer to
/// a double can make different ones equal, but does not change their order.
std::uint64_t keyOfDouble(double number) noexcept {
  if (std::isnan(number)) return 0;
  const auto bits = std::bit_cast<std::uint64_t>(number + 0.0);
  constexpr std::uint64_t sign = std::uint64_t{1} << 63;
  return bits & sign ? ~bits : bits | sign;
}

std::uint64_t keyOfNumber(const Value& number) noexcept {
  if (number.kind() == ValueKind::UnsignedInteger) {
    return keyOfDouble(static_cast<double>(number.payload()));
  }
  return keyOfDouble(number.doubleValue());
}

std::string_view asciiOf(const Value& string) noexcept {
  const auto& text = *string.storageAs<StringStorage>();
  return {text.ascii(), text.length};
}

/// The length of the text with which all of these ASCII strings begin.
std::size_t commonPrefixLength(std::span<const Value> strings) noexcept {
  const std::string_view first = asciiOf(strings[0]);
  std::size_t length = first.size();
  for (const Value& string : strings.subspan(1)) {
    const std::string_view text = asciiOf(string);
    if (text.substr(0, length) == first.substr(0, length)) continue;
    const auto end = std::ranges::mismatch(first.substr(0, length), text).in1;
    length = static_cast<std::size_t>(end - first.begin());
  }
  return length;
}

/// Up to eight bytes of an ASCII string.
std::uint64_t keyOfBytes(std::string_view text) noexcept {
  static_assert(std::endian::native == std::endian::little);
  std::uint64_t key = 0;
  if (text.size() >= sizeof key) {
    std::memcpy(&key, text.data(), sizeof key);
  } else {
    std::memcpy(&key, text.data(), text.size());
  }
  return __builtin_bswap64(key);
}

/// The first four units of any string.
std::uint64_t keyOfUnits(const Value& string) noexcept {
  const auto& text = *string.storageAs<StringStorage>();
  std::uint64_t key = 0;
  for (std::uint32_t index = 0; index < 4; ++index) {
    key <<= 16;
    if (index >= text.length) continue;
    key |= text.isWide() ? text.units()[index] : static_cast<unsigned char>(text.ascii()[index]);
  }
  return key;
}

NSComparisonResult orderStrings(const Value& left, const Value& right) noexcept {
  return NSString(left).compare(NSString(right));
}

template <class KeyOf, class OrderOf>
std::vector<std::uint32_t> orderByKeys(std::span<const Value> elements, const KeyOf& keyOf,
                                       const OrderOf& orderOf) {
  std::vector<KeyedPosition> records(elements.size());
  for (std::uint32_t position = 0; position < elements.size(); ++position) {
    records[position] = {keyOf(elements[position]), position};
  }
  stableSort(std::span(records), [&](const KeyedPosition& left, const KeyedPosition& right) {
    if (left.key != right.key) [[likely]]
      return left.key < right.key;
    return orderOf(elements[left.position], elements[right.position]) < 0;
  });
  std::vector<std::uint32_t> order(records.size());
  std::ranges::transform(records, order.begin(), &KeyedPosition::position);
  return order;
}

std::vector<std::uint32_t> naturallySortedOrder(std::span<const Value> elements) {
  if (elements.empty()) return {};
  if (elements[0].isNumber()) {
    return orderByKeys(elements, keyOfNumber, [](const Value& left, const Value& right) {
      return NSNumber(left).compare(NSNumber(right));
    });
  }
  if (elements[0].isDate()) {
    const auto keyOf = [](const Value& date) {
      return keyOfDouble(std::bit_cast<double>(date.payload()));
    };
    return orderByKeys(elements, keyOf, [](const Value&, const Value&) { return NSOrderedSame; });
  }
  const bool isASCII = std::ranges::none_of(
      elements, [](const Value& string) { return string.storageAs<StringStorage>()->isWide(); });
  if (!isASCII) return orderByKeys(elements, keyOfUnits, orderStrings);
  const std::size_t prefix = commonPrefixLength(elements);
  const auto keyOf = [prefix](const Value& string) {
    return keyOfBytes(asciiOf(string).substr(prefix));
  };
  return orderByKeys(elements, keyOf, orderStrings);
}

}  // namespace

std::optional<NSComparisonResult> naturalOrder(const Value& left, const Value& right) noexcept {
  if (left.isString() && right.isString()) return orderStrings(left, right);
  if (left.isNumber() && right.isNumber()) return NSNumber(left).compare(NSNumber(right));
  if (left.isDate() && right.isDate()) return NSDate(left).compare(NSDate(right));
  return std::nullopt;
}

bool hasNaturalOrder(const NSArray& array) noexcept {
  const std::span elements(array.begin(), array.count());
  return std::ranges::all_of(elements, &Value::isString) ||
         std::ranges::all_of(elements, &Value::isNumber) ||
         std::ranges::all_of(elements, &Value::isDate);
}

std::vector<std::uint32_t> sortedOrder(const NSArray& array, NSComparator comparator) {
  if (!comparator) {
    if (!hasNaturalOrder(array)) {
      raiseInvalidArgument("without a comparator, only strings, numbers or dates can be sorted");
    }
    return naturallySortedOrder({array.begin(), array.count()});
  }
  const NSArray kept = array;  // the comparator may release the caller's handle
  const MutationCheck check(kept);
  const NSArray elements = kept.copy();  // which keeps the elements alive, too
  std::vector<std::uint32_t> order(elements.count());
  std::iota(order.begin(), order.end(), 0u);
  stableSort(std::span(order), [&](std::uint32_t left, std::uint32_t right) {
    const auto result = comparator(elements.begin()[left], elements.begin()[right]);
    check.requireUnchanged();
    return result < 0;
  });
  return order;
}

}  // namespace zeb::detail
