#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/detail/ArrayBuilder.h>
#include <ZEBPlatform/Foundation/detail/ArrayEnumeration.h>
#include <ZEBPlatform/Foundation/detail/DistinctElements.h>
#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>

#include <algorithm>
#include <span>
#include <unordered_set>
#include <vector>

namespace zeb {

namespace {

std::span<const Value> elementsOf(const NSArray& array) noexcept {
  return {array.begin(), array.count()};
}

/// The nested arrays that a flattening is inside of.
class FlatteningPath {
 public:
  struct Level {
    const Value* next;
    const Value* end;
    const void* mutableArray;  ///< null for an immutable array, which cannot contain itself
  };

  void enter(const Value& array) {
    const auto& storage = *array.storageAs<detail::ArrayStorage>();
    const void* const mutableArray = array.isMutable() ? &storage : nullptr;
    if (mutableArray && !mutableArrays_.insert(mutableArray).second) {
      raiseInvalidArgument("an array that contains itself cannot be flattened");
    }
    levels_.push_back({storage.values(), storage.values() + storage.count, mutableArray});
  }

  /// The next element of the innermost array, or null at the end of all.
  const Value* next() {
    while (!levels_.empty()) {
      Level& level = levels_.back();
      if (level.next != level.end) return level.next++;
      if (level.mutableArray) mutableArrays_.erase(level.mutableArray);
      levels_.pop_back();
    }
    return nullptr;
  }

 private:
  std::vector<Level> levels_;
  std::unordered_set<const void*> mutableArrays_;
};

}  // namespace

NSArray zeb_arrayByConcatenatingArrays(const NSArray& arrays) {
  std::size_t count = 0;
  for (const Value& array : elementsOf(arrays)) {
    if (!array.isArray()) raiseInvalidArgument("only arrays can be concatenated");
    count += NSArray(array).count();
  }
  detail::ArrayBuilder all(count);
  for (const Value& array : elementsOf(arrays)) all.append(elementsOf(NSArray(array)));
  return all.finish();
}

NSArray zeb_arrayByRemovingDuplicates(const NSArray& array) {
  if (array.isNil()) return nullptr;
  const NSArray kept = array;
  const detail::MutationCheck check(kept);  // comparing elements may run code of others
  const NSArray elements = kept.copy();
  const std::vector<std::uint32_t> positions = detail::distinctPositions(elementsOf(elements));
  check.requireUnchanged();
  detail::ArrayBuilder distinct(positions.size());
  for (const std::uint32_t position : positions) distinct.append(elements.begin()[position]);
  return distinct.finish();
}

NSArray zeb_arrayByRemovingAdjacenciesFailingTest(
    const NSArray& array, FunctionView<bool(const Value& lastKept, const Value& element)> block) {
  if (array.isNil()) return nullptr;
  detail::ArrayBuilder kept(array.count());
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    if (kept.elements().empty() || block(kept.elements().back(), element)) kept.append(element);
    return true;
  });
  return kept.finish();
}

NSArray zeb_arrayByRemovingFirstObjectFailingTest(const NSArray& array,
                                                  FunctionView<bool(const Value& element)> block) {
  return zeb_filterWithBlockWithEarlyStop(array, [&](const Value& element, bool& stop) {
    const bool passes = block(element);
    stop = !passes;
    return passes;
  });
}

NSArray zeb_arrayByRemovingFirstObjectIdenticalTo(const NSArray& array, const Value& object) {
  return zeb_arrayByRemovingFirstObjectFailingTest(
      array, [&](const Value& element) { return !element.isIdenticalTo(object); });
}

NSArray zeb_arrayByRemovingLastObject(const NSArray& array) {
  return array.subarrayWithRange({0, array.count() - 1});
}

NSArray zeb_arrayByRemovingObjectsAtIndexes(const NSArray& array, const NSIndexSet& indexes) {
  if (array.isNil() || indexes.count() == 0) return array;
  if (indexes.lastIndex() >= array.count()) raiseRange(indexes.lastIndex(), array.count());
  const auto elements = elementsOf(array);
  detail::ArrayBuilder kept(elements.size() - indexes.count());
  std::size_t next = 0;
  for (const NSRange& range : indexes.ranges()) {
    kept.append(elements.subspan(next, range.location - next));
    next = range.location + range.length;
  }
  kept.append(elements.subspan(next));
  return kept.finish();
}

NSArray zeb_arrayByReplacingFirstOccurrenceOfObject(const NSArray& array, const Value& object,
                                                    const Value& replacement) {
  if (object.isNil() || replacement.isNil()) return array;
  const NSArray kept = array;  // comparing elements may assign to the caller's handles
  const Value inserted = replacement;
  const std::size_t found = kept.indexOfObject(object);
  if (found == NSNotFound) return kept;
  const auto elements = elementsOf(kept);
  detail::ArrayBuilder replaced(elements.size());
  replaced.append(elements.first(found));
  replaced.append(inserted);
  replaced.append(elements.subspan(found + 1));
  return replaced.finish();
}

NSArray zeb_subarrayWithAtMost(const NSArray& array, std::size_t count) {
  if (array.count() <= count) return array.copy();
  return array.subarrayWithRange({0, count});
}

NSArray zeb_subarrayWithAtMostFromEnd(const NSArray& array, std::size_t count) {
  if (array.count() <= count) return array.copy();
  return array.subarrayWithRange({array.count() - count, count});
}

NSArray zeb_slice(const NSArray& array, NSRange range) {
  if (array.isNil()) return nullptr;
  if (range.location >= array.count()) return NSArray::array();
  const std::size_t length = std::min(range.length, array.count() - range.location);
  return array.subarrayWithRange({range.location, length});
}

NSArray zeb_flattenedArray(const NSArray& array) {
  if (array.isNil()) return nullptr;
  detail::ArrayBuilder flat(array.count());
  FlatteningPath path;
  path.enter(array);
  while (const Value* element = path.next()) {
    if (element->isArray()) {
      path.enter(*element);
    } else {
      flat.append(*element);
    }
  }
  return flat.finish();
}

NSArray zeb_reversedArray(const NSArray& array) {
  if (array.isNil()) return nullptr;
  detail::ArrayBuilder reversed(array.count());
  for (std::size_t index = array.count(); index > 0; --index) {
    reversed.append(array.begin()[index - 1]);
  }
  return reversed.finish();
}

NSMutableArray zeb_arrayByRemovingInvalidPropertyListObjects(const NSArray& array) {
  return NSMutableArray::from(_zeb_propertyListObjectForObject(array));
}

}  // namespace zeb
