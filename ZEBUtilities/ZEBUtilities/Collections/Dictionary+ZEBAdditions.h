#pragma once

#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBUtilities/Collections/PathElementKeys.h>

#include <concepts>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zeb {

/// The generic dictionary of the value layer: a hash map with statically typed keys and values, in
/// no promised order. An attacker outside the process cannot choose keys that collide in it (see
/// `KeyedHash`). One thread at a time, as any standard container.
template <class Key, class Mapped>
class Dictionary : public std::unordered_map<Key, Mapped, KeyedHash<Key>> {
 public:
  using std::unordered_map<Key, Mapped, KeyedHash<Key>>::unordered_map;

  /// Takes the pairs in order; a later one with an equal key replaces the value of the earlier one.
  explicit Dictionary(std::span<const std::pair<Key, Mapped>> tupleArray) {
    for (const auto& [key, value] : tupleArray) this->insert_or_assign(key, value);
  }

  /// The keys whose values differ between the two dictionaries, including keys that only one of
  /// them has; in no particular order.
  std::vector<Key> zeb_keysWithDifferingValues(const Dictionary& from) const
    requires std::equality_comparable<Mapped>
  {
    std::vector<Key> keys;
    for (const auto& [key, value] : *this) {
      const auto other = from.find(key);
      if (other == from.end() || !(other->second == value)) keys.push_back(key);
    }
    for (const auto& [key, value] : from) {
      if (!this->contains(key)) keys.push_back(key);
    }
    return keys;
  }

  /// Steps down by all keys but the last, each into a dictionary whose keys are all strings, and
  /// answers the value for the last one; nil where a step fails. An empty path stops the process:
  /// deliberately unlike the method of the same name on `NSDictionary`.
  Value zeb_objectForPathElementKeys(const PathElementKeys& keys) const
    requires(std::same_as<Key, NSString> || std::same_as<Key, std::string>) &&
            std::same_as<Mapped, Value>;
};

namespace detail {

/// The steps below the first one: `value` must be a dictionary with string keys for each.
Value objectAtPath(Value value, const PathElementKeys& keys);
[[noreturn]] void stopForEmptyPath() noexcept;

}  // namespace detail

template <class Key, class Mapped>
Value Dictionary<Key, Mapped>::zeb_objectForPathElementKeys(const PathElementKeys& keys) const
  requires(std::same_as<Key, NSString> || std::same_as<Key, std::string>) &&
          std::same_as<Mapped, Value>
{
  if (keys.count() == 0) detail::stopForEmptyPath();
  const NSString key = keys[0].string();
  if (key.isNil()) return {};
  const auto first = this->find(Key(key));
  return first == this->end() ? Value() : detail::objectAtPath(first->second, keys);
}

}  // namespace zeb
