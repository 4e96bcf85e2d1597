#include <ZEBPlatform/Foundation/ArraySortingPrivate.h>
#include <ZEBPlatform/Foundation/CollectionLimitPrivate.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/detail/ArrayBuilder.h>
#include <ZEBPlatform/Foundation/detail/ArrayEnumeration.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <vector>

namespace zeb {

namespace {

Value* allocateValues(std::size_t capacity) {
  detail::requireCollectionCount(capacity);
  auto* values =
      static_cast<Value*>(std::malloc(std::max<std::size_t>(capacity, 1) * sizeof(Value)));
  if (!values) throw std::bad_alloc();
  return values;
}

detail::MutableArrayStorage* newMutableArray(std::size_t capacity) {
  void* memory = std::malloc(sizeof(detail::MutableArrayStorage));
  if (!memory) throw std::bad_alloc();
  auto* array = new (memory) detail::MutableArrayStorage;
  try {
    if (capacity) array->buffer = allocateValues(capacity);
  } catch (...) {
    std::free(memory);
    throw;
  }
  array->capacity = static_cast<std::uint32_t>(capacity);
  return array;
}

void moveValues(Value* to, const Value* from, std::size_t count) noexcept {
  if (count == 0) return;  // an array without a buffer
  std::memmove(static_cast<void*>(to), static_cast<const void*>(from), count * sizeof(Value));
}

void freeBuffer(const detail::MutableArrayStorage& array) noexcept {
  if (array.buffer) std::free(array.buffer - array.headroom);
}

/// An immutable array with the elements in this order.
NSArray arrayInOrder(std::span<const Value> elements, std::span<const std::uint32_t> order) {
  detail::ArrayBuilder sorted(elements.size());
  for (const std::uint32_t position : order) sorted.append(elements[position]);
  return sorted.finish();
}

void requireObject(const Value& object) {
  if (object.isNil()) raiseInvalidArgument("an array can't hold nil");
}

}  // namespace

NSArray NSArray::arrayWithObjects(std::span<const Value> elements) {
  detail::requireCollectionCount(elements.size());
  for (const Value& element : elements) requireObject(element);
  void* memory = std::malloc(sizeof(detail::ArrayStorage) + elements.size_bytes());
  if (!memory) throw std::bad_alloc();
  auto* array = new (memory) detail::ArrayStorage(0, static_cast<std::uint32_t>(elements.size()));
  std::uninitialized_copy(elements.begin(), elements.end(), array->values());
  return NSArray(static_cast<detail::Storage*>(array));
}

Value NSArray::objectAtIndex(std::size_t index) const {
  if (isNil()) return {};
  if (index >= count()) raiseRange(index, count());
  return begin()[index];
}

bool NSArray::containsObject(const Value& object) const {
  return indexOfObject(object) != NSNotFound;
}

std::size_t NSArray::indexOfObject(const Value& object) const {
  std::size_t found = NSNotFound;
  detail::enumerate(*this, [&](const Value& element, std::size_t index) {
    if (element.isEqual(object)) found = index;
    return found == NSNotFound;
  });
  return found;
}

std::size_t NSArray::indexOfObject(const Value& object, NSRange sortedRange,
                                   NSBinarySearchingOptions options,
                                   NSComparator comparator) const {
  if (isNil()) return NSNotFound;
  requireObject(object);
  requireRange(sortedRange, count());
  if (!comparator) raiseInvalidArgument("a binary search needs a comparator");
  const bool wantsFirst = options & NSBinarySearchingFirstEqual;
  const NSArray kept = *this;  // the comparator may release the caller's handle
  const detail::MutationCheck check(kept);
  std::size_t first = sortedRange.location;
  std::size_t end = first + sortedRange.length;
  bool isFound = false;
  while (first < end) {
    const std::size_t middle = first + (end - first) / 2;
    const Value element = kept.begin()[middle];
    const auto order = comparator(element, object);
    check.requireUnchanged();
    isFound |= order == NSOrderedSame;
    if (order < 0 || (order == 0 && !wantsFirst)) {
      first = middle + 1;
    } else {
      end = middle;
    }
  }
  if (options & NSBinarySearchingInsertionIndex) return first;
  if (!isFound) return NSNotFound;
  return wantsFirst ? first : first - 1;
}

void NSArray::enumerateObjectsUsingBlock(
    FunctionView<void(const Value& object, std::size_t index, bool& stop)> block) const {
  if (!block) return;
  detail::enumerate(*this, [&](const Value& element, std::size_t index) {
    bool stop = false;
    block(element, index, stop);
    return !stop;
  });
}

NSArray NSArray::subarrayWithRange(NSRange range) const {
  if (isNil()) return nullptr;
  requireRange(range, count());
  return arrayWithObjects(std::span(begin() + range.location, range.length));
}

NSArray NSArray::sortedArrayWithOptions(NSSortOptions, NSComparator comparator) const {
  if (isNil()) return nullptr;
  const NSArray kept = *this;  // the comparator may release the caller's handle
  return arrayInOrder({kept.begin(), kept.count()}, detail::sortedOrder(kept, comparator));
}

NSArray NSArray::arrayByAddingObject(const Value& object) const {
  if (isNil()) return nullptr;
  NSMutableArray longer = mutableCopy();
  longer.addObject(object);
  return longer.copy();
}

NSString NSArray::componentsJoinedByString(const NSString& separator) const {
  if (isNil()) return nullptr;
  NSMutableString joined;
  detail::enumerate(*this, [&](const Value& element, std::size_t index) {
    if (index) joined.appendString(separator);
    joined.appendString(element.description());
    return true;
  });
  return joined.copy();
}

NSMutableArray NSArray::mutableCopy() const {
  if (isNil()) return nullptr;
  NSMutableArray result = NSMutableArray::arrayWithCapacity(count());
  result.addObjectsFromArray(*this);
  return result;
}

NSMutableArray::NSMutableArray() : NSArray(static_cast<detail::Storage*>(newMutableArray(0))) {}

NSMutableArray::NSMutableArray(std::initializer_list<Value> elements) : NSMutableArray() {
  grow(elements.size());
  for (const Value& element : elements) addObject(element);
}

NSMutableArray NSMutableArray::from(const Value& value) noexcept {
  NSMutableArray result(nullptr);
  if (value.isArray() && value.isMutable()) static_cast<Value&>(result) = value;
  return result;
}

NSMutableArray NSMutableArray::arrayWithCapacity(std::size_t capacity) {
  NSMutableArray result(nullptr);
  static_cast<Value&>(result) = Value(adoptStorage, newMutableArray(capacity));
  return result;
}

void NSMutableArray::grow(std::size_t capacity) {
  detail::MutableArrayStorage& array = contents();
  if (capacity <= array.capacity) return;
  moveToNewBuffer(detail::grownCapacity(array.capacity, capacity), 0);
}

void NSMutableArray::moveToNewBuffer(std::size_t capacity, std::size_t headroom) {
  detail::MutableArrayStorage& array = contents();
  Value* values = allocateValues(headroom + capacity);
  // Values are moved by their bytes: no pointers to them exist, and the old memory is freed unread.
  moveValues(values + headroom, array.buffer, array.count);
  freeBuffer(array);
  array.buffer = values + headroom;
  array.headroom = static_cast<std::uint32_t>(headroom);
  array.capacity = static_cast<std::uint32_t>(capacity);
}

void NSMutableArray::openFront() {
  detail::MutableArrayStorage& array = contents();
  const std::uint32_t spare = array.capacity - array.count;
  if (spare > array.count) {
    // Half of the free places move to the front. They are more than half as many as the elements
    // that are moved, so an insertion at either end takes constant time on average.
    const std::uint32_t headroom = spare - spare / 2;
    moveValues(array.buffer + headroom, array.buffer, array.count);
    array.buffer += headroom;
    array.headroom = headroom;
    array.capacity -= headroom;
    return;
  }
  // As much room as there are elements, for the same reason. The old capacity is at most twice the
  // count here, so the buffer stays proportional to the count.
  const std::size_t room =
      std::min<std::size_t>(array.count, detail::maxCollectionCount - array.capacity);
  if (room) moveToNewBuffer(array.capacity, room);
}

void NSMutableArray::addObject(Value object) {
  if (isNil()) return;
  requireObject(object);
  detail::MutableArrayStorage& array = contents();
  if (array.count == array.capacity) grow(std::size_t{array.count} + 1);
  ++array.mutations;
  new (&array.buffer[array.count++]) Value(std::move(object));
}

void NSMutableArray::addObjectsFromArray(const NSArray& other) {
  if (isNil()) return;
  const std::size_t added = other.count();
  grow(count() + added);  // so that adding an array to itself reads from stable memory
  detail::MutableArrayStorage& array = contents();
  std::uninitialized_copy_n(other.begin(), added, array.buffer + array.count);
  array.count += static_cast<std::uint32_t>(added);
  ++array.mutations;
}

void NSMutableArray::insertObject(Value object, std::size_t index) {
  if (isNil()) return;
  if (index > count()) raiseRange(index, count());
  requireObject(object);
  detail::MutableArrayStorage& array = contents();
  if (index == 0 && array.headroom == 0) openFront();
  if (index == 0 && array.headroom) {
    --array.buffer;
    --array.headroom;
    ++array.capacity;
  } else {
    if (array.count == array.capacity) grow(std::size_t{array.count} + 1);
    moveValues(array.buffer + index + 1, array.buffer + index, array.count - index);
  }
  new (&array.buffer[index]) Value(std::move(object));
  ++array.count;
  ++array.mutations;
}

void NSMutableArray::replaceObjectAtIndex(std::size_t index, Value object) {
  if (isNil()) return;
  requireObject(object);
  if (index >= count()) raiseRange(index, count());
  ++contents().mutations;
  contents().buffer[index].swap(object);
}

void NSMutableArray::removeObjectAtIndex(std::size_t index) {
  if (isNil()) return;
  if (index >= count()) raiseRange(index, count());
  detail::MutableArrayStorage& array = contents();
  const Value removed = std::move(array.buffer[index]);
  --array.count;
  ++array.mutations;
  if (index == 0) {
    ++array.buffer;
    ++array.headroom;
    --array.capacity;
  } else {
    moveValues(array.buffer + index, array.buffer + index + 1, array.count - index);
  }
}

void NSMutableArray::removeLastObject() {
  if (isNil()) return;
  if (count() == 0) raiseRange(0, 0);
  removeObjectAtIndex(count() - 1);
}

void NSMutableArray::removeAllObjects() {
  if (isNil()) return;
  detail::MutableArrayStorage& array = contents();
  ++array.mutations;
  detail::MutableArrayStorage removed;
  std::swap(removed.buffer, array.buffer);
  std::swap(removed.headroom, array.headroom);
  std::swap(removed.count, array.count);
  array.capacity = 0;
  for (std::uint32_t index = 0; index < removed.count; ++index) removed.buffer[index].~Value();
  freeBuffer(removed);
}

void NSMutableArray::removeObjectsAtIndexes(const NSIndexSet& indexes) {
  if (isNil() || indexes.count() == 0) return;
  if (indexes.lastIndex() >= count()) raiseRange(indexes.lastIndex(), count());
  std::vector<Value> removed;  // released after the array is consistent again
  removed.reserve(indexes.count());
  detail::MutableArrayStorage& array = contents();
  ++array.mutations;
  std::size_t kept = indexes.firstIndex();
  std::size_t next = kept;
  for (const NSRange& range : indexes.ranges()) {
    moveValues(array.buffer + kept, array.buffer + next, range.location - next);
    kept += range.location - next;
    next = range.location + range.length;
    for (std::size_t index = range.location; index < next; ++index) {
      removed.push_back(std::move(array.buffer[index]));
    }
  }
  moveValues(array.buffer + kept, array.buffer + next, array.count - next);
  array.count = static_cast<std::uint32_t>(kept + array.count - next);
}

void NSMutableArray::exchangeObjectAtIndex(std::size_t first, std::size_t second) {
  if (isNil()) return;
  if (std::max(first, second) >= count()) raiseRange(std::max(first, second), count());
  ++contents().mutations;
  contents().buffer[first].swap(contents().buffer[second]);
}

void NSMutableArray::setArray(const NSArray& other) {
  if (isNil() || isIdenticalTo(other)) return;
  NSMutableArray replacement(other);
  detail::MutableArrayStorage& old = contents();
  detail::MutableArrayStorage& fresh = replacement.contents();
  ++old.mutations;
  std::swap(old.buffer, fresh.buffer);
  std::swap(old.headroom, fresh.headroom);
  std::swap(old.count, fresh.count);
  std::swap(old.capacity, fresh.capacity);
}

void NSMutableArray::sortWithOptions(NSSortOptions, NSComparator comparator) {
  if (isNil()) return;
  NSMutableArray kept = *this;  // the comparator may assign another array to the caller's handle
  kept.rearrange(detail::sortedOrder(kept, comparator));
}

void NSMutableArray::rearrange(std::span<const std::uint32_t> order) {
  detail::MutableArrayStorage& array = contents();
  Value* values = allocateValues(array.capacity);
  for (std::size_t index = 0; index < order.size(); ++index) {
    moveValues(values + index, array.buffer + order[index], 1);
  }
  freeBuffer(array);
  array.buffer = values;
  array.headroom = 0;
  ++array.mutations;
}

}  // namespace zeb
