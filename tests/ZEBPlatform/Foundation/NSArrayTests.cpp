#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Foundation/CollectionLimitPrivate.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>

#include <iterator>
#include <ranges>

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
