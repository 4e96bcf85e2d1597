#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSOrderedSet.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>

namespace zeb {

NSOrderedSet NSOrderedSet::orderedSetWithObjects(std::span<const Value> members) {
  NSMutableOrderedSet filled;
  for (const Value& member : members) filled.addObject(member);
  return NSOrderedSet(detail::frozen(std::move(filled)));
}

NSOrderedSet NSOrderedSet::orderedSetWithArray(const NSArray& array) {
  if (array.isNil()) return nullptr;
  const NSArray members = array.copy();  // comparing members may change a mutable array
  return orderedSetWithObjects(std::span(members.begin(), members.count()));
}

Value NSOrderedSet::objectAtIndex(std::size_t index) const {
  if (isNil()) return {};
  if (index >= count()) raiseRange(index, count());
  return table().entries[index].key;
}

std::size_t NSOrderedSet::indexOfObject(const Value& object) const {
  if (isNil()) return NSNotFound;
  const DictionaryEntry* entry = detail::findEntry(table(), object);
  return entry ? static_cast<std::size_t>(entry - table().entries) : NSNotFound;
}

NSArray NSOrderedSet::array() const {
  if (isNil()) return nullptr;
  NSMutableArray members = NSMutableArray::arrayWithCapacity(count());
  for (const Value& member : *this) members.addObject(member);
  return NSArray(detail::frozen(std::move(members)));
}

NSMutableOrderedSet NSOrderedSet::mutableCopy() const {
  return isNil() ? NSMutableOrderedSet(nullptr) : NSMutableOrderedSet(*this);
}

NSMutableOrderedSet::NSMutableOrderedSet()
    : NSOrderedSet(static_cast<detail::Storage*>(detail::newTable(ValueKind::OrderedSet, 0))) {}

NSMutableOrderedSet::NSMutableOrderedSet(std::initializer_list<Value> members)
    : NSMutableOrderedSet() {
  for (const Value& member : members) addObject(member);
}

NSMutableOrderedSet::NSMutableOrderedSet(const NSOrderedSet& members) : NSMutableOrderedSet() {
  detail::reserveEntries(table(), members.count());
  for (const Value& member : members) addObject(member);
}

NSMutableOrderedSet NSMutableOrderedSet::from(const Value& value) noexcept {
  NSMutableOrderedSet result(nullptr);
  if (value.isOrderedSet() && value.isMutable()) static_cast<Value&>(result) = value;
  return result;
}

void NSMutableOrderedSet::addObject(const Value& object) {
  if (isNil()) return;
  if (object.isNil()) raiseInvalidArgument("an ordered set can't hold nil");
  detail::findOrAddEntry(table(), object);
}

void NSMutableOrderedSet::insertObject(const Value& object, std::size_t index) {
  if (isNil()) return;
  const std::size_t before = count();
  if (index > before) raiseRange(index, before);
  addObject(object);
  if (count() == before) return;  // it was a member
  detail::moveEntry(table(), static_cast<std::uint32_t>(before), static_cast<std::uint32_t>(index));
}

void NSMutableOrderedSet::removeObjectAtIndex(std::size_t index) {
  if (isNil()) return;
  if (index >= count()) raiseRange(index, count());
  detail::removeEntryAt(table(), static_cast<std::uint32_t>(index));
}

void NSMutableOrderedSet::removeObject(const Value& object) {
  const std::size_t index = indexOfObject(object);
  if (index != NSNotFound) removeObjectAtIndex(index);
}

void NSMutableOrderedSet::removeAllObjects() {
  if (!isNil()) detail::removeAllEntries(table());
}

void NSMutableOrderedSet::moveObjectAtIndex(std::size_t from, std::size_t to) {
  if (isNil()) return;
  if (std::max(from, to) >= count()) raiseRange(std::max(from, to), count());
  detail::moveEntry(table(), static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to));
}

}  // namespace zeb
