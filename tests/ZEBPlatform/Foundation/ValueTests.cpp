#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/NSURL.h>

#include "Support/Support.h"

namespace zeb::test {

using Kind = ValueKind;

// What would do nothing, or always give nil, does not compile.
template <class Collection, class Place>
concept TakesAssignmentAt = requires(Collection collection, Place place) { collection[place] = 1; };
static_assert(!TakesAssignmentAt<NSMutableDictionary, NSString> &&
              !TakesAssignmentAt<NSMutableArray, int>);
template <class Key>
concept IsKey =
    requires(NSMutableDictionary dictionary, Key key) { dictionary.setObject("", key); };
static_assert(IsKey<Value> && IsKey<NSNumber> && IsKey<const char*> && !IsKey<int> && !IsKey<bool>);
template <class Handle, class... Sources>
constexpr bool isMadeOfNone = !(std::is_constructible_v<Handle, Sources> || ...);
static_assert(std::is_constructible_v<NSString, Value> &&
              isMadeOfNone<NSString, int, bool, double>);
static_assert(isMadeOfNone<NSArray, int, const char*> && isMadeOfNone<NSNumber, const char*> &&
              isMadeOfNone<NSDictionary, int, const char*> && isMadeOfNone<NSSet, int> &&
              isMadeOfNone<NSData, int, const char*> && isMadeOfNone<NSURL, const char*> &&
              isMadeOfNone<NSDate, int, double>);

std::atomic<int> deaths = 0;

TEST(Value, EachKindAnswersForItselfAlone) {
  // clang-format off
  const std::pair<Kind, Value> samples[] = {
      {Kind::Nil, nullptr}, {Kind::Null, NSNull::null()}, {Kind::Boolean, true},
      {Kind::SignedInteger, -7}, {Kind::UnsignedInteger, 7u}, {Kind::Float, 1.5f},
      {Kind::Double, 2.5}, {Kind::Date, NSDate::dateWithTimeIntervalSince1970(0)},
      {Kind::String, "text"}, {Kind::Data, NSData::dataWithBytes(std::string_view("bytes"))},
      {Kind::URL, NSURL::URLWithString("http://host/")}, {Kind::Array, NSArray{1, 2}},
      {Kind::Dictionary, NSDictionary{{"key", 1}}}, {Kind::Set, NSSet{1, 2}},
      {Kind::Object, makeRef<Probe>(deaths)}};
  // clang-format on
  for (const auto& [kind, value] : samples) {
    const bool isNumber = kind >= Kind::Boolean && kind <= Kind::Double;
    EXPECT_TRUE(value.kind() == kind && value.isNil() == (kind == Kind::Nil));
    EXPECT_EQ(value.respondsToNumericReadings(), isNumber || kind == Kind::String);
    // A typed handle made from another kind's value is nil.
    // clang-format off
    const std::pair<Kind, bool> answers[] = {
        {Kind::Null, value.isNull()}, {Kind::Boolean, value.isBoolean()},
        {Kind::Date, value.isDate()}, {Kind::Date, !!NSDate(value)},
        {Kind::String, value.isString()}, {Kind::String, !!NSString(value)},
        {Kind::Data, value.isData()}, {Kind::Data, !!NSData(value)},
        {Kind::URL, value.isURL()}, {Kind::URL, !!NSURL(value)},
        {Kind::Array, value.isArray()}, {Kind::Array, !!NSArray(value)},
        {Kind::Dictionary, value.isDictionary()}, {Kind::Dictionary, !!NSDictionary(value)},
        {Kind::Set, value.isSet()}, {Kind::Set, !!NSSet(value)},
        {Kind::Object, value.isObject()}, {Kind::Object, !!value.object()}};
    // clang-format on
    for (const auto& [expected, answer] : answers) {
      EXPECT_EQ(answer, kind == expected) << value;
    }
    EXPECT_TRUE(value.isNumber() == isNumber && !!NSNumber(value) == isNumber);
    EXPECT_FALSE(value.isMutable() || NSMutableString::from(value) || NSMutableArray::from(value) ||
                 NSMutableDictionary::from(value) || NSMutableSet::from(value) ||
                 NSMutableData::from(value) || NSError::from(value));
    for (const auto& [otherKind, other] : samples) {
      const bool same = kind == otherKind && kind != Kind::Nil;
      EXPECT_EQ(value.isEqual(other), same) << value << " and " << other;
    }
    EXPECT_TRUE(value.copy().isIdenticalTo(value)) << "an immutable value is its own copy";
    for (const Value& copy : {value.mutableCopy(), value.detachedCopy()}) {
      EXPECT_TRUE(value == copy && value.hash() == copy.hash()) << value;
    }
  }
}

TEST(Value, NilIsNotEmptyAndAnswersEverything) {
  const NSNumber number;
  const NSString string;
  const NSArray array;
  const NSDictionary dictionary;
  const NSSet set;
  const NSData data;
  const NSDate date;
  const NSError error;
  const NSDictionary filled{{"key", 1}};
  // clang-format off
  const Value zeros[] = {
      number.boolValue(), number.intValue(), number.doubleValue(), number.floatValue(),
      number.longLongValue(), number.integerValue(), number.unsignedLongLongValue(),
      number.isSigned64(), number.objCType(), string.length(), +string.characterAtIndex(3),
      string.utf8().size(), string.utf16().size(), string.asciiView().size(),
      string.utf16View().size(), string.isASCII(), string.isEqualToString(""),
      string.hasPrefix("a"), string.hasSuffix("a"), string.containsString("a"), array.count(),
      array.end() - array.begin(), array.containsObject(1), dictionary.count(),
      dictionary.begin() != dictionary.end(), dictionary.find("key") != nullptr,
      filled.find(string) != nullptr, set.count(), set.containsObject(1), set.begin() != set.end(),
      data.length(), data.bytes().size(), data.view().size(), date.timeIntervalSince1970(),
      date.timeIntervalSinceReferenceDate(), date.timeIntervalSinceDate(NSDate::date()),
      error.code()};
  // clang-format on
  for (const Value& zero : zeros) EXPECT_EQ(zero, 0) << "query " << &zero - zeros;
  // clang-format off
  const Value nils[] = {
      Value(static_cast<const char*>(nullptr)), Ref<Probe>(), number.copy(),
      string.substringWithRange({1, 2}), string.substringFromIndex(1), string.substringToIndex(1),
      string.stringByAppendingString("a"), string.componentsSeparatedByString(","),
      string.mutableCopy(), array.objectAtIndex(9), array[9], array.firstObject(),
      array.lastObject(), array.arrayByAddingObject(1), array.componentsJoinedByString(","),
      array.mutableCopy(), NSArray::array().firstObject(), NSArray::array().lastObject(),
      dictionary["key"], dictionary.objectForKey(string), dictionary.allKeys(),
      dictionary.allValues(), dictionary.mutableCopy(), filled[string], filled[Value()],
      set.member(1), set.anyObject(), set.allObjects(), set.mutableCopy(),
      data.subdataWithRange({1, 2}), data.base64EncodedString(), data.mutableCopy(),
      date.dateByAddingTimeInterval(1), NSURL().absoluteString(), error, error.domain(),
      error.userInfo(), error.localizedDescription(), error.underlyingError()};
  // clang-format on
  for (const Value& nil : nils) {
    EXPECT_TRUE(nil.isNil() && nil.description() == "(null)") << "query " << &nil - nils;
    EXPECT_TRUE(nil == Value() && nil.isIdenticalTo(Value()) && !nil.isEqual(nil));
  }
  EXPECT_EQ(string.rangeOfString("a"), NSString("abc").rangeOfString(string));
  EXPECT_TRUE(array.indexOfObject(1) == NSNotFound && string.compare("") == NSOrderedAscending);
  EXPECT_FALSE(NSString("").isNil() || NSMutableString(string).isNil());

  NSMutableString(nullptr).appendString("a").appendFormat("%d", 1).deleteCharactersInRange({5, 5});
  NSMutableArray(nullptr).insertObject(1, 9);
  NSMutableArray(nullptr).replaceObjectAtIndex(9, 1);
  NSMutableArray(nullptr).exchangeObjectAtIndex(1, 2);
  NSMutableDictionary(nullptr).removeObjectForKey("key");
  NSMutableSet(nullptr).addObject(1);
  NSMutableData(nullptr).setLength(5);
  EXPECT_TRUE(NSMutableData(nullptr).mutableBytes().empty());
}

TEST(Value, EqualIsNotIdentical) {
  EXPECT_TRUE(Value(1).isEqual(1L) && Value(1).isIdenticalTo(1) && !Value(1).isIdenticalTo(1L));
  const NSString one("same text");
  const NSString other("same text");
  EXPECT_TRUE(one == other && !one.isIdenticalTo(other) && NSArray{one}[0].isIdenticalTo(one));
}

TEST(Value, MutableHandlesShareAndCopiesAreSnapshots) {
  const NSString element("element");
  NSMutableString string(element);
  NSMutableArray array{element};
  NSMutableDictionary dictionary{{"key", element}};
  NSMutableSet set{element};
  NSMutableData data;
  // clang-format off
  const std::pair<Value, std::function<void()>> cases[] = {
      {string, [&] {string.appendString("!"); }}, {array, [&] {array.addObject(2); }},
      {dictionary, [&] {dictionary.removeObjectForKey("key"); }},
      {set, [&] {set.removeObject(element); }}, {data, [&] {data.setLength(3); }}};
  // clang-format on
  for (const auto& [value, change] : cases) {
    const Value copies[] = {value.copy(), value.detachedCopy(), value.mutableCopy()};
    for (const Value& copy : copies) {
      EXPECT_TRUE(value == copy && value.hash() == copy.hash() && !value.isIdenticalTo(copy));
    }
    change();
    for (const Value& copy : copies) EXPECT_TRUE(copy == copies[0] && !(copy == value)) << value;
    EXPECT_TRUE(!copies[0].isMutable() && !copies[1].isMutable() && copies[2].isMutable());
  }
  EXPECT_TRUE(NSMutableArray::from(Value(array)).isIdenticalTo(array));
}

TEST(Value, HoldsObjectsByReference) {
  deaths = 0;
  Value value = makeRef<Probe>(deaths);
  Value moved = std::move(value);
  EXPECT_TRUE(value.isNil() && moved.object<Probe>());
  struct Other : NSObject {};
  EXPECT_FALSE(moved.object<Other>() || moved.isEqual(makeRef<Probe>(deaths)));
  Value list = NSArray{moved};
  moved = nullptr;
  EXPECT_EQ(deaths, 1);
  list = nullptr;
  EXPECT_EQ(deaths, 2);
}

}  // namespace zeb::test
