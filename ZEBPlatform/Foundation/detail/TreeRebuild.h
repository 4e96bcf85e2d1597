#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSOrderedSet.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/detail/TreeWalk.h>

#include <utility>
#include <vector>

namespace zeb::detail {

/// Turns a mutable collection that has no other owner into an immutable value, without copying.
inline Value frozen(Value collection) noexcept {
  collection.storage()->flags &= static_cast<std::uint8_t>(~StorageMutable);
  return collection;
}

/// How a tree is rebuilt. Derived rules hide the functions that they replace.
struct TreeRules {
  /// The replacement for a leaf or a dictionary key (which may be a collection); nil drops the
  /// element or entry.
  static Value leaf(const Value& value) { return value; }
  /// Whether a collection at this depth goes into the new tree.
  static bool keeps(const Value&, std::size_t) { return true; }
  /// The replacement for a collection, made from the filled mutable one.
  static Value finished(Value collection) { return frozen(std::move(collection)); }
};

/// See `rebuildTree`.
template <class Rules>
class TreeRebuild {
 public:
  explicit TreeRebuild(const Rules& rules) : rules_(rules) {}

  Value of(const Value& root) {
    walkTree(root, *this);
    return std::move(result_);
  }

  bool enter(const Value& collection, std::size_t depth) {
    if (!rules_.keeps(collection, depth)) return false;
    Level level;
    level.key = std::move(pendingKey_);
    if (collection.isArray()) {
      level.collection = NSMutableArray::arrayWithCapacity(NSArray(collection).count());
    } else if (collection.isDictionary()) {
      level.collection =
          NSMutableDictionary::dictionaryWithCapacity(NSDictionary(collection).count());
    } else if (collection.isSet()) {
      level.collection = NSMutableSet();
    } else {
      level.collection = NSMutableOrderedSet();
    }
    levels_.push_back(std::move(level));
    return true;
  }

  void leave(const Value&, std::size_t) {
    Level done = std::move(levels_.back());
    levels_.pop_back();
    pendingKey_ = std::move(done.key);
    add(rules_.finished(std::move(done.collection)));
  }

  void element(std::size_t) {}
  void key(const Value& key, std::size_t) { pendingKey_ = rules_.leaf(key); }
  void leaf(const Value& value) { add(rules_.leaf(value)); }

 private:
  struct Level {
    Value collection;
    Value key;  ///< under which the collection goes into the one above
  };

  void add(Value value) {
    if (levels_.empty()) {
      result_ = std::move(value);
      return;
    }
    const Value& parent = levels_.back().collection;
    const Value key = std::move(pendingKey_);
    if (value.isNil()) return;
    if (parent.isArray()) {
      NSMutableArray::from(parent).addObject(std::move(value));
    } else if (parent.isSet()) {
      NSMutableSet::from(parent).addObject(value);
    } else if (parent.isOrderedSet()) {
      NSMutableOrderedSet::from(parent).addObject(value);
    } else if (!key.isNil()) {
      NSMutableDictionary::from(parent).setObject(std::move(value), key);
    }
  }

  const Rules& rules_;
  std::vector<Level> levels_;
  Value pendingKey_;
  Value result_;
};

/// A new tree of the same shape as `root`, in which every collection is built anew by the rules.
/// Any depth, without recursion.
template <class Rules>
Value rebuildTree(const Value& root, const Rules& rules) {
  return TreeRebuild<Rules>(rules).of(root);
}

}  // namespace zeb::detail
