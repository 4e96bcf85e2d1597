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

/// Every search for a string that `findString` does not complete.
[[gnu::noinline]] const Value* findPlainly(const detail::DictionaryStorage& table,
                                           const NSString& key) noexcept {
  const DictionaryEntry* entry = detail::findEntry(table, StringKey(key));
  return entry ? &entry->value : nullptr;
}

}  // namespace

const Value* NSDictionary::find(const DictionaryKey& key) const {
  if (isNil()) return nullptr;
  if (const DictionaryEntry* entry = detail::findEntry(table(), key)) return &entry->value;
  return key.otherValue() ? findValue(table(), *key.otherValue()) : nullptr;
}

// Searches indexed tables for texts of bytes that know their hash, which excludes mutable texts.
// These are nearly all searches. The other cases are in a function of their own, so that this one
// keeps its state in registers.
const Value* NSDictionary::findString(const NSString& key) const noexcept {
  if (isNil() || key.isNil()) return nullptr;
  const detail::DictionaryStorage& storage = table();
  const auto& text = *key.storageAs<detail::StringStorage>();
  const std::uint32_t hash = text.hash.load(std::memory_order_relaxed);
  const std::uint32_t mask = storage.indexMask;
  if (!hash || !mask || text.isWide() || storage.hasKeyedHash()) return findPlainly(storage, key);
  const std::uint32_t* const index = storage.index();
  const std::uint64_t wantedHead = headOfKey(Kind::String, hash);
  const DictionaryEntry* entry;
  std::uint32_t slot = hash & mask;
  do {
    const std::uint32_t position = index[slot];
    if (!position) return nullptr;
    entry = &storage.entries[position - 1];
    slot = (slot + 1) & mask;
  } while (entry->key.head() != wantedHead);
  const auto& candidate = *entry->key.storageAs<detail::StringStorage>();
  if (&candidate == &text) return &entry->value;
  // Neither text is mutable, so the bytes lie behind the headers.
  if (candidate.length == text.length && !candidate.isWide() &&
      detail::equalBytes(reinterpret_cast<const char*>(&candidate + 1),
                         reinterpret_cast<const char*>(&text + 1), text.length)) [[likely]] {
    return &entry->value;
  }
  return findPlainly(storage, key);  // two texts have the same hash
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
