#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>

#include <cstddef>

/// Changes that accept nil. On a nil array all of them do nothing and answer nil. One thread at a
/// time, as the array.
namespace zeb {

/// Adds the object at the end unless it is nil; `zeb_pushBack` is the same.
void zeb_addObjectIfNotNil(NSMutableArray array, const Value& object);
void zeb_pushBack(NSMutableArray array, const Value& object);
/// Inserts the object unless it is nil; at the end if the index is at or past it.
void zeb_insertObjectIfNotNil(NSMutableArray array, const Value& object, std::size_t index);
void zeb_pushFront(NSMutableArray array, const Value& object);
/// Inserts the object unless it is nil into an array that the comparator's order sorts already, by
/// a binary search: behind the elements that are equal to it. See `NSArray::indexOfObject` for what
/// it throws.
void zeb_insertObjectIfNotNil(NSMutableArray array, const Value& object, NSComparator comparator);

/// Remove the last or the first element and answer it; nil if the array is empty. Constant time.
Value zeb_popBack(NSMutableArray array);
Value zeb_popFront(NSMutableArray array);

/// Sorts as `zeb_sortedArray`. If that throws, the array keeps its order.
void zeb_sort(NSMutableArray array);
/// Keeps the first of each group of equal elements, as `zeb_arrayByRemovingDuplicates`.
void zeb_removeDuplicates(NSMutableArray array);

}  // namespace zeb
