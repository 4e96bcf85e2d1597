#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>

namespace zeb {

NSSet NSSet::setWithObjects(std::span<const Value> members) {
  NSMutableSet filled;
  for (const Value& member : members) filled.addObject(member);
  return NSSet(detail::frozen(std::move(filled)));
}

Value NSSet::member(const Value& object) const {
  if (isNil()) return {};
  const DictionaryEntry* entry = detail::findEntry(table(), object);
  return entry ? entry->key : Value();
}

NSArray NSSet::allObjects() const {
  if (isNil()) return nullptr;
  NSMutableArray members = NSMutableArray::arrayWithCapacity(count());
  for (const Value& member : *this) members.addObject(member);
  return NSArray(detail::frozen(std::move(members)));
}

NSMutableSet NSSet::mutableCopy() const {
  return isNil() ? NSMutableSet(nullptr) : NSMutableSet(*this);
}

NSMutableSet::NSMutableSet()
    : NSSet(static_cast<detail::Storage*>(detail::newTable(ValueKind::Set, 0))) {}

NSMutableSet::NSMutableSet(std::initializer_list<Value> members) : NSMutableSet() {
  for (const Value& member : members) addObject(member);
}

NSMutableSet::NSMutableSet(const NSSet& set) : NSMutableSet() {
  for (const Value& member : set) addObject(member);
}

NSMutableSet NSMutableSet::from(const Value& value) noexcept {
  NSMutableSet result(nullptr);
  if (value.isSet() && value.isMutable()) static_cast<Value&>(result) = value;
  return result;
}

NSMutableSet NSMutableSet::setWithCapacity(std::size_t capacity) {
  NSMutableSet result(nullptr);
  static_cast<Value&>(result) = Value(adoptStorage, detail::newTable(ValueKind::Set, capacity));
  return result;
}

void NSMutableSet::addObject(const Value& object) {
  if (isNil()) return;
  if (object.isNil()) raiseInvalidArgument("a set can't hold nil");
  detail::findOrAddEntry(table(), object);
}

void NSMutableSet::removeObject(const Value& object) {
  if (!isNil()) detail::removeEntry(table(), object);
}

void NSMutableSet::removeAllObjects() {
  if (!isNil()) detail::removeAllEntries(table());
}

}  // namespace zeb
