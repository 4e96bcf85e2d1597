#include <Foundation/HashTable.h>
#include <Foundation/NSArray.h>
#include <Foundation/NSData.h>
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

}  // namespace zeb
