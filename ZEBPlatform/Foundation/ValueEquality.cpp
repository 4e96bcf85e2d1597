#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/NumberOrderPrivate.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>

#include <array>
#include <bit>
#include <utility>
#include <vector>

namespace zeb {

namespace {

/// Comparing recurses only for collections that are keys of collections that are keys, and so on.
/// This limits it.
constexpr int maxKeyNesting = 64;
thread_local int keyNesting = 0;

struct KeyNestingScope {
  KeyNestingScope() noexcept { ++keyNesting; }
  ~KeyNestingScope() { --keyNesting; }
};

/// Two collections of one kind and size that are being compared.
struct Level {
  const Value* left;
  const Value* right;
  std::uint32_t position;  ///< of the left one's next element or entry
};

/// A stack of levels. The first ones take no memory from the heap.
class Levels {
 public:
  bool isEmpty() const noexcept { return count_ == 0; }
  Level& top() noexcept {
    return count_ <= near_.size() ? near_[count_ - 1] : far_[count_ - 1 - near_.size()];
  }
  void push(const Value& left, const Value& right) {
    const Level level{&left, &right, 0};
    if (count_ < near_.size()) {
      near_[count_] = level;
    } else {
      far_.push_back(level);
    }
    ++count_;
  }
  void pop() noexcept {
    if (count_ > near_.size()) far_.pop_back();
    --count_;
  }

 private:
  std::array<Level, 32> near_;
  std::vector<Level> far_;
  std::size_t count_ = 0;
};

bool equalLeaves(const Value& left, const Value& right) {
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

enum class Comparison { different, equal, byElements };

/// Compares two values without looking into collections.
Comparison compareShallowly(const Value& left, const Value& right) {
  const auto result = [](bool equal) { return equal ? Comparison::equal : Comparison::different; };
  if (left.isNil() || right.isNil()) return Comparison::different;
  const bool isSameInteger = left.payload() == right.payload() && left.kind() == right.kind() &&
                             left.kind() <= ValueKind::UnsignedInteger;
  if (isSameInteger) return Comparison::equal;
  if (left.isNumber() && right.isNumber()) return result(detail::orderNumbers(left, right) == 0);
  if (left.kind() != right.kind()) return Comparison::different;
  if (left.isCounted() && left.payload() == right.payload()) return Comparison::equal;
  const auto bySizes = [](std::uint32_t one, std::uint32_t other) {
    return one == other ? Comparison::byElements : Comparison::different;
  };
  if (left.isArray()) {
    return bySizes(left.storageAs<detail::ArrayStorage>()->count,
                   right.storageAs<detail::ArrayStorage>()->count);
  }
  if (left.isDictionary() || left.isSet() || left.isOrderedSet()) {
    return bySizes(left.storageAs<detail::DictionaryStorage>()->count,
                   right.storageAs<detail::DictionaryStorage>()->count);
  }
  return result(equalLeaves(left, right));
}

/// The next two values to compare: both null at the end of the collections, and only the left one
/// when the right collection lacks its key or member.
std::pair<const Value*, const Value*> nextPair(Level& level) {
  if (level.left->isArray()) {
    const auto& one = *level.left->storageAs<detail::ArrayStorage>();
    const auto& other = *level.right->storageAs<detail::ArrayStorage>();
    if (level.position == one.count) return {};
    const std::uint32_t position = level.position++;
    return {one.values() + position, other.values() + position};
  }
  const auto& one = *level.left->storageAs<detail::DictionaryStorage>();
  const auto& other = *level.right->storageAs<detail::DictionaryStorage>();
  if (level.left->isOrderedSet()) {
    if (level.position == one.count) return {};
    const std::uint32_t position = level.position++;
    return {&one.entries[position].key, &other.entries[position].key};
  }
  while (level.position < one.used) {
    const DictionaryEntry& entry = one.entries[level.position++];
    if (entry.key.isNil()) continue;
    // Records of one document share their keys, usually in the same order.
    const std::uint32_t position = level.position - 1;
    const bool isAtSamePlace =
        position < other.used && other.entries[position].key.isIdenticalTo(entry.key);
    const DictionaryEntry* match =
        isAtSamePlace ? &other.entries[position] : detail::findEntry(other, entry.key);
    if (!match) return {&entry.key, nullptr};
    if (level.left->isDictionary()) return {&entry.value, &match->value};
  }
  return {};
}

/// The equality of two collections for which `compareShallowly` answers `byElements`.
bool equalCollections(const Value& left, const Value& right) {
  Levels levels;
  levels.push(left, right);
  while (!levels.isEmpty()) {
    const auto [one, other] = nextPair(levels.top());
    if (!one) {
      levels.pop();
      continue;
    }
    if (!other) return false;
    const Comparison comparison = compareShallowly(*one, *other);
    if (comparison == Comparison::different) return false;
    if (comparison == Comparison::byElements) levels.push(*one, *other);
  }
  return true;
}

}  // namespace

bool Value::isEqual(const Value& other) const {
  const Comparison comparison = compareShallowly(*this, other);
  if (comparison != Comparison::byElements) return comparison == Comparison::equal;
  if (keyNesting == maxKeyNesting) return false;
  const KeyNestingScope scope;
  return equalCollections(*this, other);
}

bool Value::isIdenticalTo(const Value& other) const noexcept {
  return kind() == other.kind() && typeCode() == other.typeCode() && payload_ == other.payload_;
}

}  // namespace zeb
