#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Runtime.h>
#include <ZEBUtilities/Collections.h>

#include <array>
#include <cmath>
#include <map>
#include <numeric>

#include "Support/Support.h"

namespace zeb {
namespace {

using test::raisedName;

bool isEven(const Value& number) { return number.intValue() % 2 == 0; }
bool differ(const Value& left, const Value& right) { return left != right; }
const Block<bool(const Value&)> below(int limit) {
  return [limit](const Value& number) { return number.intValue() < limit; };
}
NSArray upTo(int last) {
  std::vector<int> numbers(static_cast<std::size_t>(last));
  std::iota(numbers.begin(), numbers.end(), 1);
  return NSArray::arrayWithObjects(std::vector<Value>(numbers.begin(), numbers.end()));
}

/// Ordered by its number; equal numbers are told apart by identity.
struct Ranked : NSObject {
  explicit Ranked(int number) : rank(number) {}
  static Class* runtimeClass() {
    static Class* const cls = registerClass(
        "Ranked", {method("compare:",
                          [](const Ranked& self, const Ranked& other) {
                            return NSNumber(self.rank).compare(NSNumber(other.rank));
                          }),
                   method("reverseCompare:",
                          [](const Ranked& self, const Ranked& other) {
                            return NSNumber(other.rank).compare(NSNumber(self.rank));
                          }),
                   method("isOdd", [](const Ranked& self) { return self.rank % 2 != 0; }),
                   method("doubleValue", [](const Ranked& self) { return self.rank * 1.5; }),
                   method("plus:and:", [](const Ranked& self, int one, int other) {
                     return self.rank + one + other;
                   })});
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }
  const int rank;
};

/// Runs code of others when it is compared; has another hash when it has such code.
struct Meddler : NSObject {
  std::size_t hash() const noexcept override { return change ? 1 : 0; }
  bool isEqual(const NSObject&) const override { return change(), true; }
  std::function<void()> change;
};

TEST(ArrayAdditions, AnswerTheTables) {
  const NSArray empty = NSArray::array(), mixed{"a", 2, NSArray{3}, "4.5"}, eight = upTo(8);
  const NSMutableArray all = upTo(4).mutableCopy();
  const Value twin1 = makeRef<Ranked>(1), twin2 = makeRef<Ranked>(1);
  const auto none = [](const Value&) -> Value { return nullptr; };
  const auto evenUpToFive = [](const Value& number, bool& stop) {
    stop = number == 5;
    return isEven(number);
  };
  const auto indexesUpTo2 = [](const Value&, std::size_t index, bool& stop) {
    stop = index == 2;
    return index;
  };
  const std::pair<NSArray, NSArray> arrays[] = {
      {zeb_map(mixed, "description"_sel), {"a", "2", mixed[2].description(), "4.5"}},
      {zeb_map(NSArray{"a", "b"}, "stringByAppendingString:"_sel, "x"), {"ax", "bx"}},
      {zeb_map(NSArray{Value(twin1)}, "plus:and:"_sel, 10, 20), {31}},
      {zeb_map(NSArray{"a", "ccc"}, &NSString::length), {1, 3}},
      {zeb_map(NSArray{"a", "b"}, &NSString::stringByAppendingString, "x"), {"ax", "bx"}},
      {zeb_map(NSArray{"a", "b"}, [](const std::string& text) { return text + "y"; }),
       {"ay", "by"}},
      {zeb_map(eight, &Value::description), zeb_map(eight, "stringValue"_sel)},
      {zeb_mapWithBlock(eight, none), empty},
      {zeb_mapWithBlock(eight, nullptr), empty},
      {zeb_mapWithBlockWithIndex(eight, indexesUpTo2), {0, 1, 2}},
      {zeb_mapWithBlockWithIndex(eight, nullptr), empty},
      {zeb_mapObjectsOfClass(NSArray{"a", 1, NSMutableString("b")}, objc_lookUpClass("NSString"),
                             [](const Value& text) { return text; }),
       {"a", "b"}},
      {zeb_mapObjectsOfClass<NSMutableString>(NSArray{"a", 1, NSMutableString("b")},
                                              [](const NSMutableString& text) { return text; }),
       {"b"}},
      {zeb_mapObjectsOfClass<Ranked>(NSArray{1, twin1}, [](const auto& one) { return one->rank; }),
       {1}},
      {zeb_mapFunction(
           upTo(2), [](const Value& n, void* by) -> Value { return n.intValue() * *(int*)by; },
           std::array{7}.data()),
       {7, 14}},
      {zeb_filter(NSArray{twin1, Value(makeRef<Ranked>(2))}, "isOdd"_sel), {twin1}},
      {zeb_filter(mixed, &Value::isString), {"a", "4.5"}},
      {zeb_filter(NSArray{"ä", "b"}, &NSString::isASCII), {"b"}},
      {zeb_filterWithBlock(eight, isEven), {2, 4, 6, 8}},
      {zeb_filterWithBlockWithEarlyStop(eight, evenUpToFive), {2, 4, 6, 7, 8}},
      {zeb_arrayByConcatenatingArrays(NSArray{upTo(2), empty, upTo(1)}), {1, 2, 1}},
      {zeb_arrayByRemovingDuplicates(NSArray{2, "a", 2.0, "a", 1}), {2, "a", 1}},
      {zeb_arrayByRemovingAdjacenciesFailingTest(NSArray{1, 1, 2, 2, 1}, differ), {1, 2, 1}},
      {zeb_arrayByRemovingAdjacenciesFailingTest(
           NSArray{1, 5, 2, 3, 6},
           [](const Value& kept, const Value& n) { return kept.intValue() < n.intValue(); }),
       {1, 5, 6}},
      {zeb_arrayByRemovingFirstObjectFailingTest(NSArray{1, 9, 2, 9}, below(5)), {1, 2, 9}},
      {zeb_arrayByRemovingFirstObjectIdenticalTo(NSArray{twin2, twin1, twin1}, twin1),
       {twin2, twin1}},
      {zeb_arrayByRemovingFirstObjectIdenticalTo(NSArray{"ab"}, NSMutableString("ab")), {"ab"}},
      {zeb_arrayByRemovingLastObject(upTo(3)), {1, 2}},
      {zeb_arrayByRemovingObjectsAtIndexes(eight, {7, 0, 3, 4}), {2, 3, 6, 7}},
      {zeb_arrayByReplacingFirstOccurrenceOfObject(NSArray{1, 2, 2}, 2.0, "x"), {1, "x", 2}},
      {zeb_subarrayWithAtMost(eight, 0), empty},
      {zeb_subarrayWithAtMost(upTo(3), 3), {1, 2, 3}},
      {zeb_subarrayWithAtMost(eight, 2), {1, 2}},
      {zeb_subarrayWithAtMostFromEnd(eight, 2), {7, 8}},
      {zeb_subarrayWithAtMostFromEnd(upTo(3), SIZE_MAX), {1, 2, 3}},
      {zeb_slice(all, {2, 10}), {3, 4}},
      {zeb_slice(all, {1, SIZE_MAX}), {2, 3, 4}},
      {zeb_slice(all, {4, 1}), empty},
      {zeb_flattenedArray(NSArray{1, NSArray{all, empty, NSArray{all}}, NSSet{5}}),
       {1, 1, 2, 3, 4, 1, 2, 3, 4, NSSet{5}}},
      {zeb_reversedArray(all), {4, 3, 2, 1}},
  };
  for (const auto& [result, expected] : arrays) {
    EXPECT_EQ(result, expected) << "case " << &result - &arrays[0].first;
    EXPECT_FALSE(result.isMutable());
  }

  const std::pair<Value, Value> answers[] = {
      {zeb_indexSafeObjectAtIndex(mixed, 1), 2},
      {zeb_indexSafeObjectAtIndex(mixed, 4), nullptr},
      {zeb_indexSafeObjectAtIndex(mixed, SIZE_MAX), nullptr},
      {zeb_stringAtIndex(mixed, 0), "a"},
      {zeb_stringAtIndex(mixed, 1), nullptr},
      {zeb_numberAtIndex(mixed, 1), 2},
      {zeb_numberAtIndex(mixed, 3), nullptr},
      {zeb_doubleAtIndex(mixed, 3), 4.5},
      {zeb_doubleAtIndex(mixed, 2), 0.0},
      {zeb_doubleAtIndex(NSArray{Value(twin1)}, 0), 1.5},
      {zeb_countOfObjectsPassingTest(eight, isEven), 4},
      {zeb_doAllObjectsPassTest(eight, [](auto& n, auto i, auto&) { return n == i + 1; }), true},
      {zeb_doAllObjectsPassTest(eight, [](auto& n, auto, auto& stop) { return stop = n == 1; }),
       true},
      {zeb_doAllObjectsPassTest(eight, [](auto& n, auto, auto&) { return n == 1; }), false},
      {zeb_doAllObjectsPassTest(empty, [](auto&&...) { return false; }), true},
      {zeb_doAnyObjectsPassTest(eight, below(2)), true},
      {zeb_doAnyObjectsPassTest(empty, below(2)), false},
      {zeb_firstObjectPassingTest(mixed, &Value::isNumber), 2},
      {zeb_firstObjectPassingTest(mixed, &Value::isSet), nullptr},
      {zeb_reduceWithInitialValue(eight, "",
                                  [](const Value& text, const Value& n) -> Value {
                                    return NSString(text).stringByAppendingString(n.description());
                                  }),
       "12345678"},
      {zeb_reduceWithInitialValue(empty, "start", nullptr), "start"},
      {zeb_hasCommonObjectWithArray(eight, NSArray{9, 8.0}), true},
      {zeb_hasCommonObjectWithArray(eight, NSArray{"8"}), false},
      {zeb_isSubsetOfArray(NSArray{2, 2.0, 1u}, eight), true},
      {zeb_isSubsetOfArray(NSArray{2, 9}, eight), false},
      {zeb_isSubsetOfArray(empty, nullptr), true},
  };
  for (const auto& [result, expected] : answers) {
    EXPECT_EQ(result, expected) << "answer " << &result - &answers[0].first;
  }
  zeb_applyBlock(all, nullptr);
  EXPECT_TRUE(zeb_arrayByRemovingObjectsAtIndexes(all, {}).isIdenticalTo(all));
  EXPECT_TRUE(zeb_arrayByReplacingFirstOccurrenceOfObject(all, 9, 1).isIdenticalTo(all));
  EXPECT_TRUE(zeb_arrayByReplacingFirstOccurrenceOfObject(all, 1, nullptr).isIdenticalTo(all));
  EXPECT_TRUE(all == upTo(4) && zeb_map(nullptr, "x"_sel).isNil() && zeb_sortedArray({}).isNil());
}

TEST(ArrayAdditions, MutateInPlaceAndIgnoreNil) {
  NSMutableArray array{1, 2};
  zeb_insertObjectIfNotNil(array, 3, 10);
  zeb_pushFront(array, 0);
  zeb_pushBack(array, 4);
  zeb_insertObjectIfNotNil(array, 2.5, [](const Value& left, const Value& right) {
    return NSNumber(left).compare(NSNumber(right));
  });
  for (const auto& add : {zeb_pushBack, zeb_pushFront}) add(array, nullptr);
  zeb_insertObjectIfNotNil(array, nullptr, 0);
  EXPECT_EQ(array, (NSArray{0, 1, 2, 2.5, 3, 4}));
  EXPECT_TRUE(zeb_popFront(array) == 0 && zeb_popBack(array) == 4 && array.count() == 4);
  NSMutableArray none;
  EXPECT_TRUE(zeb_popFront(none).isNil() && zeb_popBack(none).isNil() && none.count() == 0);
  array.setArray(NSArray{3, 1.0, 2, 1, 3u});
  zeb_removeDuplicates(array);
  zeb_sort(array);
  EXPECT_EQ(array, (NSArray{1, 2, 3}));
  NSMutableSet set;
  zeb_addObjectIfNotNil(set, nullptr);
  zeb_addObjectIfNotNil(set, 1);
  EXPECT_EQ(set, NSSet{1});
  NSMutableOrderedSet ordered{1, 2, 3, 4};
  zeb_moveObjectIfNotNil(ordered, 1, 2);
  zeb_moveObjectIfNotNil(ordered, "any", 0, [](const Value& member) { return member == 4; });
  zeb_moveObjectIfNotNil(ordered, nullptr, 0, isEven);
  zeb_moveObjectIfNotNil(ordered, 9, 77);
  EXPECT_EQ(ordered, (NSOrderedSet{4, 2, 3, 1}));
  EXPECT_EQ(raisedName([&] { zeb_moveObjectIfNotNil(ordered, 4, 4); }), NSRangeException);
}

TEST(ArrayAdditions, RefuseMisuseAndKeepTheArray) {
  NSMutableArray array{"b", 1, NSDate::date(), NSArray{1}};
  const NSArray before = array.copy(), empty = NSArray::array();
  const auto raise = [](const char* name, const std::function<void()>& call) {
    EXPECT_EQ(raisedName(call), name);
  };
  raise(NSRangeException, [&] { zeb_stringAtIndex(array, 4); });
  raise(NSRangeException, [&] { zeb_numberAtIndex(empty, 0); });
  raise(NSRangeException, [&] { zeb_doubleAtIndex(array, SIZE_MAX); });
  raise(NSRangeException, [&] { (void)zeb_arrayByRemovingLastObject(empty); });
  raise(NSRangeException, [&] { (void)zeb_arrayByRemovingObjectsAtIndexes(array, {0, 4}); });
  raise(NSInvalidArgumentException, [&] { zeb_map(array, "length"_sel); });
  raise(NSInvalidArgumentException, [&] { zeb_map(array, &NSString::length); });
  raise(NSInvalidArgumentException, [&] { zeb_filter(array, "self"_sel); });
  raise(NSInvalidArgumentException, [&] { (void)zeb_arrayByConcatenatingArrays(array); });
  raise(NSInvalidArgumentException, [&] { zeb_sort(array); });
  raise(NSInvalidArgumentException, [&] { (void)zeb_sortedArray(NSArray{NSSet{1}, NSSet{2}}); });
  raise(NSInvalidArgumentException, [&] { (void)zeb_reverseSortedArray(upTo(2)); });
  EXPECT_EQ(array, before);
  EXPECT_DEATH(zeb_filter(array, std::function(isEven) = nullptr), "^A nil block was called");
  array.addObject(Value(array));
  raise(NSInvalidArgumentException, [&] { (void)zeb_flattenedArray(array); });
  array.removeLastObject();
}

/// Each kind of change is noticed, and the element of the callback stays alive.
TEST(ArrayAdditions, RaiseWhenTheArrayChangesMeanwhile) {
  std::atomic<int> deaths = 0;
  NSMutableArray array;
  const std::function<void()> changes[] = {
      [&] { array.addObject(1); },
      [&] { array.insertObject(1, 0); },
      [&] { array.replaceObjectAtIndex(0, 1); },
      [&] { array.exchangeObjectAtIndex(0, 1); },
      [&] { array.removeObjectAtIndex(0); },
      [&] { array.removeObjectsAtIndexes({0}); },
      [&] { array.removeAllObjects(); },
      [&] { array.setArray(upTo(1)); },
      [&] { array.addObjectsFromArray(upTo(1)); },
      [&] { array.sortUsingComparator([](auto&, auto&) { return NSOrderedSame; }); }};
  for (const auto& change : changes) {
    bool isPassing = false;
    const auto visit = [&](const Value& element, auto&&...) {
      change();
      const auto probe = element.object<test::Probe>();
      EXPECT_TRUE(probe && probe->isAlive);
      return isPassing;
    };
    const auto fold = [&](const Value&, const Value& element) { return visit(element); };
    const auto compare = [&](const Value& left, const Value&) {
      visit(left);
      return NSOrderedSame;
    };
    const std::function<void()> operations[] = {
        [&] { zeb_map(array, visit); },
        [&] { zeb_mapWithBlockWithIndex(array, visit); },
        [&] { zeb_mapObjectsOfClass(array, objc_lookUpClass("NSObject"), visit); },
        [&] { zeb_filterWithBlockWithEarlyStop(array, visit); },
        [&] { zeb_countOfObjectsPassingTest(array, visit); },
        [&] { zeb_doAllObjectsPassTest(array, visit); },
        [&] { zeb_firstObjectPassingTest(array, visit); },
        [&] { zeb_reduceWithInitialValue(array, 0, fold); },
        [&] { zeb_applyBlock(array, visit); },
        [&] { (void)zeb_arrayByRemovingAdjacenciesFailingTest(array, fold); },
        [&] { (void)zeb_arrayByRemovingFirstObjectFailingTest(array, visit); },
        [&] { zeb_insertObjectIfNotNil(array, makeRef<test::Probe>(deaths), compare); },
        [&] { array.enumerateObjectsUsingBlock([&](auto& one, auto, auto&) { visit(one); }); }};
    for (const auto& operation : operations) {
      isPassing = !isPassing;
      array.removeAllObjects();
      for (int i = 0; i < 3; ++i) array.addObject(makeRef<test::Probe>(deaths));
      EXPECT_EQ(raisedName(operation), NSGenericException)
          << "operation " << &operation - operations << ", change " << &change - changes;
    }
  }
  const auto meddler = makeRef<Meddler>(), other = makeRef<Meddler>();
  meddler->change = [&] { array.removeAllObjects(); };
  array.setArray(NSArray{meddler, 2});
  EXPECT_EQ(raisedName([&] { array.containsObject(other); }), NSGenericException);
  NSArray renamed{1, 2, meddler};
  meddler->change = [&] { renamed = NSArray{1}; };
  EXPECT_EQ(zeb_arrayByReplacingFirstOccurrenceOfObject(renamed, other, 3), upTo(3));
  NSMutableOrderedSet members{0, other};
  other->change = meddler->change;
  zeb_moveObjectIfNotNil(members, "any", 0, &Value::isObject);
  EXPECT_TRUE(members.firstObject().isObject());
}

TEST(ArrayAdditions, SortByTheElementsOwnMethods) {
  std::mt19937 random(1);
  NSMutableArray array;
  for (int i = 0; i < 500; ++i) array.addObject(makeRef<Ranked>(static_cast<int>(random() % 50)));
  const auto rank = [](const Value& one) { return one.object<Ranked>()->rank; };
  std::vector<Value> model(array.begin(), array.end());
  const auto isSame = [&](const NSArray& sorted) {
    return std::equal(sorted.begin(), sorted.end(), model.begin(), model.end(),
                      [](auto& one, auto& other) { return one.isIdenticalTo(other); });
  };
  test::sortStably(model, [&](auto& left, auto& right) { return rank(left) > rank(right); });
  EXPECT_TRUE(isSame(zeb_reverseSortedArray(array)));
  model.assign(array.begin(), array.end());
  test::sortStably(model, [&](auto& left, auto& right) { return rank(left) < rank(right); });
  EXPECT_TRUE(isSame(zeb_sortedArray(array)));
  zeb_sort(array);
  EXPECT_TRUE(isSame(array));
}

/// Random arrays of numbers and texts, some of them equal, against plain loops.
TEST(ArrayAdditions, AgreeWithPlainLoops) {
  std::mt19937 random(2);
  for (int round = 0; round < 300; ++round) {
    std::vector<Value> model, other, distinct, kept;
    const auto any = [&]() -> Value {
      const auto number = random() % 40;
      return number % 2 ? Value(number) : NSNumber(number).stringValue();
    };
    for (auto size = random() % 30; size > 0; --size) model.push_back(any());
    for (auto size = random() % 4; size > 0; --size) other.push_back(any());
    const NSArray array = NSArray::arrayWithObjects(model);
    const NSArray others = NSArray::arrayWithObjects(other);
    bool isSubset = true, hasCommon = false;
    std::vector<std::size_t> indexes;
    for (std::size_t index = 0; index < model.size(); ++index) {
      const Value& element = model[index];
      const auto isIn = [&](const auto& list) {
        return std::find(list.begin(), list.end(), element) != list.end();
      };
      if (!isIn(distinct)) distinct.push_back(element);
      (isIn(other) ? hasCommon : isSubset) = isIn(other);
      (random() % 3 ? indexes.push_back(index) : kept.push_back(element));
    }
    EXPECT_EQ(zeb_arrayByRemovingDuplicates(array), NSArray::arrayWithObjects(distinct));
    EXPECT_EQ(zeb_isSubsetOfArray(array, others), isSubset);
    EXPECT_EQ(zeb_hasCommonObjectWithArray(array, others), hasCommon);
    EXPECT_EQ(zeb_arrayByRemovingObjectsAtIndexes(array, NSIndexSet::indexSetWithIndexes(indexes)),
              NSArray::arrayWithObjects(kept));
  }
}

TEST(ArrayAdditions, TellChosenCollisionsApart) {
  std::vector<Value> elements;
  for (const std::string& key : test::collidingKeys(3000)) elements.push_back(key);
  NSMutableArray array{NAN, NAN};
  array.addObjectsFromArray(NSArray::arrayWithObjects(elements));
  array.addObjectsFromArray(array);
  EXPECT_EQ(zeb_arrayByRemovingDuplicates(array).count(), 3001u);
}

/// Each of the 24 orders of four elements is expected 1000 times with a standard deviation of 31.
/// For a uniform shuffle, a count outside 500 to 1500 is therefore practically impossible.
TEST(ArrayAdditions, ShuffleToEachOrderEquallyOften) {
  std::map<NSString, int> counts;
  for (int i = 0; i < 24'000; ++i) {
    const NSMutableArray shuffled = zeb_shuffledArray(upTo(4));
    ++counts[shuffled.componentsJoinedByString("")];
  }
  EXPECT_EQ(counts.size(), 24u);
  for (const auto& [order, count] : counts) EXPECT_TRUE(count > 500 && count < 1500) << order;
  const NSMutableArray large = zeb_shuffledArray(upTo(5000));
  EXPECT_TRUE(large != upTo(5000) && zeb_sortedArray(large) == upTo(5000));
  EXPECT_TRUE(zeb_shuffledArray(NSArray::array()).isMutable() && zeb_shuffledArray({}).isNil());
}

TEST(ArrayAdditions, FlattenToAnyDepthWithoutRecursion) {
  test::runOnSmallStack([] {
    NSArray nested = upTo(1);
    for (int level = 0; level < 200'000; ++level) nested = NSMutableArray{Value(nested), level};
    EXPECT_EQ(zeb_flattenedArray(nested).count(), 200'001u);
  });
}

}  // namespace
}  // namespace zeb
