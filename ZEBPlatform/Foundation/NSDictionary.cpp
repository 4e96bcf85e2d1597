#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>

namespace zeb {

NSDictionary NSDictionary::dictionaryWithEntries(std::span<const DictionaryEntry> entries) {
  NSMutableDictionary filled = NSMutableDictionary::dictionaryWithCapacity(entries.size());
  for (const DictionaryEntry& entry : entries) filled.setObject(entry.value, entry.key);
  return NSDictionary(detail::frozen(std::move(filled)));
}

namespace {

/// Not inlined into the search for texts, which is far more frequent.
[[gnu::cold, gnu::noinline]] const Value* findValue(const detail::DictionaryStorage& table,
                                                    const Value& key) {
  const DictionaryEntry* entry = detail::findEntry(table, key);
  return entry ? &entry->value : nullptr;
}

}  // namespace

const Value* NSDictionary::find(const DictionaryKey& key) const {
  if (isNil()) return nullptr;
  if (const DictionaryEntry* entry = detail::findEntry(table(), key)) return &entry->value;
  return key.otherValue() ? findValue(table(), *key.otherValue()) : nullptr;
}

const Value* NSDictionary::findString(const NSString& key) const noexcept {
  if (isNil()) return nullptr;
  const DictionaryEntry* entry = detail::findEntry(table(), StringKey(key));
  return entry ? &entry->value : nullptr;
}

NSArray NSDictionary::allKeys() const {
  if (isNil()) return nullptr;
  NSMutableArray keys = NSMutableArray::arrayWithCapacity(count());
  for (const auto& [key, value] : *this) keys.addObject(key);
  return NSArray(detail::frozen(std::move(keys)));
}

NSArray NSDictionary::allValues() const {
  if (isNil()) return nullptr;
  NSMutableArray values = NSMutableArray::arrayWithCapacity(count());
  for (const auto& [key, value] : *this) values.addObject(value);
  return NSArray(detail::frozen(std::move(values)));
}

NSMutableDictionary NSDictionary::mutableCopy() const {
  return isNil() ? NSMutableDictionary(nullptr) : NSMutableDictionary(*this);
}

NSMutableDictionary::NSMutableDictionary()
    : NSDictionary(static_cast<detail::Storage*>(detail::newTable(ValueKind::Dictionary, 0))) {}

NSMutableDictionary::NSMutableDictionary(std::initializer_list<DictionaryEntry> entries)
    : NSMutableDictionary() {
  for (const DictionaryEntry& entry : entries) setObject(entry.value, entry.key);
}

NSMutableDictionary::NSMutableDictionary(const NSDictionary& dictionary)
    : NSMutableDictionary(dictionaryWithCapacity(dictionary.count())) {
  addEntriesFromDictionary(dictionary);
}

NSMutableDictionary NSMutableDictionary::from(const Value& value) noexcept {
  NSMutableDictionary result(nullptr);
  if (value.isDictionary() && value.isMutable()) static_cast<Value&>(result) = value;
  return result;
}

NSMutableDictionary NSMutableDictionary::dictionaryWithCapacity(std::size_t capacity) {
  NSMutableDictionary result(nullptr);
  static_cast<Value&>(result) =
      Value(adoptStorage, detail::newTable(ValueKind::Dictionary, capacity));
  return result;
}

void NSMutableDictionary::setObject(Value object, const Value& key) {
  if (isNil()) return;
  if (key.isNil()) raiseInvalidArgument("a dictionary key can't be nil");
  if (object.isNil()) raiseInvalidArgument("a dictionary can't hold nil");
  // The old value is released last, because its release may run arbitrary code.
  detail::findOrAddEntry(table(), key).value.swap(object);
}

void NSMutableDictionary::addEntriesFromDictionary(const NSDictionary& other) {
  if (isIdenticalTo(other)) return;
  for (const auto& [key, value] : other) setObject(value, key);
}

void NSMutableDictionary::removeObjectForKey(const Value& key) {
  if (!isNil()) detail::removeEntry(table(), key);
}

void NSMutableDictionary::removeAllObjects() {
  if (!isNil()) detail::removeAllEntries(table());
}

}  // namespace zeb
