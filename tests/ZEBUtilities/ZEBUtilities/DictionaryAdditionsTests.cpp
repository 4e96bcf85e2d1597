#include <Foundation/NSData.h>
#include <Foundation/NSNull.h>
#include <Foundation/NSURL.h>
#include <Json/NSJSONSerialization.h>
#include <ZEBUtilities/Dictionary+ZEBAdditions.h>
#include <ZEBUtilities/NSArray+ZEBAdditions.h>
#include <ZEBUtilities/NSDate+ZEBAdditions.h>
#include <ZEBUtilities/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/NSMutableDictionary+ZEBAdditions.h>
#include <ZEBUtilities/ZEBGeometryDictionaries.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>

#include "../../Platform/Support.h"

namespace zeb {
namespace {

std::atomic<int> deaths = 0;
const NSURL url = NSURL::URLWithString("http://host/");
const NSDate date = NSDate::dateWithTimeIntervalSince1970(7);

/// Values of all kinds but strings and numbers, which alone have numeric readings.
const Value unreadable[] = {NSNull::null(),
                            NSArray::array(),
                            NSDictionary::dictionary(),
                            NSMutableSet(),
                            NSMutableArray(),
                            NSMutableDictionary(),
                            NSData::data(),
                            url,
                            date,
                            NSMutableData(),
                            NSMutableSet().copy(),
                            makeRef<test::Probe>(deaths)};

NSArray parsed(std::string_view json) {
  return NSArray(NSJSONSerialization::JSONObjectWithData(NSData::dataWithBytes(json), 0));
}

/// What the numeric readers make of the value under "key".
template <class... Default>
NSArray readings(const NSDictionary& dictionary, Default... or_) {
  return {
      zeb_boolForKey(dictionary, "key", or_...),    zeb_intForKey(dictionary, "key", or_...),
      zeb_integerForKey(dictionary, "key", or_...), zeb_longLongForKey(dictionary, "key", or_...),
      zeb_doubleForKey(dictionary, "key", or_...),  zeb_cgFloatForKey(dictionary, "key", or_...),
      zeb_floatForKey(dictionary, "key", or_...)};
}

TEST(TypedAccess, NumericReadersReadStringsAndNumbersOnly) {
  // The object and its reading as boolean, 32-bit and 64-bit integer and double.
  for (const Value& line : parsed(R"([
      ["12abc",true,12,12,12], [" -3.75e1x",true,-3,-3,-37.5], ["true",true,0,0,0], ["no",false,0,0,0],
      ["é",false,0,0,0], ["99999999999",true,2147483647,99999999999,99999999999], [true,true,1,1,1],
      [0,false,0,0,0], [-0.25,true,0,0,-0.25], [4294967301,true,5,4294967301,4294967301],
      [1e30,true,2147483647,9223372036854775807,1e30]])")) {
    const NSArray row(line);
    const NSDictionary dictionary{{"key", row[0]}};
    const NSArray expected{row[1], row[2], row[3], row[3], row[4], row[4], row[4].floatValue()};
    EXPECT_EQ(readings(dictionary), expected) << row;
    EXPECT_EQ(readings(dictionary, true), expected) << row;
    EXPECT_TRUE(zeb_boolNumberForKey(dictionary, "key").isBoolean());
    EXPECT_EQ(zeb_boolNumberForKey(dictionary, "key"), row[1]);
  }
  const NSArray zeros = parsed("[false,0,0,0,0,0,0]");
  NSMutableDictionary dictionary;
  for (const Value& object : unreadable) {  // first without any
    EXPECT_EQ(readings(dictionary), zeros);
    EXPECT_EQ(readings(dictionary, true), parsed("[true,1,1,1,1,1,1]"));
    EXPECT_TRUE(zeb_boolNumberForKey(dictionary, "key").isNil());
    EXPECT_TRUE(zeb_dateFromTimeIntervalSince1970ForKey(dictionary, "key").isNil());
    EXPECT_EQ(zeb_dateFromTimeIntervalSince1970ForKey(dictionary, "key", date), date);
    dictionary.setObject(object, "key");
  }
  EXPECT_EQ(readings(nullptr, true), zeros) << "nobody was there to be asked";
  EXPECT_TRUE(zeb_dateFromTimeIntervalSince1970ForKey(nullptr, "key", date).isNil());
}

TEST(TypedAccess, DatesAreReadAsWholeMilliseconds) {
  for (const Value& line : parsed(R"([[1500000000000,1500000000], [1500000000123.9,1500000000.123],
                                      ["-1500.9 ms",-1.5], [true,0.001]])")) {
    const NSDictionary dictionary{{"key", NSArray(line)[0]}};
    const NSDate read = zeb_dateFromTimeIntervalSince1970ForKey(dictionary, "key");
    EXPECT_NEAR(read.timeIntervalSince1970(), NSArray(line)[1].doubleValue(), 1e-6) << line;
  }
  EXPECT_NEAR(zeb_dateFromMilliseconds(1.5).timeIntervalSince1970(), 0.0015, 1e-6);
}

TEST(TypedAccess, ObjectReadersTakeTheirKindOnly) {
  std::vector<Value> objects(std::begin(unreadable), std::end(unreadable));
  objects.insert(objects.end(), {"5", NSMutableString("5"), 5, true});
  for (const Value& object : objects) {
    const NSDictionary from{{"key", object}};
    const auto expectRead = [&](const Value& read, bool isOfKind) {
      EXPECT_TRUE(read.isIdenticalTo(isOfKind ? object : Value())) << read << " of " << object;
    };
    expectRead(zeb_stringForKey(from, "key"), object.isString());
    expectRead(zeb_numberForKey(from, "key"), object.isNumber());
    expectRead(zeb_arrayForKey(from, "key"), object.isArray());
    expectRead(zeb_dictionaryForKey(from, "key"), object.isDictionary());
    expectRead(zeb_setForKey(from, "key"), object.isSet());
    expectRead(zeb_dateForKey(from, "key"), object.isDate());
    EXPECT_EQ(zeb_arrayOfDictionariesForKey(from, "key").isNil(), !object.isArray());
  }
  const NSDictionary dictionary{{"s", "text"}, {"n", 5}};
  const auto isLong = [](const NSString& string) { return string.length() > 4; };
  EXPECT_EQ(zeb_stringForKey(dictionary, "s", isLong, "default"), "default");
  EXPECT_EQ(zeb_stringForKey(dictionary, "s", std::not_fn(isLong), "default"), "text");
  EXPECT_EQ(zeb_stringForKey(dictionary, "s", nullptr, "default"), "text");
  EXPECT_EQ(zeb_stringForKey(dictionary, "n", nullptr, "default"), "default");
  EXPECT_TRUE(zeb_stringForKey(nullptr, "s", "default").isNil());
}

TEST(TypedAccess, ArraysMapsPathsAndAlternatives) {
  const NSDictionary inner{{"b", "leaf"}};
  const NSDictionary dictionary{{"a", inner}, {"list", NSArray{inner, "x", inner, 5}}, {1, "one"}};
  EXPECT_EQ(zeb_arrayOfDictionariesForKey(dictionary, "list"), (NSArray{inner, inner}));
  const auto keyOrNil = [](const Value& key, const Value& object) {
    return object.isArray() ? Value() : key;
  };
  EXPECT_EQ(zeb_mapBlock(dictionary, keyOrNil), (NSArray{"a", 1}));
  EXPECT_EQ(zeb_mapBlock(dictionary, nullptr), NSArray::array());
  EXPECT_TRUE(zeb_mapBlock(nullptr, keyOrNil).isNil());
  for (const Value& line : parsed(R"([[["a","b"],"leaf"], [["a"],{"b":"leaf"}], [[1],"one"], [[]],
                                      [["a","b","c"]], [["no","b"]], [["a","no"]]])")) {
    const NSArray row(line);
    const Value expected = row.count() == 2 ? row[1] : Value();
    EXPECT_EQ(zeb_objectForPathElementKeys(dictionary, NSArray(row[0])), expected) << row;
  }
  EXPECT_TRUE(zeb_objectForPathElementKeys(dictionary, nullptr).isNil());
  EXPECT_TRUE(zeb_objectForPathElementKeys(nullptr, NSArray{"a"}).isNil());
  EXPECT_EQ(zeb_objectForAnyOfKeys(dictionary, NSArray{"no", 1, "a"}), "one");
  EXPECT_TRUE(zeb_objectForAnyOfKeys(dictionary, NSArray{"no"}).isNil());
  EXPECT_TRUE(zeb_objectForAnyOfKeys(dictionary, nullptr).isNil());
  EXPECT_EQ(zeb_anyObject(dictionary), inner);
  EXPECT_TRUE(zeb_anyObject(NSDictionary::dictionary()).isNil() && zeb_anyObject(nullptr).isNil());
}

TEST(Merging, AnswersTheSameObjectWhereNothingIsMerged) {
  const NSMutableDictionary some{{"a", 1}, {"b", 2}};
  const NSDictionary none = NSDictionary::dictionary();
  const auto merge = zeb_dictionaryByAddingEntriesFromDictionary;
  EXPECT_TRUE(merge(some, nullptr).isIdenticalTo(some) && merge(some, none).isIdenticalTo(some));
  EXPECT_TRUE(merge(none, some).isIdenticalTo(some) && merge(none, none).isIdenticalTo(none));
  EXPECT_TRUE(merge(nullptr, some).isNil());
  const NSDictionary merged = merge(some, NSDictionary{{"b", 3}, {"c", 4}});
  EXPECT_EQ(merged, (NSDictionary{{"a", 1}, {"b", 3}, {"c", 4}}));
  EXPECT_FALSE(merged.isMutable() || some.count() != 2);
}

TEST(PropertyListCleaning, DropsWhatNoPropertyListHolds) {
  const NSMutableString text("text");
  const NSDictionary none = NSDictionary::dictionary();
  const NSArray mixed{NSNull::null(), text, NSArray{url, NSSet{1}}, 5, NSData::data(), date};
  const NSArray cleanMixed{text, NSArray::array(), 5, NSData::data(), date};
  NSMutableDictionary dirty{{"n", NSDictionary{{"u", url}}}, {NSArray{1, url}, "kept"}};
  dirty.addEntriesFromDictionary(NSDictionary{{"m", mixed}, {url, 1}, {NSSet{1}, 2}});
  const NSDictionary clean = zeb_dictionaryByRemovingInvalidPropertyListEntries(dirty);
  EXPECT_EQ(clean, (NSDictionary{{"n", none}, {NSArray{1}, "kept"}, {"m", cleanMixed}}));
  EXPECT_FALSE(clean.isMutable() || clean["n"].isMutable());
  EXPECT_TRUE(clean["m"].isMutable() && NSArray(clean["m"])[1].isMutable());
  EXPECT_TRUE(NSArray(clean["m"])[0].isIdenticalTo(text));
  EXPECT_EQ(zeb_arrayByRemovingInvalidPropertyListObjects(mixed), cleanMixed);
  EXPECT_TRUE(zeb_arrayByRemovingInvalidPropertyListObjects(nullptr).isNil());
  EXPECT_TRUE(zeb_dictionaryByRemovingInvalidPropertyListEntries(nullptr).isNil());
}

TEST(PropertyListCleaning, WorksAtAnyDepthOnASmallStack) {
  test::runOnSmallStack([] {
    constexpr int depth = 100000;
    Value level = url;
    for (int i = 0; i < depth; ++i) {
      level = i % 2 ? Value(NSDictionary{{"k", level}}) : Value(NSArray{level});
    }
    level = _zeb_propertyListObjectForObject(level);
    int found = 1;
    for (; NSArray(level).count() + NSDictionary(level).count() == 1; ++found) {
      level = level.isArray() ? NSArray(level)[0] : NSDictionary(level)["k"];
    }
    EXPECT_EQ(found, depth);
    for (const int nesting : {64, 65, depth}) {  // of dictionaries that are keys of dictionaries
      level = "innermost";
      for (int i = 0; i <= nesting; ++i) level = NSDictionary{{level, i}};
      level = _zeb_propertyListObjectForObject(level);
      for (int i = 0; i < 64; ++i) level = NSDictionary(level).allKeys().firstObject();
      EXPECT_EQ(NSDictionary(level).count(), nesting == 64 ? 1u : 0u) << nesting;
    }
  });
}

TEST(MutableDictionary, NonnullAccessorsStoreWhatTheyMake) {
  NSMutableDictionary dictionary;
  EXPECT_FALSE(NSMutableArray::from(zeb_nonnullMutableArrayForKey(dictionary, "a")).isNil());
  EXPECT_FALSE(
      NSMutableDictionary::from(zeb_nonnullMutableDictionaryForKey(dictionary, "d")).isNil());
  EXPECT_FALSE(NSMutableSet::from(zeb_nonnullMutableSetForKey(dictionary, "s")).isNil());
  for (const auto get : {zeb_nonnullMutableArrayForKey, zeb_nonnullMutableDictionaryForKey,
                         zeb_nonnullMutableSetForKey}) {
    for (const auto& [key, made] : dictionary)
      EXPECT_TRUE(get(dictionary, key).isIdenticalTo(made));
    EXPECT_TRUE(get(nullptr, "a").isNil());
  }
  zeb_setObjectIfNotNil(dictionary, nullptr, "a");
  zeb_setObjectIfNotNil(dictionary, 6, "d");
  EXPECT_EQ(dictionary, (NSDictionary{{"a", NSArray::array()}, {"d", 6}, {"s", NSMutableSet()}}));
}

TEST(GeometryDictionaries, ReadMissingComponentsAsZeroAndWriteDoubles) {
  EXPECT_EQ(ZEBCGSizeFromDictionary(NSDictionary{{"w", "1.5"}, {"h", url}}), (CGSize{1.5, 0}));
  EXPECT_EQ(ZEBDictionaryFromCGSize({3, 4}), (NSDictionary{{"w", 3}, {"h", 4}}));
  const CGAffineTransform transform{1, 2, 3, 4, 5, 6};
  const NSDictionary matrix = ZEBDictionaryFromCGAffineTransform(transform);
  EXPECT_EQ(matrix, (NSDictionary{{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}, {"tx", 5}, {"ty", 6}}));
  EXPECT_EQ(ZEBCGAffineTransformFromDictionary(matrix), transform);
  for (const auto& entry : matrix) EXPECT_EQ(NSNumber(entry.value).objCType(), 'd');
}

TEST(DictionaryDeathTest, GenericOnesCompareAndWalkPathsOfStringKeys) {
  using Optionals = Dictionary<std::string, std::optional<int>>;
  const std::pair<std::string, std::optional<int>> pairs[] = {
      {"same", 5}, {"other", 1}, {"left", 1}, {"empty", std::nullopt}, {"same", 1}};
  const Optionals left{std::span(pairs)};  // the later of equal keys counts
  auto keys =
      left.zeb_keysWithDifferingValues({{"same", 1}, {"other", 2}, {"right", std::nullopt}});
  std::sort(keys.begin(), keys.end());
  EXPECT_EQ(keys, (std::vector<std::string>{"empty", "left", "other", "right"}));

  const Dictionary<NSString, Value> dictionary{{"plain", NSDictionary{{"b", 5}}},
                                               {"mixed", NSDictionary{{"b", 1}, {7, 2}}}};
  const auto at = [&](const std::vector<NSString>& path) {
    return dictionary.zeb_objectForPathElementKeys(path);
  };
  EXPECT_TRUE(at({"plain", "b"}) == Value(5) && at({"mixed"}).isDictionary());
  EXPECT_FALSE(at({"mixed", "b"}) || at({"plain", "b", "c"}) || at({"plain", "c"}) ||
               at({"no", "b"}));
  EXPECT_EXIT(at({}), testing::KilledBySignal(SIGABRT),
              "^zeb_objectForPathElementKeys needs at least one key\n$");
}

}  // namespace
}  // namespace zeb
