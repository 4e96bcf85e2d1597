#pragma once

#include <Foundation/NSArray.h>
#include <Foundation/NSDictionary.h>
#include <Foundation/NSSet.h>
#include <Foundation/TreeWalk.h>

#include <utility>
#include <vector>

namespace zeb::detail {

/// Makes the immutable value out of a mutable collection that nobody else holds, without copying.
inline Value frozen(Value collection) noexcept {
  collection.storage()->flags &= static_cast<std::uint8_t>(~StorageMutable);
  return collection;
}

/// See `rebuildTree`.
template <class MapLeaf, class FinishCollection>
class TreeRebuild {
 public:
  TreeRebuild(const MapLeaf& mapLeaf, const FinishCollection& finishCollection)
      : mapLeaf_(mapLeaf), finishCollection_(finishCollection) {}

  Value of(const Value& root) {
    walkTree(root, *this);
    return std::move(result_);
  }

  bool enter(const Value& collection, std::size_t) {
    Level level;
    level.key = std::move(pendingKey_);
    if (collection.isArray()) {
      level.collection = NSMutableArray::arrayWithCapacity(NSArray(collection).count());
    } else if (collection.isDictionary()) {
      level.collection = NSMutableDictionary::dictionaryWithCapacity(NSDictionary(collection).count());
    } else {
      level.collection = NSMutableSet();
    }
    levels_.push_back(std::move(level));
    return true;
  }

  void leave(const Value&, std::size_t) {
    Level done = std::move(levels_.back());
    levels_.pop_back();
    pendingKey_ = std::move(done.key);
    add(finishCollection_(std::move(done.collection)));
  }

  void element(std::size_t) {}
  void key(const Value& key, std::size_t) { pendingKey_ = mapLeaf_(key); }
  void leaf(const Value& value) { add(mapLeaf_(value)); }

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
    } else if (!key.isNil()) {
      NSMutableDictionary::from(parent).setObject(std::move(value), key);
    }
  }

  const MapLeaf& mapLeaf_;
  const FinishCollection& finishCollection_;
  std::vector<Level> levels_;
  Value pendingKey_;
  Value result_;
};

/// A new tree of the same shape as `root`: every collection is built anew, every leaf and dictionary
/// key is what `mapLeaf` answers for it; nil drops the element or entry. `finishCollection` turns each
/// filled mutable collection into what the new tree holds. Any depth, no recursion (a collection that
/// serves as a dictionary key goes through `mapLeaf` too).
template <class MapLeaf, class FinishCollection>
Value rebuildTree(const Value& root, const MapLeaf& mapLeaf,
                  const FinishCollection& finishCollection) {
  return TreeRebuild<MapLeaf, FinishCollection>(mapLeaf, finishCollection).of(root);
}

}  // namespace zeb::detail
