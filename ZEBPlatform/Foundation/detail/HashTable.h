#pragma once

#include <ZEBPlatform/Foundation/DictionaryEntry.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>

#include <cstddef>
#include <cstdint>

/// The hash table under dictionaries, sets and ordered sets, as functions over `DictionaryStorage`.
namespace zeb::detail {

/// Up to this count a scan over the hashes of the entries is faster than an index.
inline constexpr std::uint32_t maxUnindexedEntries = 8;

/// At half load, keys that were not chosen to collide practically never need more probes.
inline constexpr std::uint32_t maxTrustedProbes = 128;

/// Slots of an index over `entries` entries, of which at most half are taken. Valid up to
/// `maxCollectionCount` (see CollectionLimitPrivate.h).
constexpr std::uint32_t indexSlots(std::uint32_t entries) noexcept {
  std::uint32_t count = 2 * maxUnindexedEntries;
  while (count < 2 * std::uint64_t{entries}) count *= 2;
  return count;
}

/// The public hash that entries are found by; never 0.
std::uint32_t keyHashOf(const Value& key);

/// An empty mutable table on the heap, owned by the caller, with room for `capacity` entries.
/// Throws std::bad_alloc or std::length_error.
DictionaryStorage* newTable(ValueKind kind, std::size_t capacity);

inline DictionaryEntry* findEntry(const DictionaryStorage& table, const StringKey& key) noexcept;
/// The same for tables without an index and those that use the secret hash.
DictionaryEntry* findEntryPlainly(const DictionaryStorage& table, const StringKey& key) noexcept;
DictionaryEntry* findEntry(const DictionaryStorage& table, const Value& key);

/// The entry for `key`; a new one with a nil value if there was none. The key must not be nil; a
/// mutable one is copied. Throws std::bad_alloc or std::length_error.
DictionaryEntry& findOrAddEntry(DictionaryStorage& table, const Value& key);

bool removeEntry(DictionaryStorage& table, const Value& key);

/// For ordered sets, whose entries have no holes between them: move an entry to another position,
/// or remove it, and close up the entries between. Linear. Both positions are below the count.
void moveEntry(DictionaryStorage& table, std::uint32_t from, std::uint32_t to) noexcept;
void removeEntryAt(DictionaryStorage& table, std::uint32_t position) noexcept;

void removeAllEntries(DictionaryStorage& table) noexcept;

/// Makes room for `capacity` entries in all.
void reserveEntries(DictionaryStorage& table, std::size_t capacity);

/// Turns `table.used` entries, which a builder wrote in order and with their key hashes, into a
/// table: equal keys are merged (the last value wins, at the place of the first one), and more than
/// `maxUnindexedEntries` entries are indexed, for which there must be room for `indexSlots(used)`
/// numbers after the entries. The entries hold no references of their own.
void finishBorrowedEntries(DictionaryStorage& table) noexcept;

// By far the most frequent search, so its rare cases are kept out of line.
[[gnu::always_inline]] inline DictionaryEntry* findEntry(const DictionaryStorage& table,
                                                         const StringKey& key) noexcept {
  const std::uint32_t hash = key.hash();  // 0 without a text, which matches no entry
  if (!table.indexMask || table.hasKeyedHash()) return findEntryPlainly(table, key);
  const std::uint32_t* const index = table.index();
  const std::uint64_t wantedHead = Value::headOfKey(ValueKind::String, hash);
  std::uint32_t slot = hash & table.indexMask;
  while (const std::uint32_t position = index[slot]) {
    DictionaryEntry& entry = table.entries[position - 1];
    if (entry.key.head() == wantedHead && key.matches(*entry.key.storageAs<StringStorage>())) {
      return &entry;
    }
    slot = (slot + 1) & table.indexMask;
  }
  return nullptr;
}

}  // namespace zeb::detail
