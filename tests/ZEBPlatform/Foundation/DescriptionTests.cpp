#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <gtest/gtest.h>

#include <sstream>

namespace zeb::test {

TEST(Description, IsForPeople) {
  // clang-format off
  const std::pair<Value, std::string> cases[] = {
      {nullptr, "(null)"}, {NSNull::null(), "<null>"}, {"bare \"text\"", "bare \"text\""},
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

}  // namespace zeb::test
