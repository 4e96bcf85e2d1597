#include <ZEBPlatform/Foundation/CollectionLimitPrivate.h>
#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <span>
#include <string>

namespace zeb::detail {

namespace {

void useKeyedHash(DictionaryStorage& table) noexcept;

/// The hash by which a table finds a key: the public one, or the secret one, which covers all
/// content of the key and whose collisions cannot be chosen.
std::uint32_t hashFor(const DictionaryStorage& table, const Value& key) {
  return table.hasKeyedHash() ? static_cast<std::uint32_t>(keyedHashOf(key)) : keyHashOf(key);
}

struct Search {
  DictionaryEntry* entry;  ///< null when there is none
  std::uint32_t slot;      ///< where the search ended; free when there is no entry
};

/// Searches for the entry whose key matches and has this hash (the public or the secret one, as the
/// table uses).
template <class Matches>
[[gnu::always_inline]] inline Search search(const DictionaryStorage& table, std::uint32_t hash,
                                            const Matches& matches) {
  if (!table.indexMask) {
    for (std::uint32_t position = 0; position < table.used; ++position) {
      DictionaryEntry& entry = table.entries[position];
      if (entry.key.keyHash() == hash && matches(entry.key)) return {&entry, 0};
    }
    return {nullptr, 0};
  }
  std::uint32_t slot = hash & table.indexMask;
  while (const std::uint32_t position = table.index()[slot]) {
    DictionaryEntry& entry = table.entries[position - 1];
    if (entry.key.keyHash() == hash && matches(entry.key)) return {&entry, slot};
    slot = (slot + 1) & table.indexMask;
  }
  return {nullptr, slot};
}

/// Puts an entry into the first free slot from `slot` on; all slots from that of its hash to this
/// one must be taken. False if the slot found is suspiciously far from that of its hash.
bool indexEntry(DictionaryStorage& table, std::uint32_t position, std::uint32_t slot) noexcept {
  const std::uint32_t hash = table.entries[position].key.keyHash();
  while (table.index()[slot]) slot = (slot + 1) & table.indexMask;
  const std::uint32_t probes = (slot - hash) & table.indexMask;
  if (probes > maxTrustedProbes && !table.hasKeyedHash()) return false;
  table.index()[slot] = position + 1;
  return true;
}

/// The same from the slot of the hash of the entry.
bool indexEntry(DictionaryStorage& table, std::uint32_t position) noexcept {
  const std::uint32_t hash = table.entries[position].key.keyHash();
  return indexEntry(table, position, hash & table.indexMask);
}

/// Frees the slot of an entry, and moves entries behind it that a search would not find past it.
void unindexEntry(DictionaryStorage& table, std::uint32_t position) noexcept {
  const std::uint32_t mask = table.indexMask;
  std::uint32_t free = table.entries[position].key.keyHash() & mask;
  while (table.index()[free] != position + 1) free = (free + 1) & mask;
  for (std::uint32_t slot = (free + 1) & mask; const std::uint32_t next = table.index()[slot];
       slot = (slot + 1) & mask) {
    const std::uint32_t wanted = table.entries[next - 1].key.keyHash() & mask;
    if (((slot - wanted) & mask) < ((slot - free) & mask)) continue;
    table.index()[free] = next;
    free = slot;
  }
  table.index()[free] = 0;
}

void clearIndex(DictionaryStorage& table) noexcept {
  std::memset(table.index(), 0, sizeof(std::uint32_t) * (std::size_t{table.indexMask} + 1));
}

/// Rebuilds the index over all living entries, under the secret hash if the public one collides.
void rebuildIndex(DictionaryStorage& table) noexcept {
  clearIndex(table);
  for (std::uint32_t position = 0; position < table.used; ++position) {
    if (table.entries[position].key.isNil() || indexEntry(table, position)) continue;
    return useKeyedHash(table);
  }
}

/// Fills the empty index if all hashes differ and no slot is suspiciously far from that of its
/// hash, as in almost every table. Otherwise leaves the index empty.
bool indexDistinctEntries(DictionaryStorage& table) noexcept {
  const DictionaryEntry* const entries = table.entries;
  std::uint32_t* const index = table.index();
  const std::uint32_t mask = table.indexMask;
  for (std::uint32_t position = 0; position < table.used; ++position) {
    const std::uint32_t hash = entries[position].key.keyHash();
    std::uint32_t slot = hash & mask;
    bool isDistinct = !table.hasKeyedHash();
    while (const std::uint32_t taken = index[slot]) {
      isDistinct = isDistinct && entries[taken - 1].key.keyHash() != hash;
      slot = (slot + 1) & mask;
    }
    if (!isDistinct || ((slot - hash) & mask) > maxTrustedProbes) {
      clearIndex(table);
      return false;
    }
    index[slot] = position + 1;
  }
  return true;
}

/// Changes the table to the secret hash, because an attacker chose colliding keys or many keys
/// differ only where the public hash does not look.
void useKeyedHash(DictionaryStorage& table) noexcept {
  table.flags |= StorageKeyedHash;
  for (std::uint32_t position = 0; position < table.used; ++position) {
    Value& key = table.entries[position].key;
    if (!key.isNil()) key.setKeyHash(hashFor(table, key));
  }
  rebuildIndex(table);
}

/// Moves the living entries together after removals.
void closeHoles(DictionaryStorage& table) noexcept {
  if (table.used == table.count) return;
  std::uint32_t target = 0;
  for (std::uint32_t position = 0; position < table.used; ++position) {
    if (table.entries[position].key.isNil()) continue;
    if (target != position) table.entries[target] = std::move(table.entries[position]);
    ++target;
  }
  table.used = target;
}

/// Turns an entry whose key is gone into a hole and joins it with the holes next to it. Both ends
/// of a hole hold its length, in the payload of the nil key, so that iterators skip it at once.
void noteHole(DictionaryStorage& table, std::uint32_t position) noexcept {
  const auto holeAt = [&table](std::uint32_t neighbour) -> std::uint32_t {
    if (neighbour >= table.used) return 0;
    const Value& key = table.entries[neighbour].key;
    return key.isNil() ? static_cast<std::uint32_t>(key.payload()) : 0;
  };
  const std::uint32_t before = position ? holeAt(position - 1) : 0;
  const std::uint32_t length = before + 1 + holeAt(position + 1);
  const std::uint32_t first = position - before;
  for (const std::uint32_t end : {first, first + length - 1}) {
    table.entries[end].key = Value(Value::adoptWords, 0, length);
  }
}

std::uint32_t slotsFor(std::uint32_t capacity) noexcept {
  return capacity > maxUnindexedEntries ? indexSlots(capacity) : 0;
}

std::size_t bytesFor(std::uint32_t capacity) noexcept {
  return capacity * sizeof(DictionaryEntry) + slotsFor(capacity) * sizeof(std::uint32_t);
}

/// Closes the holes and frees the memory that is no longer needed, without allocating.
void shrinkEntries(DictionaryStorage& table) noexcept {
  closeHoles(table);
  table.capacity = std::min(table.capacity, std::max(maxUnindexedEntries, 2 * table.count));
  const std::uint32_t slots = slotsFor(table.capacity);
  table.indexMask = slots ? slots - 1 : 0;
  void* smaller = std::realloc(static_cast<void*>(table.entries), bytesFor(table.capacity));
  if (smaller) table.entries = static_cast<DictionaryEntry*>(smaller);
  if (slots) rebuildIndex(table);
}

void growEntries(DictionaryStorage& table, std::size_t capacity) {
  requireCollectionCount(capacity);
  const auto room = static_cast<std::uint32_t>(capacity);
  const std::uint32_t slots = slotsFor(room);
  auto* entries = static_cast<DictionaryEntry*>(std::malloc(bytesFor(room)));
  if (!entries) throw std::bad_alloc();
  closeHoles(table);
  // Values are moved by their bytes: no pointers to them exist, and the old memory is freed unread.
  if (table.used) {
    std::memcpy(static_cast<void*>(entries), static_cast<const void*>(table.entries),
                table.used * sizeof(DictionaryEntry));
  }
  std::free(table.entries);
  table.entries = entries;
  table.capacity = room;
  table.indexMask = slots ? slots - 1 : 0;
  if (slots) rebuildIndex(table);
}

/// After the last living entry was removed: frees the memory, unless it is so small that it is kept
/// for the next entry.
void forgetEntries(DictionaryStorage& table) noexcept {
  if (table.indexMask) return removeAllEntries(table);
  table.used = 0;
  table.flags &= static_cast<std::uint8_t>(~StorageKeyedHash);
}

bool sameKey(const Value& left, const Value& right) {
  return left.isIdenticalTo(right) || left.isEqual(right);
}

[[gnu::always_inline]] inline Search searchKey(const DictionaryStorage& table, std::uint32_t hash,
                                               const Value& key) {
  return search(table, hash, [&](const Value& candidate) { return sameKey(candidate, key); });
}

}  // namespace

std::uint32_t keyHashOf(const Value& key) {
  if (key.isString()) return hashOfString(*key.storageAs<StringStorage>());
  return finishHash(key.hash());
}

DictionaryStorage* newTable(ValueKind kind, std::size_t capacity) {
  void* memory = std::malloc(sizeof(DictionaryStorage));
  if (!memory) throw std::bad_alloc();
  auto* table = new (memory) DictionaryStorage(kind, StorageMutable);
  try {
    reserveEntries(*table, capacity);
  } catch (...) {
    std::free(memory);
    throw;
  }
  return table;
}

DictionaryEntry* findEntryPlainly(const DictionaryStorage& table, const StringKey& key) noexcept {
  if (key.isNil()) return nullptr;
  const std::uint32_t hash =
      table.hasKeyedHash() ? static_cast<std::uint32_t>(key.keyedHash()) : key.hash();
  const auto matches = [&](const Value& candidate) {
    return candidate.isString() && key.matches(*candidate.storageAs<StringStorage>());
  };
  return search(table, hash, matches).entry;
}

DictionaryEntry* findEntry(const DictionaryStorage& table, const Value& key) {
  if (key.isNil()) return nullptr;
  return searchKey(table, hashFor(table, key), key).entry;
}

DictionaryEntry& findOrAddEntry(DictionaryStorage& table, const Value& key) {
  const bool wasKeyed = table.hasKeyedHash();
  std::uint32_t hash = hashFor(table, key);
  Search found = searchKey(table, hash, key);
  if (found.entry) return *found.entry;
  // Copied before the table grows, because the caller's key may be inside the table.
  Value ownKey = key.copy();
  if (table.used == table.capacity) {
    // After many removals, closing the holes makes enough room.
    const bool mostlyDead = table.count < table.used / 2;
    growEntries(table, mostlyDead ? table.capacity
                                  : grownCapacity(table.capacity, std::size_t{table.used} + 1));
    if (table.hasKeyedHash() != wasKeyed) hash = hashFor(table, ownKey);
    found.slot = hash & table.indexMask;
  }
  ownKey.setKeyHash(hash);
  DictionaryEntry* entry = new (&table.entries[table.used]) DictionaryEntry{std::move(ownKey), {}};
  ++table.used;
  ++table.count;
  if (table.indexMask && !indexEntry(table, table.used - 1, found.slot)) useKeyedHash(table);
  return *entry;
}

bool removeEntry(DictionaryStorage& table, const Value& key) {
  DictionaryEntry* entry = findEntry(table, key);
  if (!entry) return false;
  // Released after the table is consistent again; the caller's key may be this one.
  const DictionaryEntry removed = std::move(*entry);
  --table.count;
  if (table.count == 0) {
    forgetEntries(table);
    return true;
  }
  // The key stays in the index as a dead position, which no search matches, until the holes close.
  noteHole(table, static_cast<std::uint32_t>(entry - table.entries));
  const std::uint32_t holes = table.used - table.count;
  if (holes > std::max(table.count, maxUnindexedEntries)) shrinkEntries(table);
  return true;
}

void moveEntry(DictionaryStorage& table, std::uint32_t from, std::uint32_t to) noexcept {
  if (from == to) return;
  // Values are moved by their bytes: no pointers to them exist.
  DictionaryEntry* const entries = table.entries;
  alignas(DictionaryEntry) std::byte moved[sizeof(DictionaryEntry)];
  std::memcpy(moved, static_cast<const void*>(&entries[from]), sizeof moved);
  const std::uint32_t first = std::min(from, to);
  const std::uint32_t last = std::max(from, to);
  const bool isForward = from < to;
  std::memmove(static_cast<void*>(&entries[isForward ? first : first + 1]),
               static_cast<const void*>(&entries[isForward ? first + 1 : first]),
               (last - first) * sizeof(DictionaryEntry));
  std::memcpy(static_cast<void*>(&entries[to]), moved, sizeof moved);
  if (!table.indexMask) return;
  const std::uint32_t step = isForward ? ~std::uint32_t{0} : 1;  // -1 or 1, modulo 2^32
  for (std::uint32_t& slot : std::span(table.index(), std::size_t{table.indexMask} + 1)) {
    const std::uint32_t position = slot - 1;  // free slots become the largest number
    if (position < first || position > last) continue;
    slot = (position == from ? to : position + step) + 1;
  }
}

void removeEntryAt(DictionaryStorage& table, std::uint32_t position) noexcept {
  const std::uint32_t last = table.used - 1;
  moveEntry(table, position, last);
  if (table.indexMask) unindexEntry(table, last);
  // Released after the table is consistent again.
  const DictionaryEntry removed = std::move(table.entries[last]);
  table.entries[last].~DictionaryEntry();
  table.count = table.used = last;
  if (table.capacity / 4 > std::max(table.count, maxUnindexedEntries)) shrinkEntries(table);
}

void removeAllEntries(DictionaryStorage& table) noexcept {
  DictionaryEntry* entries = std::exchange(table.entries, nullptr);
  const std::uint32_t used = std::exchange(table.used, 0);
  table.count = table.capacity = table.indexMask = 0;
  table.flags &= static_cast<std::uint8_t>(~StorageKeyedHash);
  for (std::uint32_t position = 0; position < used; ++position)
    entries[position].~DictionaryEntry();
  std::free(entries);
}

void reserveEntries(DictionaryStorage& table, std::size_t capacity) {
  if (capacity > table.capacity) growEntries(table, capacity);
}

void finishBorrowedEntries(DictionaryStorage& table) noexcept {
  table.capacity = table.used;
  if (table.used > maxUnindexedEntries) {
    table.indexMask = indexSlots(table.used) - 1;
    clearIndex(table);
  }
  const std::uint32_t written = table.used;
  if (table.indexMask && indexDistinctEntries(table)) {
    table.count = written;
    return;
  }
  table.used = 0;
  for (std::uint32_t position = 0; position < written; ++position) {
    DictionaryEntry& entry = table.entries[position];
    Value& key = entry.key;
    if (table.hasKeyedHash()) key.setKeyHash(hashFor(table, key));
    const Search found = searchKey(table, key.keyHash(), key);
    // Raw copies: borrowed entries count no references.
    if (found.entry) {
      std::memcpy(static_cast<void*>(&found.entry->value), static_cast<const void*>(&entry.value),
                  sizeof(Value));
      continue;
    }
    if (table.used != position) {
      std::memcpy(static_cast<void*>(&table.entries[table.used]), static_cast<const void*>(&entry),
                  sizeof entry);
    }
    ++table.used;
    if (table.indexMask && !indexEntry(table, table.used - 1, found.slot)) useKeyedHash(table);
  }
  table.count = table.used;
}

}  // namespace zeb::detail
