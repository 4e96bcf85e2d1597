#include <ZEBPlatform/Foundation/CollectionLimitPrivate.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSException.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>

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
  const Value* found =
      std::find_if(begin(), end(), [&](const Value& element) { return element.isEqual(object); });
  return found == end() ? NSNotFound : static_cast<std::size_t>(found - begin());
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
  for (std::size_t index = 0; index < count(); ++index) {
    if (index) joined.appendString(separator);
    joined.appendString(begin()[index].description());
  }
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
  capacity = detail::grownCapacity(array.capacity, capacity);
  Value* values = allocateValues(capacity);
  // Values are moved by their bytes: no pointers to them exist, and the old memory is freed unread.
  if (array.count) {
    std::memcpy(static_cast<void*>(values), static_cast<const void*>(array.buffer),
                array.count * sizeof(Value));
  }
  std::free(std::exchange(array.buffer, values));
  array.capacity = static_cast<std::uint32_t>(capacity);
}

void NSMutableArray::addObject(Value object) {
  if (isNil()) return;
  requireObject(object);
  detail::MutableArrayStorage& array = contents();
  if (array.count == array.capacity) grow(std::size_t{array.count} + 1);
  new (&array.buffer[array.count++]) Value(std::move(object));
}

void NSMutableArray::addObjectsFromArray(const NSArray& other) {
  if (isNil()) return;
  const std::size_t added = other.count();
  grow(count() + added);  // so that adding an array to itself reads from stable memory
  for (std::size_t index = 0; index < added; ++index) addObject(other.begin()[index]);
}

void NSMutableArray::insertObject(Value object, std::size_t index) {
  if (isNil()) return;
  if (index > count()) raiseRange(index, count());
  addObject(std::move(object));
  Value* values = contents().buffer;
  std::rotate(values + index, values + count() - 1, values + count());
}

void NSMutableArray::replaceObjectAtIndex(std::size_t index, Value object) {
  if (isNil()) return;
  requireObject(object);
  if (index >= count()) raiseRange(index, count());
  contents().buffer[index].swap(object);
}

void NSMutableArray::removeObjectAtIndex(std::size_t index) {
  if (isNil()) return;
  if (index >= count()) raiseRange(index, count());
  detail::MutableArrayStorage& array = contents();
  std::rotate(array.buffer + index, array.buffer + index + 1, array.buffer + array.count);
  const Value removed = std::move(array.buffer[--array.count]);
}

void NSMutableArray::removeLastObject() {
  if (isNil()) return;
  if (count() == 0) raiseRange(0, 0);
  removeObjectAtIndex(count() - 1);
}

void NSMutableArray::removeAllObjects() {
  if (isNil()) return;
  detail::MutableArrayStorage& array = contents();
  Value* values = std::exchange(array.buffer, nullptr);
  const std::uint32_t removed = std::exchange(array.count, 0);
  array.capacity = 0;
  for (std::uint32_t index = 0; index < removed; ++index) values[index].~Value();
  std::free(values);
}

void NSMutableArray::exchangeObjectAtIndex(std::size_t first, std::size_t second) {
  if (isNil()) return;
  if (std::max(first, second) >= count()) raiseRange(std::max(first, second), count());
  contents().buffer[first].swap(contents().buffer[second]);
}

}  // namespace zeb
