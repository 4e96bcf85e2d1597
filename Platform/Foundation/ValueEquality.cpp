#include <Foundation/HashTable.h>
#include <Foundation/NSArray.h>
#include <Foundation/NSData.h>
#include <Foundation/NSDate.h>
#include <Foundation/NSDictionary.h>
#include <Foundation/NSSet.h>
#include <Foundation/NSString.h>
#include <Foundation/NSURL.h>
#include <Foundation/NumberOrder.h>
#include <Foundation/TreeWalk.h>

#include <bit>
#include <utility>
#include <vector>

namespace zeb {

namespace {

/// Collections as keys of collections as keys …: the only way in which comparing recurses.
constexpr int deepestKeyNesting = 64;
thread_local int keyNesting = 0;

using Pair = std::pair<const Value*, const Value*>;

bool equalLeaves(const Value& left, const Value& right) noexcept {
  switch (left.kind()) {
    case ValueKind::Null:
      return true;
    case ValueKind::Date:
      return std::bit_cast<double>(left.payload()) == std::bit_cast<double>(right.payload());
    case ValueKind::String:
      return detail::equalStrings(*left.storageAs<detail::StringStorage>(),
                                  *right.storageAs<detail::StringStorage>());
    case ValueKind::URL:
      return NSURL(left).absoluteString().isEqual(NSURL(right).absoluteString());
    case ValueKind::Data:
      return NSData(left).view() == NSData(right).view();
    case ValueKind::Object:
      return left.objectPointer()->isEqual(*right.objectPointer());
    default:
      return false;
  }
}

/// Compares what can be compared at once, and puts the rest of the work aside.
bool equalSoFar(const Value& left, const Value& right, std::vector<Pair>& rest) {
  if (left.isNil() || right.isNil()) return false;
  if (left.isNumber() && right.isNumber()) return detail::orderNumbers(left, right) == 0;
  if (left.kind() != right.kind()) return false;
  if (left.isCounted() && left.payload() == right.payload()) return true;
  if (left.isArray()) {
    const NSArray one(left);
    const NSArray other(right);
    if (one.count() != other.count()) return false;
    for (std::size_t index = 0; index < one.count(); ++index) {
      rest.emplace_back(one.begin() + index, other.begin() + index);
    }
    return true;
  }
  if (left.isDictionary() || left.isSet()) {
    const auto& one = *left.storageAs<detail::DictionaryStorage>();
    const auto& other = *right.storageAs<detail::DictionaryStorage>();
    if (one.count != other.count) return false;
    for (std::uint32_t position = 0; position < one.used; ++position) {
      const DictionaryEntry& entry = one.entries[position];
      if (entry.key.isNil()) continue;
      const DictionaryEntry* match = detail::findEntry(other, entry.key);
      if (!match) return false;
      if (left.isDictionary()) rest.emplace_back(&entry.value, &match->value);
    }
    return true;
  }
  return equalLeaves(left, right);
}

/// Hash without looking into nested collections.
std::uint64_t shallowHash(const Value& value) noexcept {
  const auto kind = static_cast<std::uint64_t>(value.kind());
  switch (value.kind()) {
    case ValueKind::Nil:
      return 0;
    case ValueKind::Boolean:
    case ValueKind::SignedInteger:
    case ValueKind::UnsignedInteger:
    case ValueKind::Float:
    case ValueKind::Double:
      return detail::hashOfNumber(value);
    case ValueKind::Null:
      return kind;
    case ValueKind::Date: {
      const double seconds = std::bit_cast<double>(value.payload());
      return detail::mixHash(kind, seconds == 0 ? 0 : value.payload());  // -0 equals 0
    }
    case ValueKind::String:
      return detail::hashOfString(*value.storageAs<detail::StringStorage>());
    case ValueKind::URL:
      return detail::mixHash(kind, NSURL(value).absoluteString().hash());
    case ValueKind::Data: {
      const std::string_view start = NSData(value).view().substr(0, 80);
      return detail::mixHash(NSData(value).length(),
                             detail::hashOfUTF8(start.data(), start.size()));
    }
    case ValueKind::Array:
      return detail::mixHash(kind, value.storageAs<detail::ArrayStorage>()->count);
    case ValueKind::Dictionary:
    case ValueKind::Set:
      return detail::mixHash(kind, value.storageAs<detail::DictionaryStorage>()->count);
    case ValueKind::Object:
      return value.objectPointer()->hash();
  }
  return 0;
}

/// Looks into so many levels of arrays and at so many elements in all.
std::uint64_t sampledHash(const Value& value, int levels, std::size_t& budget) noexcept {
  std::uint64_t hash = shallowHash(value);
  if (levels == 0) return hash;
  if (value.isArray()) {
    for (const Value& element : NSArray(value)) {
      if (budget == 0) break;
      --budget;
      hash = detail::mixHash(hash, sampledHash(element, levels - 1, budget));
    }
  } else if (value.isDictionary() || value.isSet()) {
    // A sum, because equal tables may have different orders; so all keys take part.
    const auto& table = *value.storageAs<detail::DictionaryStorage>();
    std::uint64_t sum = 0;
    for (std::uint32_t position = 0; position < table.used; ++position) {
      if (!table.entries[position].key.isNil()) sum += shallowHash(table.entries[position].key);
    }
    hash = detail::mixHash(hash, sum);
  }
  return hash;
}

}  // namespace

bool Value::isEqual(const Value& other) const noexcept {
  std::vector<Pair> rest;
  if (!isArray() && !isDictionary() && !isSet()) return equalSoFar(*this, other, rest);
  if (keyNesting == deepestKeyNesting) return isIdenticalTo(other);
  ++keyNesting;
  bool equal = equalSoFar(*this, other, rest);
  while (equal && !rest.empty()) {
    const auto [left, right] = rest.back();
    rest.pop_back();
    equal = equalSoFar(*left, *right, rest);
  }
  --keyNesting;
  return equal;
}

bool Value::isIdenticalTo(const Value& other) const noexcept {
  return kind() == other.kind() && typeCode() == other.typeCode() && payload_ == other.payload_;
}

std::size_t Value::hash() const noexcept {
  std::size_t budget = 32;
  return sampledHash(*this, 4, budget);
}

}  // namespace zeb
