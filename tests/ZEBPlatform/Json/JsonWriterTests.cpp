#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>

#include <charconv>
#include <cmath>

#include "Support/Support.h"

namespace zeb::test {

constexpr std::uint64_t pretty = NSJSONWritingPrettyPrinted;
constexpr std::uint64_t sorted = NSJSONWritingSortedKeys;
constexpr std::uint64_t fragments = NSJSONWritingFragmentsAllowed;
constexpr std::uint64_t plainSlashes = fragments | NSJSONWritingWithoutEscapingSlashes;

std::string written(const Value& value, std::uint64_t options = fragments) {
  return std::string(NSJSONSerialization::dataWithJSONObject(value, options).view());
}

Value readBack(std::string_view text) {
  return NSJSONSerialization::JSONObjectWithData(NSData::dataWithBytes(text),
                                                 NSJSONReadingFragmentsAllowed);
}

TEST(JsonWriter, WritesExactly) {
  const NSDictionary inner{{"\xF0\x9F\x98\x80", 2}, {"\xEF\xBD\x9E", 3}, {"z", 1}};
  const NSDictionary unsorted{{"b", 1}, {"a", inner}, {"B", 2}};
  NSMutableString onceWide("\xC3\xA9"_ns);
  onceWide.setString("a/\"");
  using Case = std::tuple<Value, std::uint64_t, const char*>;
  // clang-format off
  const Case cases[] = {
      {NSArray{1, "a", NSNull::null(), true, false, NSArray::array()}, 0,
       "[1,\"a\",null,true,false,[]]"},
      {NSDictionary{{"b", 1}, {"a", NSArray{2}}}, 0, "{\"b\":1,\"a\":[2]}"},
      {NSDictionary::dictionary(), pretty, "{}"},
      {NSDictionary{{"b", 1}, {"a", NSArray{2, NSArray::array()}}}, pretty,
       "{\n  \"b\" : 1,\n  \"a\" : [\n    2,\n    []\n  ]\n}"},
      {unsorted, sorted,
       "{\"B\":2,\"a\":{\"z\":1,\"\xF0\x9F\x98\x80\":2,\"\xEF\xBD\x9E\":3},\"b\":1}"},
      {NSMutableArray{NSMutableDictionary{{"k", onceWide}}}, sorted, "[{\"k\":\"a\\/\\\"\"}]"},
      {"/</", fragments, "\"\\/<\\/\""}, {"/</", plainSlashes, "\"/</\""},
      {"\0"_ns, fragments, "\"\\u0000\""},
      {"\b\f\n\r\t\"\\\x01\x1F\x7F", fragments, "\"\\b\\f\\n\\r\\t\\\"\\\\\\u0001\\u001f\x7F\""},
      {"\xC2\x80\xE2\x80\xA8\xF0\x9F\x98\x80/\n", fragments,
       "\"\xC2\x80\xE2\x80\xA8\xF0\x9F\x98\x80\\/\\n\""},
      {NSString(std::u16string_view(u"\xD83D\xD83D\xDE00\xDE00")), fragments,
       "\"\\ud83d\xF0\x9F\x98\x80\\ude00\""},
      {NSNull::null(), fragments, "null"}, {1.0, fragments, "1"}, {-0.0, fragments, "-0"},
      {0.1, fragments, "0.1"}, {16777216.0f, fragments, "16777216"},
      {-1234.5, fragments, "-1234.5"}, {1e-6, fragments, "0.000001"}, {1.5e-7, fragments, "1.5e-7"},
      {1e15, fragments, "1000000000000000"}, {1e16, fragments, "1e16"}, {1e22, fragments, "1e22"},
      {123456789.125, fragments, "123456789.125"}, {5e-324, fragments, "5e-324"}};
  // clang-format on
  EXPECT_EQ(written(0.1f), "0.1") << "a float has the digits of a float";
  for (const auto& [value, options, text] : cases) {
    EXPECT_EQ(written(value, options), text);
    EXPECT_EQ(readBack(text), value) << text;
  }
}

TEST(JsonWriter, RefusesWhatJsonCannotHold) {
  // clang-format off
  const std::pair<Value, std::uint64_t> cases[] = {
      {nullptr, fragments}, {nullptr, 0}, {"fragment", 0}, {1, pretty}, {NSNull::null(), 0},
      {NSSet{1}, fragments}, {NSDate::date(), fragments}, {NSArray{NSDate::date()}, 0},
      {NSArray{NSSet{1}}, sorted}, {NSArray{NSData::data()}, 0}, {NSArray{NSError("domain", 1)}, 0},
      {NSArray{std::nan("")}, 0}, {NSArray{-HUGE_VALF}, 0}, {NSDictionary{{1, "number"}}, 0},
      {NSDictionary{{"a", 1}, {NSNull::null(), 1}}, sorted}};
  // clang-format on
  for (const auto& [value, options] : cases) {
    EXPECT_EQ(raisedName([&] { written(value, options); }), NSInvalidArgumentException) << value;
    EXPECT_FALSE(NSJSONSerialization::isValidJSONObject(value)) << value;
  }
  EXPECT_TRUE(NSJSONSerialization::isValidJSONObject(NSArray{1, NSDictionary{{"k", "v"}}}));
}

TEST(JsonWriter, EndsAtTheDepthThatTheReaderTakes) {
  const auto nested = [](int depth) {
    Value value = NSArray::array();
    while (--depth) value = depth % 2 ? Value(NSDictionary{{"k", value}}) : NSArray{value};
    return value;
  };
  for (const std::uint64_t options : {std::uint64_t{0}, sorted, pretty}) {
    EXPECT_EQ(readBack(written(nested(512), options)), nested(512));
    for (const int depth : {513, 100'000}) {
      NSError error;
      runOnSmallStack([&] {
        const Value deep = nested(depth);
        EXPECT_FALSE(NSJSONSerialization::dataWithJSONObject(deep, options, &error));
        EXPECT_FALSE(NSJSONSerialization::isValidJSONObject(deep));
      });
      EXPECT_EQ(error.code(), NSPropertyListWriteInvalidError);
      EXPECT_STREQ(error.what(), "Nested more than 512 levels deep.");
    }
  }
}

TEST(JsonWriter, StringsOfEveryLengthAndPlaceReadBackEqual) {
  for (std::size_t length = 0; length <= 36; ++length) {
    for (std::size_t place = 0; place <= length; ++place) {
      NSMutableArray strings;
      NSMutableDictionary keys;
      for (const std::u16string special : {u"\"", u"\\", u"/", u"\x01", u"\u00E9", u"\uFFFF",
                                           u"\U0001F600", u"\xD83D", u"\xDE00"}) {
        const std::u16string units = std::u16string(length, u'x').insert(place, special);
        strings.addObject(NSString(std::u16string_view(units)));
        keys.setObject(strings.lastObject().mutableCopy(), strings.lastObject());
      }
      strings.addObject(keys);
      for (const unsigned options : {0u, 12u, 15u}) {
        const std::string text = written(strings, options);
        const Value back = readBack(text);
        ASSERT_EQ(back, strings);
        ASSERT_EQ(written(back, options), text) << "strings of documents are written differently";
      }
    }
  }
  const NSArray pieces{std::string(10'000, '/'), std::string(10'000, '"') + "\xC3\xA9"};
  EXPECT_EQ(readBack(written(pieces)), pieces);
}

/// The digits of a number's text that matter.
std::string significantDigits(std::string text) {
  text.erase(std::min(text.find('e'), text.size()));
  std::erase_if(text, [](char character) { return character < '0'; });
  text.erase(0, std::min(text.find_first_not_of('0'), text.size()));
  text.erase(text.find_last_not_of('0') + 1);
  return text;
}

TEST(JsonWriter, DoublesReadBackBitForBitFromFewestDigits) {
  std::mt19937_64 random(5);
  for (int turn = 0; turn < 100'000; ++turn) {
    const std::uint64_t bits = random();
    double number = std::bit_cast<double>(bits);
    if (turn % 4 == 1) number = static_cast<double>(bits >> (turn % 64)) / 1024;
    if (turn % 4 == 2) number = static_cast<double>(bits % 1'000'000) / 1000;
    if (turn % 4 == 3) number = std::ldexp(1.0, turn % 2098 - 1074);
    const float narrow = std::bit_cast<float>(static_cast<std::uint32_t>(bits));
    if (!std::isfinite(number) || !std::isfinite(narrow)) continue;
    const std::string text = written(number);
    const double back = readBack(text).doubleValue();
    const float narrowBack = readBack(written(narrow)).floatValue();
    ASSERT_EQ(std::memcmp(&back, &number, sizeof back), 0) << text;
    char fewest[32] = {};
    std::to_chars(fewest, std::end(fewest), number, std::chars_format::scientific);
    ASSERT_EQ(significantDigits(text), significantDigits(fewest));
    ASSERT_EQ(std::memcmp(&narrowBack, &narrow, sizeof narrow), 0) << written(narrow);
  }
}

TEST(JsonWriter, IntegersOfEveryLength) {
  std::vector<std::uint64_t> numbers{0};
  for (int bit = 0; bit < 64; ++bit) numbers.push_back(~0UL >> bit);
  for (std::uint64_t power = 1; power < ~0UL / 10; power *= 10) numbers.push_back(power * 10);
  for (const std::uint64_t number : numbers) {
    for (const std::uint64_t near : {number - 1, number}) {
      const auto negative = -static_cast<std::int64_t>(near >> 1);
      ASSERT_TRUE(written(near) == std::to_string(near) && readBack(written(near)) == near);
      ASSERT_EQ(written(negative), std::to_string(negative));
    }
  }
}

}  // namespace zeb::test
