#include <ZEBPlatform/Foundation.h>
#include <gtest/gtest.h>

#include <cmath>

namespace zeb::test {

constexpr double infinity = HUGE_VAL, notANumber = NAN;
constexpr std::int64_t longMax = INT64_MAX, longMin = INT64_MIN;
constexpr std::int32_t intMax = INT32_MAX, intMin = INT32_MIN;
constexpr std::int64_t twoTo53 = 1L << 53;
constexpr std::uint64_t twoTo63 = 1UL << 63;
constexpr double exact63 = 9223372036854775808.0;

TEST(NSNumber, NumericReadings) {
  using Case = std::tuple<Value, bool, std::int32_t, std::int64_t, double>;
  // clang-format off
  const Case cases[] = {
      {true, true, 1, 1, 1}, {false, false, 0, 0, 0}, {-7, true, -7, -7, -7},
      {1099511627781, true, 5, 1099511627781, 1099511627781.0}, {~0ull, true, -1, -1, 2 * exact63},
      {2.9, true, 2, 2, 2.9}, {-2.9f, true, -2, -2, double{-2.9f}}, {0.5, true, 0, 0, 0.5},
      {-0.0, false, 0, 0, 0}, {1e30, true, intMax, longMax, 1e30},
      {-1e30, true, intMin, longMin, -1e30}, {infinity, true, intMax, longMax, infinity},
      {3e9, true, intMax, 3000000000, 3e9}, {1e39, true, intMax, longMax, 1e39},
      // Strings, by the number that they begin with.
      {"12", true, 12, 12, 12}, {" \t\n-12abc", true, -12, -12, -12}, {"", false, 0, 0, 0},
      {"+3.75e1x", true, 3, 3, 37.5}, {"abc", false, 0, 0, 0}, {"- 5", false, 0, 0, 0},
      {"--5", false, 0, 0, 0}, {".5", false, 0, 0, 0.5}, {"5.", true, 5, 5, 5},
      {"0x10", false, 0, 0, 0}, {"1e", true, 1, 1, 1}, {"inf", false, 0, 0, 0},
      {"nan", false, 0, 0, 0}, {"Yes", true, 0, 0, 0}, {" true", true, 0, 0, 0},
      {"No", false, 0, 0, 0}, {"-0007", true, -7, -7, -7}, {"000", false, 0, 0, 0},
      {"2147483648", true, intMax, 2147483648, 2147483648.0},
      {"-2147483649", true, intMin, -2147483649, -2147483649.0},
      {"9223372036854775807", true, intMax, longMax, exact63},
      {"9223372036854775808", true, intMax, longMax, exact63},
      {"-9223372036854775808", true, intMin, longMin, -exact63},
      {"-9223372036854775809", true, intMin, longMin, -exact63},
      {"99999999999999999999999999", true, intMax, longMax, 1e26}, {"1e-400", true, 1, 1, 0},
      {"1e400", true, 1, 1, infinity}, {"-1e400", true, -1, -1, -infinity},
      {"12\xC3\xA9", true, 12, 12, 12}, {"\xD9\xA1", false, 0, 0, 0}, {NSArray{5}, false, 0, 0, 0}};
  // clang-format on
  for (const auto& [value, asBool, asInt, asLong, asDouble] : cases) {
    EXPECT_TRUE(value.boolValue() == asBool && value.intValue() == asInt) << value;
    EXPECT_TRUE(value.longLongValue() == asLong && value.integerValue() == asLong) << value;
    EXPECT_EQ(value.doubleValue(), asDouble) << value;
    EXPECT_EQ(value.floatValue(), asDouble == 1e39 ? infinity : static_cast<float>(asDouble));
  }
  EXPECT_TRUE(Value(notANumber).longLongValue() == 0 && Value(notANumber).intValue() == 0);
  // Integers are rounded to a float once: on the way through a double this one would be rounded
  // twice.
  constexpr std::int64_t aboveHalf = 0x1000001000000001;
  EXPECT_EQ(Value(aboveHalf).floatValue(), 0x1.000002p60f);
  EXPECT_EQ(Value(-aboveHalf).floatValue(), -0x1.000002p60f);
  EXPECT_EQ(Value(std::uint64_t{aboveHalf} << 3).floatValue(), 0x1.000002p63f);
  // The size of the whole number decides, not the sign of its exponent.
  const std::string zeros(400, '0');
  EXPECT_EQ(Value("1" + zeros + "e-10").doubleValue(), infinity);
  EXPECT_EQ(Value("0." + zeros + "1e10").doubleValue(), 0);
  EXPECT_EQ(Value("1" + zeros + "e-400").doubleValue(), 1);
}

TEST(NSNumber, RemembersItsTypeAndReadsAsUnsigned) {
  using Case = std::tuple<NSNumber, char, bool, std::uint64_t, const char*>;
  // clang-format off
  const Case cases[] = {
      {true, 'c', false, 1, "1"}, {std::int8_t{-1}, 'c', true, ~0ull, "-1"},
      {std::uint8_t{200}, 'C', true, 200, "200"}, {short{-2}, 's', true, ~1ull, "-2"},
      {std::uint16_t{2}, 'S', true, 2, "2"}, {3, 'i', true, 3, "3"}, {3u, 'I', true, 3, "3"},
      {longMin, 'q', true, twoTo63, "-9223372036854775808"},
      {twoTo63 - 1, 'Q', true, twoTo63 - 1, "9223372036854775807"},
      {twoTo63, 'Q', false, twoTo63, "9223372036854775808"}, {0.1f, 'f', false, 0, "0.1"},
      {0.1, 'd', false, 0, "0.1"}, {1e20, 'd', false, ~0ull, "1e+20"},
      {-0.5, 'd', false, 0, "-0.5"}, {-5.0, 'd', false, 0, "-5"},
      {notANumber, 'd', false, 0, "nan"}, {-infinity, 'd', false, 0, "-inf"}};
  // clang-format on
  for (const auto& [number, code, isSigned64, asUnsigned, text] : cases) {
    EXPECT_TRUE(number.objCType() == code && number.isSigned64() == isSigned64) << number;
    EXPECT_EQ(number.unsignedLongLongValue(), asUnsigned) << number;
    EXPECT_EQ(number.stringValue(), text);
  }
}

TEST(NSNumber, IsOrderedAndEqualByExactValueAcrossTypeCodes) {
  // In rising order; the numbers of one row are the same.
  // clang-format off
  const std::vector<std::vector<NSNumber>> rows = {
      {-infinity, static_cast<float>(-infinity)}, {-1e300},
      {longMin, -exact63, static_cast<float>(-exact63)}, {longMin + 1},
      {std::int8_t{-1}, -1, -1L, -1.0, -1.0f}, {-0.5, -0.5f}, {false, 0, 0u, 0.0, -0.0, -0.0f},
      {5e-324}, {0.1}, {0.1f}, {true, 1, 1u, 1L, 1UL, 1.0, 1.0f}, {1.5, 1.5f},
      {twoTo53 - 1, 9007199254740991.0}, {twoTo53, 9007199254740992.0, 9007199254740992.0f},
      {twoTo53 + 1, 9007199254740993UL}, {twoTo53 + 2, 9007199254740994.0},
      {longMax - 1, twoTo63 - 2}, {longMax, twoTo63 - 1},
      {twoTo63, exact63, static_cast<float>(exact63)}, {twoTo63 + 1},
      {twoTo63 + 2048, exact63 + 2048}, {~0ull}, {2 * exact63, static_cast<float>(2 * exact63)},
      {infinity, static_cast<float>(infinity)}};
  // clang-format on
  const NSNumber nan(notANumber);
  for (std::size_t row = 0; row < rows.size(); ++row) {
    for (const NSNumber& left : rows[row]) {
      for (std::size_t other = 0; other < rows.size(); ++other) {
        for (const NSNumber& right : rows[other]) {
          SCOPED_TRACE(left.stringValue().utf8() + " and " + right.stringValue().utf8());
          EXPECT_EQ(left.compare(right), row < other ? -1 : row > other);
          EXPECT_EQ(left.isEqual(right), row == other);
          EXPECT_TRUE(row != other || left.hash() == right.hash());
          EXPECT_EQ(NSDictionary({{left, 1}})[right].isNil(), row != other);
        }
      }
      EXPECT_FALSE(left.isEqual(nan) || nan.isEqual(left));
      EXPECT_TRUE(nan.compare(left) < 0 && left.compare(nan) > 0 && left.compare(nullptr) > 0);
    }
  }
  EXPECT_EQ(nan.compare(nan), NSOrderedSame);
  EXPECT_EQ(NSDictionary({{nan, "found"}})[nan], "found") << "what is identical is found";
}

}  // namespace zeb::test
