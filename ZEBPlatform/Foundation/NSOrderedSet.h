#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <concepts>
#include <initializer_list>
#include <span>
#include <vector>

namespace zeb {

class NSMutableOrderedSet;

/// Immutable sequence of different non-nil values: a set with an order and indexes. Two of them are
/// equal if they have equal members in the same order.
///
/// A single ordered set in braces is copied, as an array is (see `NSArray`). Nil as a member throws
/// NSException (NSInvalidArgumentException). Mutable members are copied, as those of a set are.
class NSOrderedSet : public Value {
 public:
  using value_type = Value;
  using size_type = std::size_t;

  constexpr NSOrderedSet() noexcept = default;
  constexpr NSOrderedSet(std::nullptr_t) noexcept {}
  NSOrderedSet(std::initializer_list<Value> members)
      : NSOrderedSet(orderedSetWithObjects(std::span(members.begin(), members.size()))) {}
  /// Ordered sets in braces: a single one is copied, several are the members.
  template <std::derived_from<NSOrderedSet> Set>
  NSOrderedSet(std::initializer_list<Set> sets)
      : NSOrderedSet(sets.size() == 1
                         ? NSOrderedSet(*sets.begin())
                         : orderedSetWithObjects(std::vector<Value>(sets.begin(), sets.end()))) {}
  /// The value when it is an ordered set, else nil.
  template <detail::ValueBeside<NSOrderedSet> Source>
  explicit NSOrderedSet(const Source& value) noexcept
      : Value(value.isOrderedSet() ? value : Value()) {}

  /// Of equal members the first one stays.
  static NSOrderedSet orderedSetWithObjects(std::span<const Value> members);
  /// Nil on nil.
  static NSOrderedSet orderedSetWithArray(const NSArray& array);

  std::size_t count() const noexcept { return isNil() ? 0 : table().count; }
  std::size_t size() const noexcept { return count(); }
  /// True of a nil ordered set, too.
  [[nodiscard]] bool empty() const noexcept { return count() == 0; }

  /// Throws NSException (NSRangeException) at or past the end; nil on nil.
  Value objectAtIndex(std::size_t index) const;
  Value operator[](std::size_t index) const { return objectAtIndex(index); }
  Value firstObject() const { return count() ? *begin() : Value(); }
  Value lastObject() const { return count() ? objectAtIndex(count() - 1) : Value(); }
  /// The index of the equal member, or NSNotFound. Constant time.
  std::size_t indexOfObject(const Value& object) const;
  bool containsObject(const Value& object) const { return indexOfObject(object) != NSNotFound; }
  [[nodiscard]] bool contains(const Value& object) const { return containsObject(object); }

  /// The members in order, in a new array.
  NSArray array() const;

  using Iterator = NSSet::Iterator;
  Iterator begin() const noexcept {
    return isNil() ? Iterator() : Iterator({table().entries, table().entries + table().used});
  }
  Iterator end() const noexcept {
    if (isNil()) return Iterator();
    const DictionaryEntry* end = table().entries + table().used;
    return Iterator({end, end});
  }

  [[nodiscard]] NSOrderedSet copy() const { return NSOrderedSet(Value::copy()); }
  [[nodiscard]] NSOrderedSet detachedCopy() const { return NSOrderedSet(Value::detachedCopy()); }
  [[nodiscard]] NSMutableOrderedSet mutableCopy() const;

 protected:
  explicit NSOrderedSet(detail::Storage* adopted) noexcept : Value(adoptStorage, adopted) {}
  detail::DictionaryStorage& table() const noexcept {
    return *storageAs<detail::DictionaryStorage>();
  }
};

/// Ordered set that changes in place. Handles share one ordered set, which belongs to one thread at
/// a time. Additions at the end take constant time, all other changes linear time. Braces work as
/// those of `NSMutableArray`.
class NSMutableOrderedSet : public NSOrderedSet {
 public:
  /// An empty ordered set.
  NSMutableOrderedSet();
  constexpr NSMutableOrderedSet(std::nullptr_t) noexcept : NSOrderedSet(nullptr) {}
  NSMutableOrderedSet(std::initializer_list<Value> members);
  template <std::derived_from<NSOrderedSet> Set>
  NSMutableOrderedSet(std::initializer_list<Set> sets)
      : NSMutableOrderedSet(sets.size() == 1 ? NSMutableOrderedSet(*sets.begin())
                                             : NSMutableOrderedSet(NSOrderedSet(sets))) {}
  /// A new ordered set with the members of another one; nil makes an empty one.
  explicit NSMutableOrderedSet(const NSOrderedSet& members);
  /// The shared mutable ordered set itself when the value is one, else nil.
  static NSMutableOrderedSet from(const Value& value) noexcept;

  /// A nil object throws NSException (NSInvalidArgumentException), an index past the end
  /// NSRangeException. On a nil ordered set all of these do nothing.
  ///
  /// An object that is equal to a member is not added, and the member stays in its place.
  void addObject(const Value& object);
  void insertObject(const Value& object, std::size_t index);
  void removeObjectAtIndex(std::size_t index);
  void removeObject(const Value& object);
  void removeAllObjects();
  /// Takes the member out and inserts it so that it has the index `to` afterwards.
  void moveObjectAtIndex(std::size_t from, std::size_t to);
};

}  // namespace zeb
