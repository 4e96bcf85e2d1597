#include <ZEBPlatform/Foundation/detail/FirstLetter.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace zeb {
namespace {

TEST(FirstLetter, IsRaisedInEveryScript) {
  const std::pair<NSString, NSString> cases[] = {
      {"état", "État"}, {"ßen", "SSen"},
      {"ﬃ", "FFI"},     {"𐐨𐐨", "𐐀𐐨"},
      {"7 x", "7 x"},   {"", ""},
      {nullptr, ""},    {NSString(u"\xD801x"), NSString(u"\xD801x")}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(detail::withUppercaseFirstLetter(text), expected);
  }
}

}  // namespace
}  // namespace zeb
