#pragma once

#include <ZEBPlatform/Foundation/DictionaryEntry.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>

#include <cstddef>
#include <vector>

namespace zeb::detail {

/// Visits a tree of arrays, dictionaries and sets of both kinds in order and to any depth, without
/// recursion.
///
/// The visitor offers
///
///     bool enter(const Value& collection, size_t depth)   false skips it (no `leave` then)
///     void leave(const Value& collection, size_t depth)
///     void element(size_t position)                       before each element of an array or set
///     void key(const Value& key, size_t position)         before each value of a dictionary
///     void leaf(const Value& value)                       everything that is not a collection
///
/// Depth is 0 at the root; positions count from 0 in each collection. The tree must not change
/// meanwhile.
template <class Visitor>
void walkTree(const Value& root, Visitor& visitor) {
  struct Level {
    const Value* collection = nullptr;
    const Value* value = nullptr;            ///< of an array: the next element
    const DictionaryEntry* entry = nullptr;  ///< of the others: the next entry
    const void* end = nullptr;
    std::uint32_t position = 0;  ///< elements visited
  };
  Level level;                   // where the walk is
  std::vector<Level> suspended;  // where it goes on afterwards

  const Value* value = &root;
  for (;;) {
    if (value->kind() < ValueKind::Array || value->kind() > ValueKind::OrderedSet) {
      visitor.leaf(*value);
    } else if (visitor.enter(*value, level.collection ? suspended.size() + 1 : 0)) {
      if (level.collection) suspended.push_back(level);
      level = {};
      level.collection = value;
      if (value->isArray()) {
        const auto& array = *value->storageAs<ArrayStorage>();
        level.value = array.values();
        level.end = level.value + array.count;
      } else {
        const auto& table = *value->storageAs<DictionaryStorage>();
        level.entry = table.entries;
        level.end = table.entries + table.used;
      }
    }

    // The next value of this collection or, at its end, of the enclosing one.
    if (!level.collection) return;
    for (value = nullptr;;) {
      if (level.collection->isArray()) {
        if (level.value != level.end) {
          value = level.value++;
          visitor.element(level.position++);
        }
      } else {
        while (level.entry != level.end && level.entry->key.isNil()) ++level.entry;
        if (level.entry != level.end) {
          const DictionaryEntry& entry = *level.entry++;
          if (level.collection->isDictionary()) {
            value = &entry.value;
            visitor.key(entry.key, level.position++);
          } else {
            value = &entry.key;
            visitor.element(level.position++);
          }
        }
      }
      if (value) break;
      visitor.leave(*level.collection, suspended.size());
      if (suspended.empty()) return;
      level = suspended.back();
      suspended.pop_back();
    }
  }
}

}  // namespace zeb::detail
