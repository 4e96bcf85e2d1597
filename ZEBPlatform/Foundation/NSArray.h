#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <initializer_list>
#include <span>

namespace zeb {

class NSMutableArray;

/// Immutable ordered collection of non-nil values.
///
/// `NSArray{a, b}` lists elements; mind that `NSArray{other}` therefore makes an array that holds
/// `other`, and `NSArray(other)` copies the handle. `NSArray{}` is nil; `NSArray::array()` is empty. Nil as an element throws NSException
/// (NSInvalidArgumentException). Beyond 2³⁰ elements std::length_error is thrown.
class NSArray : public Value {
 public:
  constexpr NSArray() noexcept = default;
  constexpr NSArray(std::nullptr_t) noexcept {}
  NSArray(std::initializer_list<Value> elements) : NSArray(arrayWithObjects(elements)) {}
  /// The value when it is an array, else nil.
  template <detail::ValueBeside<NSArray> Source>
  explicit NSArray(const Source& value) noexcept : Value(value.isArray() ? value : Value()) {}

  static NSArray array() { return arrayWithObjects({}); }
  static NSArray arrayWithObjects(std::span<const Value> elements);
  static NSArray arrayWithObjects(std::initializer_list<Value> elements) {
    return arrayWithObjects(std::span(elements.begin(), elements.size()));
  }

  std::size_t count() const noexcept { return isNil() ? 0 : array_().count; }

  /// Throws NSException (NSRangeException) at or past the end; nil on nil.
  Value objectAtIndex(std::size_t index) const;
  Value operator[](std::size_t index) const { return objectAtIndex(index); }
  Value firstObject() const { return count() ? *begin() : Value(); }
  Value lastObject() const { return count() ? end()[-1] : Value(); }
  bool containsObject(const Value& object) const;
  /// The first equal element's index, or NSNotFound.
  std::size_t indexOfObject(const Value& object) const;

  /// The elements themselves, valid as long as the array lives and is not changed.
  const Value* begin() const noexcept { return isNil() ? nullptr : array_().values(); }
  const Value* end() const noexcept {
    return isNil() ? nullptr : array_().values() + array_().count;
  }

  NSArray arrayByAddingObject(const Value& object) const;
  /// The elements' descriptions with `separator` between them.
  NSString componentsJoinedByString(const NSString& separator) const;

  NSArray copy() const { return NSArray(Value::copy()); }
  NSArray detachedCopy() const { return NSArray(Value::detachedCopy()); }
  NSMutableArray mutableCopy() const;

 protected:
  explicit NSArray(detail::Storage* adopted) noexcept : Value(adoptStorage, adopted) {}
  detail::ArrayStorage& array_() const noexcept { return *storageAs<detail::ArrayStorage>(); }
};

/// Array that changes in place. Handles share one array; belongs to one thread at a time.
class NSMutableArray : public NSArray {
 public:
  /// An empty array.
  NSMutableArray();
  constexpr NSMutableArray(std::nullptr_t) noexcept : NSArray(nullptr) {}
  NSMutableArray(std::initializer_list<Value> elements);
  /// The shared mutable array itself when the value is one, else nil.
  static NSMutableArray from(const Value& value) noexcept;
  /// An empty array with room for `capacity` elements.
  static NSMutableArray arrayWithCapacity(std::size_t capacity);

  /// A nil object throws NSException (NSInvalidArgumentException); an index past the end throws
  /// NSRangeException. On a nil array all of these do nothing.
  void addObject(Value object);
  void addObjectsFromArray(const NSArray& other);
  void insertObject(Value object, std::size_t index);
  void replaceObjectAtIndex(std::size_t index, Value object);
  void removeObjectAtIndex(std::size_t index);
  void removeLastObject();
  void removeAllObjects();
  void exchangeObjectAtIndex(std::size_t first, std::size_t second);

 private:
  detail::MutableArrayStorage& contents() const noexcept {
    return *storageAs<detail::MutableArrayStorage>();
  }
  void grow(std::size_t capacity);
};

}  // namespace zeb
