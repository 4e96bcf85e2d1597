#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <concepts>
#include <initializer_list>
#include <span>
#include <vector>

namespace zeb {

class NSMutableSet;

/// Immutable collection of different non-nil values, without a promised order (it enumerates in the
/// order of insertion). A single set in braces is copied, as an array is (see `NSArray`). Nil as a
/// member throws NSException (NSInvalidArgumentException).
class NSSet : public Value {
 public:
  using value_type = Value;
  using size_type = std::size_t;

  constexpr NSSet() noexcept = default;
  constexpr NSSet(std::nullptr_t) noexcept {}
  NSSet(std::initializer_list<Value> members)
      : NSSet(setWithObjects(std::span(members.begin(), members.size()))) {}
  /// Sets in braces: a single one is copied, several are the members.
  template <std::derived_from<NSSet> Set>
  NSSet(std::initializer_list<Set> sets)
      : NSSet(sets.size() == 1 ? NSSet(*sets.begin())
                               : setWithObjects(std::vector<Value>(sets.begin(), sets.end()))) {}
  /// The value when it is a set, else nil.
  template <detail::ValueBeside<NSSet> Source>
  explicit NSSet(const Source& value) noexcept : Value(value.isSet() ? value : Value()) {}

  static NSSet setWithObjects(std::span<const Value> members);

  std::size_t count() const noexcept { return isNil() ? 0 : table().count; }
  std::size_t size() const noexcept { return count(); }
  /// True of a nil set, too.
  [[nodiscard]] bool empty() const noexcept { return count() == 0; }
  bool containsObject(const Value& object) const { return !member(object).isNil(); }
  [[nodiscard]] bool contains(const Value& object) const { return containsObject(object); }
  /// The member equal to `object`, or nil.
  Value member(const Value& object) const;
  Value anyObject() const noexcept { return count() ? *begin() : Value(); }
  NSArray allObjects() const;

  class Iterator {
   public:
    using value_type = Value;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;
    explicit Iterator(NSDictionary::Iterator entry) noexcept : entry_(entry) {}
    const Value& operator*() const noexcept { return entry_->key; }
    const Value* operator->() const noexcept { return &entry_->key; }
    Iterator& operator++() noexcept {
      ++entry_;
      return *this;
    }
    Iterator operator++(int) noexcept {
      Iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const Iterator& other) const noexcept = default;

   private:
    NSDictionary::Iterator entry_;
  };

  Iterator begin() const noexcept {
    return isNil() ? Iterator() : Iterator({table().entries, table().entries + table().used});
  }
  Iterator end() const noexcept {
    if (isNil()) return Iterator();
    const DictionaryEntry* end = table().entries + table().used;
    return Iterator({end, end});
  }

  [[nodiscard]] NSSet copy() const { return NSSet(Value::copy()); }
  [[nodiscard]] NSSet detachedCopy() const { return NSSet(Value::detachedCopy()); }
  [[nodiscard]] NSMutableSet mutableCopy() const;

 protected:
  explicit NSSet(detail::Storage* adopted) noexcept : Value(adoptStorage, adopted) {}
  detail::DictionaryStorage& table() const noexcept {
    return *storageAs<detail::DictionaryStorage>();
  }
};

/// Set that changes in place. Handles share one set, which belongs to one thread at a time. Braces
/// work as those of `NSMutableArray`.
class NSMutableSet : public NSSet {
 public:
  /// An empty set.
  NSMutableSet();
  constexpr NSMutableSet(std::nullptr_t) noexcept : NSSet(nullptr) {}
  NSMutableSet(std::initializer_list<Value> members);
  template <std::derived_from<NSSet> Set>
  NSMutableSet(std::initializer_list<Set> sets)
      : NSMutableSet(sets.size() == 1 ? NSMutableSet(*sets.begin()) : NSMutableSet(NSSet(sets))) {}
  /// A new set with the members of `set`; nil makes an empty one.
  explicit NSMutableSet(const NSSet& set);
  /// The shared mutable set itself when the value is one, else nil.
  static NSMutableSet from(const Value& value) noexcept;
  /// An empty set with room for `capacity` members.
  static NSMutableSet setWithCapacity(std::size_t capacity);

  /// Adding nil throws NSException (NSInvalidArgumentException). On a nil set these do nothing.
  void addObject(const Value& object);
  void removeObject(const Value& object);
  void removeAllObjects();
};

}  // namespace zeb
