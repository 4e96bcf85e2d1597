#include <ZEBPlatform/Foundation.h>

#include <cmath>
#include <sstream>

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
static_assert(isMadeOfNone<NSString, int, bool, double> &&
              isMadeOfNone<NSArray, int, const char*> && isMadeOfNone<NSNumber, const char*> &&
              isMadeOfNone<NSDictionary, int, const char*> && isMadeOfNone<NSSet, int> &&
              isMadeOfNone<NSData, int, const char*> && isMadeOfNone<NSURL, const char*> &&
              isMadeOfNone<NSDate, int, double>);

TEST(Value, EachKindAnswersForItselfAlone) {
  std::atomic<int> deaths = 0;
  // clang-format off
  const std::pair<Kind, Value> samples[] = {
      {Kind::Nil, nullptr}, {Kind::Null, NSNull::null()}, {Kind::Boolean, true},
      {Kind::SignedInteger, -7}, {Kind::UnsignedInteger, 7u}, {Kind::Float, 1.5f},
      {Kind::Double, 2.5}, {Kind::Date, NSDate::dateWithTimeIntervalSince1970(0)},
      {Kind::String, "text"}, {Kind::Data, NSData::dataWithBytes(std::string_view("bytes"))},
      {Kind::URL, NSURL::URLWithString("http://host/")}, {Kind::Array, NSArray{1, 2}},
      {Kind::Dictionary, NSDictionary{{"key", 1}}}, {Kind::Set, NSSet{1, 2}},
      {Kind::OrderedSet, NSOrderedSet{1, 2}}, {Kind::Object, makeRef<Probe>(deaths)}};
  // clang-format on
  for (const auto& [kind, value] : samples) {
    const bool isNumber = kind >= Kind::Boolean && kind <= Kind::Double;
    EXPECT_TRUE(value.kind() == kind && value.isNil() == (kind == Kind::Nil));
    EXPECT_EQ(value.respondsToNumericReadings(), isNumber || kind == Kind::String);
    // A typed handle made from another kind's value is nil.
    const std::pair<Kind, bool> answers[] = {
        {Kind::Null, value.isNull()},    {Kind::Boolean, value.isBoolean()},
        {Kind::Date, !!NSDate(value)},   {Kind::String, !!NSString(value)},
        {Kind::Data, !!NSData(value)},   {Kind::URL, !!NSURL(value)},
        {Kind::Array, !!NSArray(value)}, {Kind::Dictionary, !!NSDictionary(value)},
        {Kind::Set, !!NSSet(value)},     {Kind::OrderedSet, !!NSOrderedSet(value)},
        {Kind::Object, !!value.object()}};
    for (const auto& [expected, answer] : answers) EXPECT_EQ(answer, kind == expected) << value;
    EXPECT_TRUE(value.isNumber() == isNumber && !!NSNumber(value) == isNumber);
    EXPECT_FALSE(value.isMutable() || NSMutableString::from(value) || NSMutableArray::from(value) ||
                 NSMutableDictionary::from(value) || NSMutableSet::from(value) ||
                 NSMutableData::from(value) || NSMutableOrderedSet::from(value) ||
                 NSIndexSet::from(value) || NSError::from(value));
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
  const NSString other("element");
  EXPECT_TRUE(element == other && !element.isIdenticalTo(other));
  EXPECT_TRUE(Value(1).isEqual(1L) && Value(1).isIdenticalTo(1) && !Value(1).isIdenticalTo(1L));
}

TEST(Description, IsForPeople) {
  // clang-format off
  const std::pair<Value, std::string> cases[] = {
      {nullptr, "(null)"}, {NSNull::null(), "<null>"}, {"bare \"text\"", "bare \"text\""},
      {NSDate::dateWithTimeIntervalSince1970(-0.25), "1969-12-31 23:59:59 +0000"},
      {NSDate::dateWithTimeIntervalSince1970(951782400.9), "2000-02-29 00:00:00 +0000"},
      {NSDate::dateWithTimeIntervalSince1970(253402300800), "10000-01-01 00:00:00 +0000"},
      {NSDate::dateWithTimeIntervalSince1970(1e300), "1e+300 s since 2001-01-01"},
      {NSDate::dateWithTimeIntervalSince1970(-HUGE_VAL), "-inf s since 2001-01-01"},
      {NSURL::URLWithString("http://host/"), "http://host/"},
      {NSData::dataWithBytes("\xFF\x01"), "{length = 2, bytes = 0xff01}"},
      {NSArray{1, "a b", NSArray::array()}, "(\n    1,\n    \"a b\",\n    (\n    )\n)"},
      {NSDictionary{{"k", true}, {2, NSDictionary{{"in", 0.1f}}}},
       "{\n    \"k\" = 1;\n    2 = {\n        \"in\" = 0.1;\n    };\n}"},
      {NSDictionary{{"list", NSArray{1e100}}}, "{\n    \"list\" = (\n        1e+100\n    );\n}"},
      {NSSet{1, "a"}, "{(\n    1,\n    \"a\"\n)}"}};
  // clang-format on
  for (const auto& [value, text] : cases) {
    std::ostringstream stream;
    stream << value;
    EXPECT_EQ(stream.str(), text);
  }
}

TEST(NSURL, IsItsText) {
  for (const char* text : {"http://user@host:80/path;p?query=a+b#frag", "../relative", "a%20b",
                           "http://[::1]/", "mailto:name@host"}) {
    const NSURL url = NSURL::URLWithString(text);
    EXPECT_TRUE(url.absoluteString() == text && url == NSURL::URLWithString(text)) << text;
    EXPECT_NE(url, NSURL::URLWithString("http://other/")) << text;
  }
  for (const char* text : {"", "a b", "a\tb", "a\nb", "\x01", "\x7F", "a\"", "<a", "a>", "a\\b",
                           "a^", "a`", "{a", "a|b", "a}", "mailto:\xC3\xA9@host"}) {
    EXPECT_TRUE(NSURL::URLWithString(text).isNil()) << text;
  }
}

TEST(NSDate, ConvertsBetweenEpochsAndClocks) {
  using namespace std::chrono_literals;
  using Moment = std::chrono::system_clock::time_point;
  const auto since1970 = NSDate::dateWithTimeIntervalSince1970;
  EXPECT_EQ(since1970(0).timeIntervalSinceReferenceDate(), -978307200.0);
  EXPECT_EQ(since1970(0).dateByAddingTimeInterval(86400.5).timeIntervalSince1970(), 86400.5);
  EXPECT_EQ(NSDate(Moment(1500ms)), since1970(1.5));
  EXPECT_EQ(since1970(-1.5).timePoint(), Moment(-1500ms));
  EXPECT_EQ(since1970(1e300).timePoint(), Moment::max());
  EXPECT_EQ(since1970(-1e300).timePoint(), Moment::min());
  EXPECT_TRUE(since1970(0) < since1970(1e-6) && !since1970(978307201).isEqual(1));
  const NSDate minusZero = NSDate::dateWithTimeIntervalSinceReferenceDate(-0.0);
  EXPECT_TRUE(since1970(978307200) == minusZero && since1970(978307200).hash() == minusZero.hash());
}

}  // namespace zeb::test
