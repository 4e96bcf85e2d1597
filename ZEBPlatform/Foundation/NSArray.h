#pragma once

#include <ZEBPlatform/Foundation/NSIndexSet.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <utility>
#include <vector>

namespace zeb {

class NSMutableArray;

/// How two elements are ordered. It may be called many times with the same elements.
using NSComparator = FunctionView<NSComparisonResult(const Value& left, const Value& right)>;

enum NSSortOptions : std::uint64_t {
  NSSortConcurrent = 1 << 0,  ///< accepted; sorting uses the calling thread only
  NSSortStable = 1 << 4,      ///< equal elements keep their order; this holds without it, too
};

/// What a binary search answers.
enum NSBinarySearchingOptions : std::uint64_t {
  NSBinarySearchingFirstEqual = 1 << 8,
  NSBinarySearchingLastEqual = 1 << 9,
  NSBinarySearchingInsertionIndex = 1 << 10,
};
constexpr NSBinarySearchingOptions operator|(NSBinarySearchingOptions left,
                                             NSBinarySearchingOptions right) noexcept {
  return static_cast<NSBinarySearchingOptions>(std::uint64_t{left} | std::uint64_t{right});
}

/// Immutable ordered collection of non-nil values.
///
/// `NSArray{a, b}` lists elements. A single array in braces is copied, as in parentheses:
/// `NSArray{other}` is `other`. `NSArray{Value(other)}` nests it. `NSArray{}` is nil;
/// `NSArray::array()` is empty.
///
/// Nil as an element throws NSException (NSInvalidArgumentException). Beyond 2³⁰ elements
/// std::length_error is thrown.
class NSArray : public Value {
 public:
  using value_type = Value;
  using size_type = std::size_t;
  using const_iterator = const Value*;

  constexpr NSArray() noexcept = default;
  constexpr NSArray(std::nullptr_t) noexcept {}
  NSArray(std::initializer_list<Value> elements) : NSArray(arrayWithObjects(elements)) {}
  /// Arrays in braces: a single one is copied, several are the elements.
  template <std::derived_from<NSArray> Array>
  NSArray(std::initializer_list<Array> arrays)
      : NSArray(arrays.size() == 1
                    ? NSArray(*arrays.begin())
                    : arrayWithObjects(std::vector<Value>(arrays.begin(), arrays.end()))) {}
  /// The value when it is an array, else nil.
  template <detail::ValueBeside<NSArray> Source>
  explicit NSArray(const Source& value) noexcept : Value(value.isArray() ? value : Value()) {}
  /// The same, without counting the reference of a temporary value up and down.
  template <std::same_as<Value> Source>
  explicit NSArray(Source&& value) noexcept : Value(value.isArray() ? std::move(value) : Value()) {}

  static NSArray array() { return arrayWithObjects({}); }
  static NSArray arrayWithObjects(std::span<const Value> elements);
  static NSArray arrayWithObjects(std::initializer_list<Value> elements) {
    return arrayWithObjects(std::span(elements.begin(), elements.size()));
  }

  std::size_t count() const noexcept { return isNil() ? 0 : array_().count; }
  std::size_t size() const noexcept { return count(); }
  /// True of a nil array, too.
  [[nodiscard]] bool empty() const noexcept { return count() == 0; }

  /// Throws NSException (NSRangeException) at or past the end; nil on nil.
  Value objectAtIndex(std::size_t index) const;
  Value operator[](std::size_t index) const { return objectAtIndex(index); }
  Value firstObject() const { return count() ? *begin() : Value(); }
  Value lastObject() const { return count() ? end()[-1] : Value(); }
  bool containsObject(const Value& object) const;
  [[nodiscard]] bool contains(const Value& object) const { return containsObject(object); }
  /// The first equal element's index, or NSNotFound. An `isEqual` that changes the array makes this
  /// and `containsObject` throw NSException (NSGenericException).
  std::size_t indexOfObject(const Value& object) const;

  /// The stored elements, valid as long as the array lives and is not changed.
  const Value* begin() const noexcept { return isNil() ? nullptr : array_().values(); }
  const Value* end() const noexcept {
    return isNil() ? nullptr : array_().values() + array_().count;
  }

  /// Binary search in a range that is sorted by the comparator. Answers the index of an equal
  /// element (the last one unless `NSBinarySearchingFirstEqual` is given), or NSNotFound. With
  /// `NSBinarySearchingInsertionIndex` it answers the index at which `object` has to be inserted:
  /// behind all equal elements, with `NSBinarySearchingFirstEqual` before them. The object is the
  /// comparator's right argument.
  ///
  /// Throws NSException: for a nil object or comparator NSInvalidArgumentException, for a range
  /// that is not inside the array NSRangeException, and if the comparator changes the array
  /// NSGenericException. NSNotFound on nil.
  std::size_t indexOfObject(const Value& object, NSRange sortedRange,
                            NSBinarySearchingOptions options, NSComparator comparator) const;

  /// Calls the block with each element in order until it sets `stop`. A block that changes the
  /// array makes this throw NSException (NSGenericException) when the block returns; the element is
  /// kept alive meanwhile. A nil block does nothing.
  void enumerateObjectsUsingBlock(
      FunctionView<void(const Value& object, std::size_t index, bool& stop)> block) const;

  [[nodiscard]] NSArray arrayByAddingObject(const Value& object) const;
  /// Throws NSException (NSRangeException) for a range that is not inside the array.
  [[nodiscard]] NSArray subarrayWithRange(NSRange range) const;
  /// A new array with the elements in ascending order, always stable. If the comparator contradicts
  /// itself, the order is unspecified, but each element is there once. A comparator that changes
  /// the array makes this throw NSException (NSGenericException).
  ///
  /// A nil comparator sorts strings by units, numbers by value or dates by time, several times as
  /// fast; for other or mixed elements it throws NSException (NSInvalidArgumentException).
  [[nodiscard]] NSArray sortedArrayWithOptions(NSSortOptions options,
                                               NSComparator comparator) const;
  [[nodiscard]] NSArray sortedArrayUsingComparator(NSComparator comparator) const {
    return sortedArrayWithOptions(NSSortStable, comparator);
  }
  /// The elements' descriptions with `separator` between them. A `description` that changes the
  /// array makes this throw NSException (NSGenericException).
  NSString componentsJoinedByString(const NSString& separator) const;

  [[nodiscard]] NSArray copy() const { return NSArray(Value::copy()); }
  [[nodiscard]] NSArray detachedCopy() const { return NSArray(Value::detachedCopy()); }
  [[nodiscard]] NSMutableArray mutableCopy() const;

 protected:
  explicit NSArray(detail::Storage* adopted) noexcept : Value(adoptStorage, adopted) {}
  detail::ArrayStorage& array_() const noexcept { return *storageAs<detail::ArrayStorage>(); }
};

/// Array that changes in place. Handles share one array, which belongs to one thread at a time.
/// Additions and removals at both ends take constant time on average.
///
/// `NSMutableArray{a, b}` lists the elements of a new array. A single mutable array in braces or
/// parentheses is copied as a handle; a single immutable one gives a new array with its elements.
class NSMutableArray : public NSArray {
 public:
  /// An empty array.
  NSMutableArray();
  constexpr NSMutableArray(std::nullptr_t) noexcept : NSArray(nullptr) {}
  NSMutableArray(std::initializer_list<Value> elements);
  template <std::derived_from<NSArray> Array>
  NSMutableArray(std::initializer_list<Array> arrays)
      : NSMutableArray(arrays.size() == 1 ? NSMutableArray(*arrays.begin())
                                          : NSMutableArray(NSArray(arrays))) {}
  /// A new array with the elements of `array`; nil makes an empty one.
  explicit NSMutableArray(const NSArray& array) : NSMutableArray() { addObjectsFromArray(array); }
  /// The shared mutable array itself when the value is one, else nil.
  static NSMutableArray from(const Value& value) noexcept;
  /// An empty array with room for `capacity` elements.
  static NSMutableArray arrayWithCapacity(std::size_t capacity);

  /// A nil object throws NSException (NSInvalidArgumentException); an index past the end throws
  /// NSRangeException. On a nil array all of these do nothing.
  void addObject(Value object);
  void push_back(Value object) { addObject(std::move(object)); }
  void addObjectsFromArray(const NSArray& other);
  void insertObject(Value object, std::size_t index);
  void replaceObjectAtIndex(std::size_t index, Value object);
  void removeObjectAtIndex(std::size_t index);
  void removeLastObject();
  void removeAllObjects();
  /// In linear time, however many indexes there are.
  void removeObjectsAtIndexes(const NSIndexSet& indexes);
  void exchangeObjectAtIndex(std::size_t first, std::size_t second);
  /// Replaces all elements by those of `other`; nil removes all.
  void setArray(const NSArray& other);
  /// As `sortedArrayWithOptions`; the array has its old order while the comparator is called, and
  /// keeps it if the comparator throws.
  void sortWithOptions(NSSortOptions options, NSComparator comparator);
  void sortUsingComparator(NSComparator comparator) { sortWithOptions(NSSortStable, comparator); }

 private:
  detail::MutableArrayStorage& contents() const noexcept {
    return *storageAs<detail::MutableArrayStorage>();
  }
  void grow(std::size_t capacity);
  /// Room for `capacity` elements behind `headroom` free places.
  void moveToNewBuffer(std::size_t capacity, std::size_t headroom);
  /// Makes free places before the first element, unless the array is empty and without a buffer or
  /// is as large as an array can be.
  void openFront();
  /// Puts the element at `order[i]` at index i.
  void rearrange(std::span<const std::uint32_t> order);
};

}  // namespace zeb
