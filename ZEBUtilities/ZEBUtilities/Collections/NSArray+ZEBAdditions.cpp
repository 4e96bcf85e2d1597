#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/detail/ArrayBuilder.h>
#include <ZEBPlatform/Foundation/detail/ArrayEnumeration.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>

#include <span>
#include <utility>

namespace zeb {

namespace {

/// The results, unless nil, of sending the selector with these objects to each element.
template <class... Objects>
NSArray mapBySending(const NSArray& array, SEL selector, const Objects&... objects) {
  return zeb_mapWithBlock(array, [&](const Value& element) {
    detail::requireMethod(element, selector);
    return send(element, selector, objects...);
  });
}

NSSet setOf(const NSArray& array) {
  NSMutableSet members = NSMutableSet::setWithCapacity(array.count());
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    members.addObject(element);
    return true;
  });
  return members;
}

}  // namespace

Value zeb_indexSafeObjectAtIndex(const NSArray& array, std::size_t index) {
  return index < array.count() ? array.begin()[index] : Value();
}

NSString zeb_stringAtIndex(const NSArray& array, std::size_t index) {
  return NSString(array.objectAtIndex(index));
}

NSNumber zeb_numberAtIndex(const NSArray& array, std::size_t index) {
  return NSNumber(array.objectAtIndex(index));
}

double zeb_doubleAtIndex(const NSArray& array, std::size_t index) {
  const Value element = array.objectAtIndex(index);
  if (element.respondsToNumericReadings()) return element.doubleValue();
  const SEL reading = "doubleValue"_sel;
  return respondsToSelector(element, reading) ? send<double>(element, reading) : 0;
}

NSArray zeb_map(const NSArray& array, SEL selector) { return mapBySending(array, selector); }

NSArray zeb_map(const NSArray& array, SEL selector, const Value& object) {
  return mapBySending(array, selector, object);
}

NSArray zeb_map(const NSArray& array, SEL selector, const Value& object1, const Value& object2) {
  return mapBySending(array, selector, object1, object2);
}

NSArray zeb_mapWithBlock(const NSArray& array, FunctionView<Value(const Value& element)> block) {
  if (array.isNil()) return nullptr;
  if (!block) return NSArray::array();
  detail::ArrayBuilder results(array.count());
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    results.appendUnlessNil(block(element));
    return true;
  });
  return results.finish();
}

NSArray zeb_mapWithBlockWithIndex(
    const NSArray& array,
    FunctionView<Value(const Value& element, std::size_t index, bool& stop)> block) {
  if (array.isNil()) return nullptr;
  if (!block) return NSArray::array();
  detail::ArrayBuilder results(array.count());
  detail::enumerate(array, [&](const Value& element, std::size_t index) {
    bool stop = false;
    results.appendUnlessNil(block(element, index, stop));
    return !stop;
  });
  return results.finish();
}

NSArray zeb_mapObjectsOfClass(const NSArray& array, const Class* cls,
                              FunctionView<Value(const Value& element)> block) {
  return zeb_mapWithBlock(array, [&](const Value& element) {
    return object_getClass(element)->isSubclassOfClass(cls) ? block(element) : Value();
  });
}

NSArray zeb_mapFunction(const NSArray& array,
                        Value (*function)(const Value& element, void* context), void* context) {
  const FunctionView<Value(const Value&, void*)> call(function);
  return zeb_mapWithBlock(array, [&](const Value& element) { return call(element, context); });
}

NSArray zeb_filter(const NSArray& array, SEL selector) {
  return zeb_filterWithBlock(array, [&](const Value& element) {
    detail::requireMethod(element, selector);
    return send<bool>(element, selector);
  });
}

NSArray zeb_filterWithBlock(const NSArray& array, FunctionView<bool(const Value& element)> block) {
  if (array.isNil()) return nullptr;
  detail::ArrayBuilder kept(array.count());
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    if (block(element)) kept.append(element);
    return true;
  });
  return kept.finish();
}

NSArray zeb_filterWithBlockWithEarlyStop(
    const NSArray& array, FunctionView<bool(const Value& element, bool& stop)> block) {
  if (array.isNil()) return nullptr;
  detail::ArrayBuilder kept(array.count());
  bool stopped = false;
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    if (stopped || block(element, stopped)) kept.append(element);
    return true;
  });
  return kept.finish();
}

std::size_t zeb_countOfObjectsPassingTest(const NSArray& array,
                                          FunctionView<bool(const Value& element)> block) {
  std::size_t count = 0;
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    count += block(element);
    return true;
  });
  return count;
}

bool zeb_doAllObjectsPassTest(
    const NSArray& array,
    FunctionView<bool(const Value& element, std::size_t index, bool& stop)> block) {
  bool passes = !array.isNil();
  detail::enumerate(array, [&](const Value& element, std::size_t index) {
    bool stop = false;
    passes = block(element, index, stop);
    return passes && !stop;
  });
  return passes;
}

bool zeb_doAnyObjectsPassTest(const NSArray& array,
                              FunctionView<bool(const Value& element)> block) {
  return !zeb_firstObjectPassingTest(array, block).isNil();
}

Value zeb_firstObjectPassingTest(const NSArray& array,
                                 FunctionView<bool(const Value& element)> block) {
  Value found;
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    if (!block(element)) return true;
    found = element;
    return false;
  });
  return found;
}

Value zeb_reduceWithInitialValue(
    const NSArray& array, const Value& initialValue,
    FunctionView<Value(const Value& accumulator, const Value& element)> block) {
  if (array.isNil()) return nullptr;
  Value accumulator = initialValue;
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    accumulator = block(accumulator, element);
    return true;
  });
  return accumulator;
}

void zeb_applyBlock(const NSArray& array, FunctionView<void(const Value& element)> block) {
  if (!block) return;
  detail::enumerate(array, [&](const Value& element, std::size_t) {
    block(element);
    return true;
  });
}

bool zeb_hasCommonObjectWithArray(const NSArray& array, const NSArray& other) {
  if (array.empty() || other.empty()) return false;
  const NSSet members = setOf(other);
  return zeb_doAnyObjectsPassTest(
      array, [&](const Value& element) { return members.containsObject(element); });
}

bool zeb_isSubsetOfArray(const NSArray& array, const NSArray& other) {
  if (array.empty()) return !array.isNil();
  const NSSet members = setOf(other);
  return zeb_doAllObjectsPassTest(array, [&](const Value& element, std::size_t, bool&) {
    return members.containsObject(element);
  });
}

}  // namespace zeb
