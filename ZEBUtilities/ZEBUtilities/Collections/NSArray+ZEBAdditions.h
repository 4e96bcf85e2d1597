#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSIndexSet.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/SEL.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>
#include <ZEBUtilities/Collections/ElementCall.h>

#include <concepts>
#include <cstddef>

/// Mapping, filtering, testing, slicing and sorting of arrays.
///
/// The receiver is never changed, and results are new immutable arrays unless something else is
/// said. On a nil receiver the answer is nil, false or zero. Elements are equal by `isEqual` unless
/// identity is said. All operations are linear, sorting takes n log n comparisons. They are as
/// thread-safe as the arrays that they are given.
///
/// Blocks run on the caller's thread, before the call returns. A block, selector, comparison or
/// function that changes the receiver makes the operation throw NSException (NSGenericException)
/// when it returns; the element that it has is kept alive. A nil block stops the process at the
/// first element unless something else is said. What a block throws leaves the operation.
///
/// An element without a method for a selector throws NSException (NSInvalidArgumentException). A
/// C++ callable in place of a selector is a function, a closure or a member function such as
/// `&NSString::length`; it takes the element as a `Value` or as a type to which ValueConversion
/// converts. Elements of other kinds throw NSException (NSInvalidArgumentException).
namespace zeb {

// Typed access to elements. -----------------------------------------------------------------------

/// The element, or nil at or past the end.
Value zeb_indexSafeObjectAtIndex(const NSArray& array, std::size_t index);
/// The element if it is of the kind, else nil or zero. Deliberately, unlike the function above, an
/// index at or past the end throws NSException (NSRangeException).
NSString zeb_stringAtIndex(const NSArray& array, std::size_t index);
NSNumber zeb_numberAtIndex(const NSArray& array, std::size_t index);
/// The `doubleValue` of a string, a number, or an object that has such a method; else 0.
double zeb_doubleAtIndex(const NSArray& array, std::size_t index);

// Mapping: the results in order, without those that are nil. -------------------------------------

/// The results of sending the selector to the elements, with up to two arguments.
NSArray zeb_map(const NSArray& array, SEL selector);
NSArray zeb_map(const NSArray& array, SEL selector, const Value& object);
NSArray zeb_map(const NSArray& array, SEL selector, const Value& object1, const Value& object2);
/// A nil block gives an empty array.
NSArray zeb_mapWithBlock(const NSArray& array, FunctionView<Value(const Value& element)> block);
/// The result for the element at which the block sets `stop` is the last one. A nil block gives an
/// empty array.
NSArray zeb_mapWithBlockWithIndex(
    const NSArray& array,
    FunctionView<Value(const Value& element, std::size_t index, bool& stop)> block);
/// Only for elements whose class is `cls` or inherits from it, so "NSString" takes mutable strings,
/// too.
NSArray zeb_mapObjectsOfClass(const NSArray& array, const Class* cls,
                              FunctionView<Value(const Value& element)> block);
/// The same for a handle such as `NSString`, or a C++ class of objects; `Element` is then the
/// handle or a `Ref` to the object.
template <class Kind,
          class Element = std::conditional_t<std::derived_from<Kind, NSObject>, Ref<Kind>, Kind>>
  requires std::derived_from<Kind, Value> || std::derived_from<Kind, NSObject>
NSArray zeb_mapObjectsOfClass(
    const NSArray& array, std::type_identity_t<FunctionView<Value(const Element& element)>> block) {
  return zeb_mapWithBlock(array, [&](const Value& element) -> Value {
    const auto converted = ValueConversion<Element>::fromValue(element);
    return converted ? block(*converted) : Value();
  });
}
/// The context is passed on and not looked at.
NSArray zeb_mapFunction(const NSArray& array,
                        Value (*function)(const Value& element, void* context), void* context);

/// As with a selector; the objects follow the element. A nil callable gives an empty array.
template <class Callable, class... Objects>
  requires detail::ElementCallable<Callable, Objects...>
NSArray zeb_map(const NSArray& array, Callable callable, const Objects&... objects) {
  if (detail::isNilCallable(callable)) return zeb_mapWithBlock(array, nullptr);
  detail::ElementCall<Callable, Objects...> call(std::move(callable), objects...);
  return zeb_mapWithBlock(array,
                          [&](const Value& element) { return call(element, "zeb_map:"_sel); });
}

// Filtering, testing and reducing. ---------------------------------------------------------------

/// The elements for which the method answers true. It must take no argument and return a boolean;
/// a result that does not read as one throws NSException (NSInvalidArgumentException).
NSArray zeb_filter(const NSArray& array, SEL selector);
NSArray zeb_filterWithBlock(const NSArray& array, FunctionView<bool(const Value& element)> block);
/// The elements for which the block answers true, up to the element at which it sets `stop`, and
/// then all elements behind that one, without asking the block.
NSArray zeb_filterWithBlockWithEarlyStop(
    const NSArray& array, FunctionView<bool(const Value& element, bool& stop)> block);
template <class Callable>
  requires detail::ElementCallable<Callable>
NSArray zeb_filter(const NSArray& array, Callable callable) {
  if (detail::isNilCallable(callable)) return zeb_filterWithBlock(array, nullptr);
  detail::ElementCall<Callable> call(std::move(callable));
  return zeb_filterWithBlock(array, [&](const Value& element) {
    const Value result = call(element, "zeb_filter:"_sel);
    return detail::asResult<bool>(element, "zeb_filter:"_sel, result);
  });
}

std::size_t zeb_countOfObjectsPassingTest(const NSArray& array,
                                          FunctionView<bool(const Value& element)> block);
/// Whether the block answers false for no element, up to the one at which it sets `stop`. True of
/// an empty array, false of nil.
bool zeb_doAllObjectsPassTest(
    const NSArray& array,
    FunctionView<bool(const Value& element, std::size_t index, bool& stop)> block);
bool zeb_doAnyObjectsPassTest(const NSArray& array, FunctionView<bool(const Value& element)> block);
/// Nil if there is none.
Value zeb_firstObjectPassingTest(const NSArray& array,
                                 FunctionView<bool(const Value& element)> block);
/// A left fold: the accumulator starts as the initial value and becomes the block's result for each
/// element in order. Any of them may be nil.
Value zeb_reduceWithInitialValue(
    const NSArray& array, const Value& initialValue,
    FunctionView<Value(const Value& accumulator, const Value& element)> block);
/// A nil block does nothing.
void zeb_applyBlock(const NSArray& array, FunctionView<void(const Value& element)> block);
bool zeb_hasCommonObjectWithArray(const NSArray& array, const NSArray& other);
/// Whether the other array contains an equal of each element. True of an empty array.
bool zeb_isSubsetOfArray(const NSArray& array, const NSArray& other);

// New arrays. ------------------------------------------------------------------------------------

/// The elements of each array in the given array, in order. An element that is not an array throws
/// NSException (NSInvalidArgumentException). Empty on nil.
[[nodiscard]] NSArray zeb_arrayByConcatenatingArrays(const NSArray& arrays);
/// The first of each group of equal elements.
[[nodiscard]] NSArray zeb_arrayByRemovingDuplicates(const NSArray& array);
/// Leaves out each element for which the block answers false about it and the last element that was
/// kept, which need not be its neighbour.
[[nodiscard]] NSArray zeb_arrayByRemovingAdjacenciesFailingTest(
    const NSArray& array, FunctionView<bool(const Value& lastKept, const Value& element)> block);
/// Elements behind the first failing one are kept without asking the block.
[[nodiscard]] NSArray zeb_arrayByRemovingFirstObjectFailingTest(
    const NSArray& array, FunctionView<bool(const Value& element)> block);
/// By identity (`Value::isIdenticalTo`): an equal but distinct object is not removed.
[[nodiscard]] NSArray zeb_arrayByRemovingFirstObjectIdenticalTo(const NSArray& array,
                                                                const Value& object);
/// Deliberately throws NSException (NSRangeException) if the array is empty.
[[nodiscard]] NSArray zeb_arrayByRemovingLastObject(const NSArray& array);
/// The receiver itself if there are no indexes. An index at or past the end throws NSException
/// (NSRangeException).
[[nodiscard]] NSArray zeb_arrayByRemovingObjectsAtIndexes(const NSArray& array,
                                                          const NSIndexSet& indexes);
/// The receiver itself if either object is nil or no element is equal to the first one.
[[nodiscard]] NSArray zeb_arrayByReplacingFirstOccurrenceOfObject(const NSArray& array,
                                                                  const Value& object,
                                                                  const Value& replacement);
/// The first or last elements, or a copy of the whole if it has no more than `count`.
[[nodiscard]] NSArray zeb_subarrayWithAtMost(const NSArray& array, std::size_t count);
[[nodiscard]] NSArray zeb_subarrayWithAtMostFromEnd(const NSArray& array, std::size_t count);
/// The part of the range that is inside the array; empty if it begins at or past the end.
[[nodiscard]] NSArray zeb_slice(const NSArray& array, NSRange range);
/// Nested arrays are replaced by their own flattened elements, to any depth and without recursion.
/// A mutable array that contains itself throws NSException (NSInvalidArgumentException). The work
/// is proportional to the elements of the result plus the nested arrays, each counted as often as
/// it occurs: an array that is an element in two places is walked twice, so levels of shared arrays
/// multiply.
[[nodiscard]] NSArray zeb_flattenedArray(const NSArray& array);
[[nodiscard]] NSArray zeb_reversedArray(const NSArray& array);

/// Stable, ascending by the elements' method `compare:`. Strings (by units), numbers and dates have
/// it, and are compared directly, without looking up the method. Elements without it, or of kinds
/// that cannot be compared with each other, throw NSException (NSInvalidArgumentException).
[[nodiscard]] NSArray zeb_sortedArray(const NSArray& array);
/// Stable, by the elements' own method `reverseCompare:`, whose order is theirs to define. The
/// values of the platform do not have this method unless the application adds it to their classes.
[[nodiscard]] NSArray zeb_reverseSortedArray(const NSArray& array);
/// A mutable array with the elements in random order; each order has the same probability.
[[nodiscard]] NSMutableArray zeb_shuffledArray(const NSArray& array);

/// A new mutable array with those elements that a property list can hold, in order and to any
/// depth: strings, numbers, data and dates themselves, arrays cleaned by this function,
/// dictionaries by `zeb_dictionaryByRemovingInvalidPropertyListEntries`. Nil on nil.
[[nodiscard]] NSMutableArray zeb_arrayByRemovingInvalidPropertyListObjects(const NSArray& array);

}  // namespace zeb
