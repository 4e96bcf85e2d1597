#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Foundation/CollectionLimitPrivate.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>
#include <ZEBPlatform/Foundation/detail/NaturalOrder.h>

#include <cmath>
#include <iterator>
#include <ranges>
#include <set>

#include "Support/Support.h"

namespace zeb::test {

// Collections are containers for algorithms and ranges.
static_assert(std::ranges::contiguous_range<NSArray> && std::ranges::sized_range<NSArray>);
static_assert(std::ranges::forward_range<NSDictionary> && std::ranges::sized_range<NSDictionary> &&
              std::ranges::forward_range<NSSet> && std::ranges::sized_range<NSSet>);

TEST(NSArray, HoldsElementsInOrder) {
  const NSArray array{"a", 2, NSArray{3}, 2.0};
  EXPECT_TRUE(array.count() == 4 && array[0] == "a" && array.firstObject() == "a");
  EXPECT_TRUE(array.lastObject() == 2 && array.end()[-2] == NSArray{3});
  EXPECT_TRUE(array.indexOfObject(2u) == 1 && array.containsObject(NSArray{3}));
  EXPECT_TRUE(array.indexOfObject("b") == NSNotFound && array.indexOfObject(nullptr) == NSNotFound);
  NSMutableArray copied{array};
  std::copy(array.begin(), array.end(), std::back_inserter(copied));
  EXPECT_TRUE(array.count() == 4 && copied.size() == 8 && copied.contains(NSArray{3}));
  EXPECT_TRUE(NSArray{array}.isIdenticalTo(array) && NSArray{copied}.isIdenticalTo(copied));
  EXPECT_TRUE(NSMutableArray{copied}.isIdenticalTo(copied) && (NSSet{NSSet{1, 2}}.size() == 2));
  EXPECT_TRUE(NSArray{Value(array)}[0] == array && (NSArray{array, array}[1] == array));
  EXPECT_TRUE(NSMutableSet{NSSet{1}}.contains(1) && NSArray().empty() && !array.empty());
  EXPECT_TRUE(array.arrayByAddingObject("x").count() == 5 && array.count() == 4);
  EXPECT_FALSE(array.isEqual(NSArray{"a", 2, NSArray{4}, 2.0}) || array.isEqual(NSArray{"a", 2}));
}

TEST(NSMutableArray, ChangesInPlaceAndReleasesExactly) {
  std::atomic<int> deaths = 0;
  NSMutableArray array = NSMutableArray::arrayWithCapacity(1);
  for (int i = 0; i < 100; ++i) array.addObject(makeRef<Probe>(deaths));
  array.insertObject("front", 0);
  array.insertObject("end", 101);
  array.removeObjectAtIndex(50);
  array.replaceObjectAtIndex(1, "replaced");
  EXPECT_EQ(deaths, 2);
  array.exchangeObjectAtIndex(0, 100);
  EXPECT_TRUE(array[0] == "end" && array.lastObject() == "front");
  array.addObjectsFromArray(array);
  array.removeLastObject();
  EXPECT_TRUE(array.count() == 201 && array.lastObject() == array[99] && deaths == 2);
  array.removeAllObjects();
  EXPECT_TRUE(array.count() == 0 && deaths == 100);
  array.addObject(1);
  const std::function<void()> beyond[] = {
      [&] { array.insertObject(1, 2); },     [&] { array.replaceObjectAtIndex(1, 1); },
      [&] { array.removeObjectAtIndex(1); }, [&] { array.exchangeObjectAtIndex(0, 1); },
      [&] { array.objectAtIndex(1); },       [] { NSMutableArray().removeLastObject(); }};
  for (const auto& call : beyond) EXPECT_EQ(raisedName(call), NSRangeException);
  const std::function<void()> nil[] = {
      [&] { array.addObject(nullptr); }, [&] { array.insertObject(nullptr, 0); },
      [&] { array.replaceObjectAtIndex(0, nullptr); }, [] { NSArray{1, nullptr}; }};
  for (const auto& call : nil) EXPECT_EQ(raisedName(call), NSInvalidArgumentException);
  EXPECT_EQ(array, NSArray{1}) << "what raises changes nothing";
}

/// Random changes, all of which a plain vector makes as well.
TEST(NSMutableArray, BehavesLikeAModelUnderRandomChanges) {
  std::mt19937 random(3);
  NSMutableArray array;
  std::vector<int> model;
  const auto below = [&](std::size_t bound) { return bound ? random() % bound : 0; };
  for (int step = 0; step < 20'000; ++step) {
    const std::size_t at = below(model.size());
    const auto place = model.begin() + static_cast<std::ptrdiff_t>(at);
    switch (const auto choice = random() % 20) {
      case 0:
      case 1:
      case 2:
        array.insertObject(step, 0);
        model.insert(model.begin(), step);
        break;
      case 3:
        array.insertObject(step, at);
        model.insert(place, step);
        break;
      case 4:
      case 5:
      case 6:
      case 7:
        if (model.empty()) break;
        array.removeObjectAtIndex(choice == 4 ? at : 0);
        model.erase(choice == 4 ? place : model.begin());
        break;
      case 8: {
        std::vector<std::size_t> indexes;
        for (std::size_t index = 0; index < model.size(); ++index) {
          if (random() % 7 == 0) indexes.push_back(index);
        }
        array.removeObjectsAtIndexes(NSIndexSet::indexSetWithIndexes(indexes));
        for (; !indexes.empty(); indexes.pop_back()) {
          model.erase(model.begin() + static_cast<std::ptrdiff_t>(indexes.back()));
        }
        break;
      }
      case 9: {
        const auto byTens = [](int left, int right) { return left / 10 < right / 10; };
        array.sortUsingComparator([&](const Value& left, const Value& right) {
          const int one = left.intValue(), other = right.intValue();
          return byTens(one, other)   ? NSOrderedAscending
                 : byTens(other, one) ? NSOrderedDescending
                                      : NSOrderedSame;
        });
        sortStably(model, byTens);
        break;
      }
      case 10:
        array.setArray(array.subarrayWithRange({at, model.size() - at}));
        model.erase(model.begin(), place);
        break;
      default:
        array.addObject(step);
        model.push_back(step);
    }
    ASSERT_EQ(array, NSArray::arrayWithObjects(std::vector<Value>(model.begin(), model.end())));
  }
  NSMutableArray queue{0};
  for (int round = 0; round < 100'000; queue.removeLastObject()) queue.insertObject(++round, 0);
  const auto& storage = *queue.storageAs<detail::MutableArrayStorage>();
  EXPECT_TRUE(queue == NSArray{100'000} && storage.headroom + storage.capacity < 16);
}

TEST(NSArray, SortsEveryKindStablyAndKeepsAllElementsWhateverTheComparatorDoes) {
  std::mt19937 random(4);
  const auto text = [&](const char* format) {
    return NSString::stringWithFormat(format, random() % 300);
  };
  const std::function<Value()> makers[] = {
      [&]() -> Value { return text(random() % 2 ? "%lu" : "a common start %lu"); },
      [&]() -> Value { return text(random() % 2 ? "ä%lu" : "%lu ö").mutableCopy(); },
      [&]() -> Value { return static_cast<std::int64_t>(random() % 600) - 300; },
      [&]() -> Value {
        const Value numbers[] = {-0.0,
                                 0,
                                 NAN,
                                 -INFINITY,
                                 INFINITY,
                                 static_cast<int>(random() % 9) + 0.5,
                                 true,
                                 (std::uint64_t{1} << 63) + random() % 3,
                                 (std::int64_t{1} << 53) + static_cast<int>(random() % 3)};
        return numbers[random() % std::size(numbers)];
      },
      [&]() -> Value {
        return NSDate::dateWithTimeIntervalSince1970(static_cast<int>(random() % 90) - 40);
      }};
  for (const auto& make : makers) {
    NSMutableArray array;
    for (int i = 0; i < 999; ++i) array.addObject(make());
    const auto compare = [](const Value& left, const Value& right) {
      return *detail::naturalOrder(left, right);
    };
    std::vector<Value> model(array.begin(), array.end());
    sortStably(model,
               [&](const Value& left, const Value& right) { return compare(left, right) < 0; });
    const NSArray all = array.copy();
    for (const bool isNatural : {true, false}) {
      array.setArray(all);
      array.sortWithOptions(NSSortStable, isNatural ? NSComparator() : NSComparator(compare));
      EXPECT_TRUE(std::equal(array.begin(), array.end(), model.begin(), model.end(),
                             [](auto& one, auto& other) { return one.isIdenticalTo(other); }));
    }
    const auto quarrelsome = [&](const Value&, const Value&) {
      return static_cast<NSComparisonResult>(static_cast<int>(random() % 3) - 1);
    };
    const NSArray jumbled = array.sortedArrayUsingComparator(quarrelsome);
    const auto payloads = [](const auto& elements) {
      std::multiset<std::uint64_t> found;
      for (const Value& element : elements) found.insert(element.payload());
      return found;
    };
    EXPECT_EQ(payloads(jumbled), payloads(model));
  }
  NSMutableArray mixed{2, "b", 1};
  const std::function<void()> misuses[] = {
      [&] { mixed.sortWithOptions(NSSortStable, nullptr); },
      [&] { mixed.sortUsingComparator([&](auto&, auto&) -> NSComparisonResult { throw 5; }); },
      [&] {
        mixed.sortUsingComparator([&](auto&, auto&) {
          mixed.removeAllObjects();
          return NSOrderedSame;
        });
      }};
  EXPECT_EQ(raisedName(misuses[0]), NSInvalidArgumentException);
  EXPECT_THROW(misuses[1](), int);
  EXPECT_EQ(mixed, (NSArray{2, "b", 1}));
  EXPECT_EQ(raisedName(misuses[2]), NSGenericException);
  mixed.setArray(NSArray{2, 1});
  mixed.sortUsingComparator([&](auto&, auto&) { return mixed = nullptr, NSOrderedSame; });
  EXPECT_TRUE(mixed.isNil());
}

TEST(NSArray, SearchesSortedRangesAndTakesSubarrays) {
  const NSArray array{9, 1, 3, 3, 3, 5, 0};
  const auto search = [&](const Value& object, unsigned options, NSRange range = {1, 5}) {
    return array.indexOfObject(
        object, range, static_cast<NSBinarySearchingOptions>(options),
        [](const Value& left, const Value& right) { return *detail::naturalOrder(left, right); });
  };
  constexpr unsigned first = NSBinarySearchingFirstEqual,
                     insertion = NSBinarySearchingInsertionIndex;
  EXPECT_TRUE(search(3, first) == 2 && search(3, NSBinarySearchingLastEqual) == 4);
  EXPECT_TRUE(search(3, insertion) == 5 && search(3, first | insertion) == 2);
  EXPECT_TRUE(search(9, insertion) == 6 && search(0, insertion) == 1 &&
              search(4, first) == NSNotFound);
  EXPECT_TRUE(search(9, 0, {0, 0}) == NSNotFound && search(9, insertion, {7, 0}) == 7);
  for (const NSRange& range : {NSRange{8, 0}, NSRange{1, 7}, NSRange{1, SIZE_MAX}}) {
    EXPECT_EQ(raisedName([&] { search(1, 0, range); }), NSRangeException);
    EXPECT_EQ(raisedName([&] { (void)array.subarrayWithRange(range); }), NSRangeException);
  }
  EXPECT_EQ(array.subarrayWithRange({4, 2}), (NSArray{3, 5}));
}

TEST(NSIndexSet, HoldsIndexesAsRanges) {
  const NSIndexSet indexes{7, 3, 4, 9, 8, 3};
  EXPECT_TRUE(indexes.count() == 5 && indexes.firstIndex() == 3 && indexes.lastIndex() == 9);
  EXPECT_EQ(Value(indexes).description(), "[3-4, 7-9]");
  for (std::size_t index = 0; index < 11; ++index) {
    EXPECT_EQ(indexes.containsIndex(index), (index > 2 && index < 5) || (index > 6 && index < 10));
  }
  EXPECT_EQ(NSIndexSet::from(indexes), (NSIndexSet{3, 4, 7, 8, 9}));
  EXPECT_EQ(Value(indexes).hash(), Value(NSIndexSet{3, 4, 7, 8, 9}).hash());
  EXPECT_FALSE(indexes == NSIndexSet{3} || NSIndexSet() == NSIndexSet::indexSet());
  EXPECT_TRUE(NSIndexSet().count() == 0 && NSIndexSet().lastIndex() == NSNotFound);
  EXPECT_EQ(raisedName([] { NSIndexSet{NSNotFound}; }), NSRangeException);
  EXPECT_EQ(raisedName([] { NSIndexSet::indexSetWithIndexesInRange({5, SIZE_MAX}); }),
            NSRangeException);
}

TEST(NSMutableOrderedSet, BehavesLikeAModelUnderRandomChanges) {
  std::mt19937 random(5);
  for (const unsigned universe : {5u, 30u, 400u}) {
    NSMutableOrderedSet set;
    std::vector<Value> model;
    for (int step = 0; step < 4000; ++step) {
      const Value member = NSString::stringWithFormat("%lu", random() % universe);
      const auto place = std::find(model.begin(), model.end(), member);
      const std::size_t at = random() % (model.size() + 1);
      ASSERT_EQ(set.indexOfObject(member), place == model.end()
                                               ? NSNotFound
                                               : static_cast<std::size_t>(place - model.begin()));
      if (random() % 3 == 0) {
        set.removeObject(member);
        if (place != model.end()) model.erase(place);
      } else if (place == model.end()) {
        set.insertObject(member, at);
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), member);
      } else {
        set.addObject(member);  // stays in its place
        const auto from = place - model.begin();
        const auto to = static_cast<std::ptrdiff_t>(std::min(at, model.size() - 1));
        set.moveObjectAtIndex(static_cast<std::size_t>(from), static_cast<std::size_t>(to));
        model.erase(place);
        model.insert(model.begin() + to, member);
      }
      ASSERT_EQ(set.array(), NSArray::arrayWithObjects(model));
    }
    EXPECT_EQ(NSOrderedSet::orderedSetWithArray(set.array()), set);
    EXPECT_EQ(set.mutableCopy().hash(), set.copy().hash());
  }
  NSMutableOrderedSet set{1, 2, 1};
  EXPECT_TRUE(NSMutableOrderedSet{set}.isIdenticalTo(set) && NSOrderedSet{set}.count() == 2);
  EXPECT_TRUE(set == (NSOrderedSet{1, 2}) && set != (NSOrderedSet{2, 1}) && set[1] == 2);
  EXPECT_EQ(raisedName([&] { set.moveObjectAtIndex(0, 2); }), NSRangeException);
  EXPECT_EQ(raisedName([&] { set.insertObject(3, 3); }), NSRangeException);
  EXPECT_EQ(raisedName([&] { set.addObject(nullptr); }), NSInvalidArgumentException);
}

TEST(CollectionLimit, TooLargeCapacitiesAreRefused) {
  constexpr std::size_t most = detail::maxCollectionCount;
  const Value element = 1;
  const std::function<void()> tooLarge[] = {
      [] { NSMutableDictionary::dictionaryWithCapacity(1'100'000'000); },
      [] { NSMutableDictionary::dictionaryWithCapacity(SIZE_MAX); },
      [] { NSMutableArray::arrayWithCapacity(most + 1); },
      [&] { NSArray::arrayWithObjects(std::span(&element, most + 1)); },
      [] { detail::grownCapacity(most, most + 1); }};
  for (const auto& call : tooLarge) EXPECT_THROW(call(), std::length_error);
  EXPECT_EQ(detail::grownCapacity(most / 2 + 1, most / 2 + 2), most);
  EXPECT_EQ(detail::indexSlots(most), 2 * most);
}

}  // namespace zeb::test
