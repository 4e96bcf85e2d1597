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
    const void* next = nullptr;  ///< an element of an array, an entry of the others
    const void* end = nullptr;
    std::uint32_t position = 0;  ///< elements visited
    ValueKind kind = ValueKind::Nil;
  };
  Level level;                   // where the walk is
  std::vector<Level> suspended;  // where it goes on afterwards

  const Value* value = &root;
  for (;;) {
    const ValueKind kind = value->kind();
    if (kind < ValueKind::Array || kind > ValueKind::OrderedSet) {
      visitor.leaf(*value);
    } else if (visitor.enter(*value, level.collection ? suspended.size() + 1 : 0)) {
      if (level.collection) suspended.push_back(level);
      level.collection = value;
      level.position = 0;
      level.kind = kind;
      if (kind == ValueKind::Array) {
        const auto& array = *value->storageAs<ArrayStorage>();
        level.next = array.values();
        level.end = array.values() + array.count;
      } else {
        const auto& table = *value->storageAs<DictionaryStorage>();
        level.next = table.entries;
        level.end = table.entries + table.used;
      }
    }

    // The next value of this collection or, at its end, of the enclosing one.
    if (!level.collection) return;
    for (value = nullptr;;) {
      if (level.kind == ValueKind::Array) {
        if (level.next != level.end) {
          value = static_cast<const Value*>(level.next);
          level.next = value + 1;
          visitor.element(level.position++);
        }
      } else {
        auto* entry = static_cast<const DictionaryEntry*>(level.next);
        while (entry != level.end && entry->key.isNil()) ++entry;
        if (entry != level.end) {
          level.next = entry + 1;
          if (level.kind == ValueKind::Dictionary) {
            value = &entry->value;
            visitor.key(entry->key, level.position++);
          } else {
            value = &entry->key;
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
