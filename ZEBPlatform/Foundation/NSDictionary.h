#pragma once

#include <ZEBPlatform/Foundation/DictionaryEntry.h>
#include <ZEBPlatform/Foundation/DictionaryKey.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <initializer_list>
#include <span>
#include <type_traits>

namespace zeb {

class NSMutableDictionary;

/// Immutable mapping from keys (any non-nil values, in practice strings) to non-nil values, which
/// remembers the order of insertion. `NSDictionary{}` is nil; `NSDictionary::dictionary()` is
/// empty. A key given again keeps its place and takes the later value.
///
/// Lookup uses hashes, and makes no string for a literal key. Keys that an attacker chose to
/// collide do not slow it down for long, whatever their kind: the table then changes to a secret
/// hash of all their content (down to 512 levels of collections). Only objects whose class answers
/// one hash for all of them are searched one after the other.
///
/// Nil as key or value throws NSException (NSInvalidArgumentException); beyond 2³⁰ entries
/// std::length_error is thrown.
class NSDictionary : public Value {
 public:
  using value_type = DictionaryEntry;
  using size_type = std::size_t;

  constexpr NSDictionary() noexcept = default;
  constexpr NSDictionary(std::nullptr_t) noexcept {}
  NSDictionary(std::initializer_list<DictionaryEntry> entries)
      : NSDictionary(dictionaryWithEntries(entries)) {}
  /// The value when it is a dictionary, else nil.
  template <detail::ValueBeside<NSDictionary> Source>
  explicit NSDictionary(const Source& value) noexcept
      : Value(value.isDictionary() ? value : Value()) {}

  static NSDictionary dictionary() { return dictionaryWithEntries({}); }
  static NSDictionary dictionaryWithEntries(std::span<const DictionaryEntry> entries);
  static NSDictionary dictionaryWithEntries(std::initializer_list<DictionaryEntry> entries) {
    return dictionaryWithEntries(std::span(entries.begin(), entries.size()));
  }

  std::size_t count() const noexcept { return isNil() ? 0 : table().count; }
  std::size_t size() const noexcept { return count(); }
  /// True of a nil dictionary, too.
  [[nodiscard]] bool empty() const noexcept { return count() == 0; }

  /// The value under the key; nil if there is none.
  Value objectForKey(const DictionaryKey& key) const { return valueOrNil(find(key)); }
  template <std::derived_from<NSString> Text>
  Value objectForKey(const Text& key) const noexcept {
    return valueOrNil(find(key));
  }
  Value operator[](const DictionaryKey& key) const { return valueOrNil(find(key)); }
  template <std::derived_from<NSString> Text>
  Value operator[](const Text& key) const noexcept {
    return valueOrNil(find(key));
  }
  [[nodiscard]] bool contains(const DictionaryKey& key) const { return find(key) != nullptr; }

  /// As `objectForKey`, but borrowed: the stored value, valid as long as the dictionary lives and
  /// is not changed; null if there is none. Throws std::bad_alloc only for keys that are not texts
  /// (see `Value::isEqual` and `Value::hash`).
  const Value* find(const DictionaryKey& key) const;
  /// The same for strings, whose key is then made inside the search, in registers.
  template <std::derived_from<NSString> Text>
  const Value* find(const Text& key) const noexcept {
    return findString(key);
  }

  /// In insertion order, as are the enumerations.
  NSArray allKeys() const;
  NSArray allValues() const;

  class Iterator {
   public:
    using value_type = DictionaryEntry;
    using difference_type = std::ptrdiff_t;

    Iterator() noexcept = default;
    Iterator(const DictionaryEntry* entry, const DictionaryEntry* end) noexcept
        : entry_(entry), end_(end) {
      skipRemoved();
    }
    const DictionaryEntry& operator*() const noexcept { return *entry_; }
    const DictionaryEntry* operator->() const noexcept { return entry_; }
    Iterator& operator++() noexcept {
      ++entry_;
      skipRemoved();
      return *this;
    }
    Iterator operator++(int) noexcept {
      Iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const Iterator& other) const noexcept { return entry_ == other.entry_; }

   private:
    /// The nil key at the start of a hole holds the number of entries that were removed there.
    void skipRemoved() noexcept {
      if (entry_ != end_ && entry_->key.isNil()) entry_ += entry_->key.payload();
    }
    const DictionaryEntry* entry_ = nullptr;
    const DictionaryEntry* end_ = nullptr;
  };

  /// `for (const auto& [key, value] : dictionary)`. Entries are borrowed: valid as long as the
  /// dictionary lives and is not changed.
  Iterator begin() const noexcept {
    return isNil() ? Iterator() : Iterator(table().entries, table().entries + table().used);
  }
  Iterator end() const noexcept {
    if (isNil()) return Iterator();
    const DictionaryEntry* end = table().entries + table().used;
    return Iterator(end, end);
  }

  [[nodiscard]] NSDictionary copy() const { return NSDictionary(Value::copy()); }
  [[nodiscard]] NSDictionary detachedCopy() const { return NSDictionary(Value::detachedCopy()); }
  [[nodiscard]] NSMutableDictionary mutableCopy() const;

 protected:
  explicit NSDictionary(detail::Storage* adopted) noexcept : Value(adoptStorage, adopted) {}
  detail::DictionaryStorage& table() const noexcept {
    return *storageAs<detail::DictionaryStorage>();
  }

 private:
  static Value valueOrNil(const Value* found) noexcept { return found ? *found : Value(); }
  const Value* findString(const NSString& key) const noexcept;
};

/// Dictionary that changes in place. Handles share one dictionary, which belongs to one thread at a
/// time.
class NSMutableDictionary : public NSDictionary {
 public:
  /// An empty dictionary.
  NSMutableDictionary();
  constexpr NSMutableDictionary(std::nullptr_t) noexcept : NSDictionary(nullptr) {}
  NSMutableDictionary(std::initializer_list<DictionaryEntry> entries);
  /// A new dictionary with the entries of `dictionary`; nil makes an empty one.
  explicit NSMutableDictionary(const NSDictionary& dictionary);
  /// The shared mutable dictionary itself when the value is one, else nil.
  static NSMutableDictionary from(const Value& value) noexcept;
  /// An empty dictionary with room for `capacity` entries.
  static NSMutableDictionary dictionaryWithCapacity(std::size_t capacity);

  /// Keys are copied, values shared. A nil key or object throws NSException
  /// (NSInvalidArgumentException). On a nil dictionary all of these do nothing.
  void setObject(Value object, const Value& key);
  /// Deleted, because a bare number as key is mostly an object in the key's place. Write `Value(5)`
  /// for a number as key.
  template <class Number>
    requires std::is_arithmetic_v<Number>
  void setObject(Value object, Number key) = delete;
  void addEntriesFromDictionary(const NSDictionary& other);
  /// Does nothing for a key that is not there, or nil.
  void removeObjectForKey(const Value& key);
  void removeAllObjects();
};

}  // namespace zeb
