#include <ZEBUtilities/ZEBUtilities.h>

#include <unordered_map>

#include "Support/Support.h"

namespace zeb::test {

std::atomic<int> deaths = 0;
const NSURL url = NSURL::URLWithString("http://host/");
const NSDate date = NSDate::dateWithTimeIntervalSince1970(7);
const NSDictionary none = NSDictionary::dictionary();

/// Values of all kinds but strings and numbers, which alone have numeric readings.
const NSArray unreadable{NSNull::null(),        none, url, date, NSMutableArray(), NSData::data(),
                         makeRef<Probe>(deaths)};

NSArray parsed(std::string_view json) {
  return NSArray(NSJSONSerialization::JSONObjectWithData(NSData::dataWithBytes(json), 0));
}

/// What the numeric readers make of the value under "k".
template <class... Default>
NSArray readings(const NSDictionary& from, Default... or_) {
  return {zeb_boolForKey(from, "k", or_...),    zeb_intForKey(from, "k", or_...),
          zeb_integerForKey(from, "k", or_...), zeb_longLongForKey(from, "k", or_...),
          zeb_doubleForKey(from, "k", or_...),  zeb_cgFloatForKey(from, "k", or_...),
          zeb_floatForKey(from, "k", or_...)};
}

TEST(TypedAccess, NumericReadersReadStringsAndNumbersOnly) {
  // The object and its reading as boolean, 32-bit and 64-bit integer and double.
  for (const Value& line : parsed(R"([
      ["12abc",true,12,12,12], [" -3.75e1x",true,-3,-3,-37.5], ["true",true,0,0,0],
      ["no",false,0,0,0], ["é",false,0,0,0], [true,true,1,1,1],
      ["99999999999",true,2147483647,99999999999,99999999999],
      [0,false,0,0,0], [-0.25,true,0,0,-0.25], [4294967301,true,5,4294967301,4294967301],
      [1e30,true,2147483647,9223372036854775807,1e30]])")) {
    const NSArray row(line);
    const NSArray expected{row[1], row[2], row[3], row[3], row[4], row[4], row[4].floatValue()};
    const NSDictionary dictionary{{"k", row[0]}};
    EXPECT_EQ(readings(dictionary), expected) << row;
    EXPECT_EQ(readings(dictionary, true), expected) << row;
    EXPECT_TRUE(zeb_boolNumberForKey(dictionary, "k").isIdenticalTo(row[1]));
  }
  const NSArray zeros{false, 0, 0, 0, 0, 0, 0}, ones{true, 1, 1, 1, 1, 1, 1};
  for (const NSDictionary& empty : {none, NSDictionary(nullptr)}) {
    EXPECT_EQ(readings(empty, true), ones);
    EXPECT_EQ(zeb_dateFromTimeIntervalSince1970ForKey(empty, "k", date), date);
  }
  for (const Value& object : unreadable) {
    const NSDictionary dictionary{{"k", object}};
    EXPECT_EQ(readings(dictionary), zeros);
    EXPECT_EQ(readings(dictionary, true), ones);
    EXPECT_TRUE(zeb_boolNumberForKey(dictionary, "k").isNil());
    EXPECT_EQ(zeb_dateFromTimeIntervalSince1970ForKey(dictionary, "k", date), date);
  }
  const NSDictionary from{{"n", 1500000000123.9}, {"s", "-1500.9 ms"}};
  for (const auto& [key, seconds] : {std::pair("n", 1500000000.123), {"s", -1.5}}) {
    const NSDate read = zeb_dateFromTimeIntervalSince1970ForKey(from, key);
    EXPECT_NEAR(read.timeIntervalSince1970(), seconds, 1e-6) << "whole milliseconds";
  }
}

TEST(TypedAccess, ObjectReadersTakeTheirKindOnly) {
  NSMutableArray objects{"5", NSMutableString("5"), 5, true, NSArray{1}, NSSet{1}};
  objects.addObjectsFromArray(unreadable);
  for (const Value& object : objects) {
    const NSDictionary from{{"k", object}};
    const auto expectRead = [&](const Value& read, bool isOfKind) {
      EXPECT_TRUE(read.isIdenticalTo(isOfKind ? object : Value())) << read << " of " << object;
    };
    expectRead(zeb_stringForKey(from, "k"), object.isString());
    expectRead(zeb_numberForKey(from, "k"), object.isNumber());
    expectRead(zeb_arrayForKey(from, "k"), object.isArray());
    expectRead(zeb_dictionaryForKey(from, "k"), object.isDictionary());
    expectRead(zeb_setForKey(from, "k"), object.isSet());
    expectRead(zeb_dateForKey(from, "k"), object.isDate());
    EXPECT_EQ(zeb_arrayOfDictionariesForKey(from, "k").isNil(), !object.isArray());
  }
  const NSDictionary from{{"s", "text"}, {"n", 5}};
  const auto isLong = [](const NSString& string) { return string.length() > 4; };
  EXPECT_EQ(zeb_stringForKey(from, "s", isLong, "default"), "default");
  EXPECT_EQ(zeb_stringForKey(from, "s", std::not_fn(isLong), "default"), "text");
  EXPECT_EQ(zeb_stringForKey(from, "n", nullptr, "default"), "default");
  EXPECT_EQ(zeb_stringForKey(nullptr, "s", nullptr, "default"), "default");
  EXPECT_EQ(zeb_stringForKey(zeb_dictionaryForKey(from, "no"), "s", "default"), "default");
}

TEST(TypedAccess, ArraysMapsPathsAndAlternatives) {
  const NSDictionary inner{{"b", "leaf"}};
  const NSDictionary dictionary{{"a", inner}, {"list", NSArray{inner, "x", inner, 5}}, {1, "one"}};
  EXPECT_EQ(zeb_arrayOfDictionariesForKey(dictionary, "list"), (NSArray{inner, inner}));
  const auto stringOrNil = [](const Value&, const Value& object) { return NSString(object); };
  EXPECT_EQ(zeb_mapBlock(dictionary, stringOrNil), (NSArray{"one"}));
  EXPECT_EQ(zeb_mapBlock(dictionary, nullptr), NSArray::array());
  for (const Value& line : parsed(R"([[["a","b"],"leaf"], [["a"],{"b":"leaf"}], [[1],"one"], [[]],
                                      [["a","b","c"]], [["no","b"]], [["a","no"]]])")) {
    const NSArray row(line);
    const Value expected = row.count() == 2 ? row[1] : Value();
    EXPECT_EQ(zeb_objectForPathElementKeys(dictionary, NSArray(row[0])), expected) << row;
  }
  const NSDictionary root{{5, dictionary}, {"n", NSDictionary{{"m", "2.5"}}}};
  const std::vector<std::string> path{"n", "m"};
  EXPECT_EQ(zeb_stringForPathElementKeys(root, {Value(5), "a", std::string("b")}, "no"), "leaf");
  EXPECT_EQ(zeb_dictionaryForPathElementKeys(root, {Value(5), "a"}), inner);
  EXPECT_EQ(zeb_arrayForPathElementKeys(root, {Value(5), "list"}).count(), 4u);
  EXPECT_TRUE(zeb_doubleForPathElementKeys(root, path) == 2.5 &&
              zeb_intForPathElementKeys(root, path) == 2 &&
              zeb_integerForPathElementKeys(root, path) == 2 &&
              zeb_boolForPathElementKeys(root, path));
  for (const auto& keys :
       {NSArray{"n", "no"}, NSArray{"no", "m"}, NSArray{"n", "m", "x"}, NSArray()}) {
    EXPECT_EQ(zeb_stringForPathElementKeys(root, keys, "default"), "default");
    EXPECT_EQ(zeb_integerForPathElementKeys(root, keys, 7), 7);
  }
  EXPECT_EQ(zeb_objectForAnyOfKeys(dictionary, NSArray{"no", 1, "a"}), "one");
  EXPECT_FALSE(zeb_objectForAnyOfKeys(dictionary, NSArray{"no"}) || zeb_anyObject(none));
  EXPECT_EQ(zeb_anyObject(dictionary), inner);
}

TEST(Merging, AnswersTheSameObjectWhereNothingIsMerged) {
  const NSMutableDictionary some{{"a", 1}, {"b", 2}};
  const auto merge = zeb_dictionaryByAddingEntriesFromDictionary;
  EXPECT_TRUE(merge(some, nullptr).isIdenticalTo(some) && merge(some, none).isIdenticalTo(some));
  EXPECT_TRUE(merge(none, some).isIdenticalTo(some) && merge(nullptr, some).isNil());
  const NSDictionary merged{{"a", 1}, {"b", 3}, {"c", 4}};
  EXPECT_EQ(merge(some, NSDictionary{{"b", 3}, {"c", 4}}), merged);
}

TEST(PropertyListCleaning, DropsWhatNoPropertyListHolds) {
  const NSMutableString text("text");
  const NSArray mixed{NSNull::null(), text, NSArray{url, NSSet{1}}, 5, NSData::data(), date};
  const NSArray cleanMixed{text, NSArray::array(), 5, NSData::data(), date};
  const NSDictionary dirty{
      {"n", NSDictionary{{"u", url}}}, {NSArray{1, url}, "kept"}, {"m", mixed}, {url, 1}};
  const NSDictionary clean = zeb_dictionaryByRemovingInvalidPropertyListEntries(dirty);
  EXPECT_EQ(clean, (NSDictionary{{"n", none}, {NSArray{1}, "kept"}, {"m", cleanMixed}}));
  EXPECT_TRUE(!clean.isMutable() && !clean["n"].isMutable() && clean["m"].isMutable() &&
              NSArray(clean["m"])[1].isMutable() && NSArray(clean["m"])[0].isIdenticalTo(text));
  EXPECT_EQ(zeb_arrayByRemovingInvalidPropertyListObjects(mixed), cleanMixed);

  runOnSmallStack([] {
    constexpr int depth = 100000;
    Value level = url;
    for (int i = 0; i < depth; ++i) level = NSArray{NSDictionary{{"k", level}}};
    level = _zeb_propertyListObjectForObject(level);
    int found = 0;
    while ((level = NSDictionary(NSArray(level)[0])["k"])) ++found;
    EXPECT_EQ(found, depth - 1);
  });
}

TEST(MutableDictionary, NonnullAccessorsStoreWhatTheyMake) {
  NSMutableDictionary dictionary;
  EXPECT_TRUE(zeb_nonnullMutableArrayForKey(dictionary, "a").isArray());
  EXPECT_TRUE(zeb_nonnullMutableDictionaryForKey(dictionary, "d").isDictionary());
  EXPECT_TRUE(zeb_nonnullMutableSetForKey(dictionary, "s").isSet());
  for (const auto& [key, made] : dictionary) {
    EXPECT_TRUE(zeb_nonnullMutableArrayForKey(dictionary, key).isIdenticalTo(made)) << key;
    EXPECT_TRUE(made.isMutable()) << key;
  }
  zeb_setObjectIfNotNil(dictionary, nullptr, "a");
  zeb_setObjectIfNotNil(dictionary, 6, "d");
  EXPECT_EQ(dictionary, (NSDictionary{{"a", NSArray::array()}, {"d", 6}, {"s", NSMutableSet()}}));
}

TEST(GeometryDictionaries, WriteDoubles) {
  const NSDictionary matrix = ZEBDictionaryFromCGAffineTransform({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(matrix, (NSDictionary{{"a", 1}, {"b", 2}, {"c", 3}, {"d", 4}, {"tx", 5}, {"ty", 6}}));
  EXPECT_EQ(ZEBCGAffineTransformFromDictionary(matrix), (CGAffineTransform{1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(NSNumber(matrix["a"]).objCType(), 'd');
}

TEST(DictionaryDeathTest, GenericOnesCompareAndWalkPathsOfStringKeys) {
  using Texts = Dictionary<std::string, std::string>;
  const std::pair<std::string, std::string> pairs[] = {
      {"a", "5"}, {"b", "1"}, {"a", "1"}, {"c", ""}};
  const Texts left{std::span(pairs)};  // the later of equal keys counts
  auto keys = left.zeb_keysWithDifferingValues({{"a", "1"}, {"b", "2"}, {"d", ""}});
  std::sort(keys.begin(), keys.end());
  EXPECT_EQ(keys, (std::vector<std::string>{"b", "c", "d"}));

  const NSDictionary mixed{{"b", 1}, {7, 2}};
  const Dictionary<NSString, Value> dictionary{{"plain", NSDictionary{{"b", 5}}}, {"mixed", mixed}};
  const Dictionary<std::string, Value> twin(dictionary.begin(), dictionary.end());
  EXPECT_EQ(twin.zeb_objectForPathElementKeys({"plain", "b"}), 5);
  const auto at = [&](const PathElementKeys& path) {
    return dictionary.zeb_objectForPathElementKeys(path);
  };
  EXPECT_TRUE(at({"plain", "b"}) == Value(5) && at({"mixed"}).isDictionary());
  EXPECT_FALSE(at({"mixed", "b"}) || at({"plain", "b", "c"}) || at({"no", "b"}) || at({Value(7)}));
  EXPECT_EXIT(at({}), testing::KilledBySignal(SIGABRT),
              "^zeb_objectForPathElementKeys needs at least one key\n$");
}

TEST(Dictionary, StandardContainersResistChosenKeysToo) {
  const std::vector<std::string> texts = collidingKeys(2000);
  std::unordered_map<NSString, int> strings;
  Dictionary<std::int64_t, int> numbers;
  numbers.reserve(texts.size());
  const auto step = static_cast<std::int64_t>(numbers.bucket_count());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    strings[NSString(texts[i])] = 1;
    numbers[static_cast<std::int64_t>(i) * step] = 1;
  }
  const auto expectSpread = [&](const auto& map) {
    std::size_t largest = 0;
    for (std::size_t i = 0; i < map.bucket_count(); ++i) {
      largest = std::max(largest, map.bucket_size(i));
    }
    EXPECT_TRUE(map.size() == texts.size() && largest < 50) << largest;
  };
  expectSpread(strings);
  expectSpread(numbers);
}

}  // namespace zeb::test
