#include <ZEBUtilities/Text.h>

#include "Support/Support.h"

namespace zeb::test {

using namespace std::string_view_literals;

TEST(NSStringZEBAdditions, Digits) {
  const struct {
    NSString text;
    bool onlyNumbers, onlyHexNumbers;
    std::uint64_t value;
  } cases[] = {
      {nullptr, false, false, 0},
      {"", false, false, 0},
      {"123", true, true, 0x123},
      {"12a", false, true, 0x12A},
      {"deadBEEF", false, true, 0xDEADBEEF},
      {"0x1F", false, false, 0},
      {"1Fz9", false, false, 31},
      {"ff", false, true, 255},
      {"g1", false, false, 0},
      {" 1", false, false, 0},
      {"FFFFFFFFFFFFFFFFF", false, true, UINT64_MAX},
      {"123456789ABCDEF01", false, true, 0x23456789ABCDEF01},
      {u"\u0661\u0662\u0663"sv, true, false, 0},
      {u"\U0001D7CE\U0001D7D7"sv, true, false, 0},
      {u"a\uFF11"sv, false, false, 10},
      {u"1\xD835"sv, false, false, 1},
      {u"\xDFCE"sv, false, false, 0},
  };
  for (const auto& [text, onlyNumbers, onlyHexNumbers, value] : cases) {
    EXPECT_EQ(zeb_containsOnlyNumbers(text), onlyNumbers) << text;
    EXPECT_EQ(zeb_containsOnlyHexNumbers(text), onlyHexNumbers) << text;
    EXPECT_EQ(zeb_hexIntegerValue(text), value) << text;
  }
}

}  // namespace zeb::test
