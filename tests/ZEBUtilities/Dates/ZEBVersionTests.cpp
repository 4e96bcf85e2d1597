#include <ZEBUtilities/Dates/ZEBVersion.h>
#include <gtest/gtest.h>

#include <string>

namespace zeb::test {

TEST(ZEBVersion, ReadsAndWritesDotSeparatedText) {
  struct Row {
    NSString text;
    const char* written;
  };
  const Row rows[] = {
      {"10.3", "10.3.0.0"},       {"1.2.3.4.5", "1.2.3.4"},
      {"300.-1.7b", "255.0.7.0"}, {" +8 .99999999999999999999.x.-0", "8.255.0.0"},
      {"...4", "0.0.0.4"},        {"1.", "1.0.0.0"},
      {"1\u00E92.3", "1.3.0.0"},  {"", "0.0.0.0"},
      {nullptr, "0.0.0.0"},       {std::string(1'000'000, '.'), "0.0.0.0"},
  };
  for (const auto& [text, written] : rows) {
    const ZEBVersion version = ZEBVersionFromDotSeparatedVersionString(text);
    EXPECT_EQ(ZEBVersionToDotSeparatedVersionString(version), NSString(written)) << text;
    EXPECT_EQ(ZEBVersionFromInt(ZEBVersionToInt(version)), version);
  }
}

TEST(ZEBVersion, ComparesNumericallyAllPartsOrTheSelectedOnes) {
  const auto version = &ZEBVersionFromDotSeparatedVersionString;
  EXPECT_EQ(ZEBVersionCompare(version("1.2"), version("1.10")), NSOrderedAscending);
  EXPECT_EQ(ZEBVersionCompare(version("255"), version("1.255.255.255")), NSOrderedDescending);
  EXPECT_EQ(ZEBVersionCompare(version("1.2.3.4"), version("1.2.3.4")), NSOrderedSame);

  struct Row {
    const char* a;
    const char* b;
    ZEBVersionCompareOptions options;
    NSComparisonResult result;
  };
  const Row rows[] = {
      {"1.2.3.4", "1.2.9.9", ZEBVersionCompareMajor | ZEBVersionCompareMinor, NSOrderedSame},
      {"1.2.3.4", "1.2.9.9", ZEBVersionComparePatch, NSOrderedAscending},
      {"2.1.9.4", "1.2.9.3", ZEBVersionCompareMinor | ZEBVersionCompareBuild, NSOrderedAscending},
      {"2.1.9.4", "1.2.9.3", ZEBVersionComparePatch | ZEBVersionCompareBuild, NSOrderedDescending},
      {"2.1.9.4", "1.2.9.3", 0, NSOrderedSame},
      {"2.1.9.4", "1.2.9.3", 16, NSOrderedSame},
  };
  for (const auto& [a, b, options, result] : rows) {
    EXPECT_EQ(ZEBVersionCompareWithOptions(version(a), version(b), options), result)
        << a << " and " << b << ", options " << options;
  }
}

}  // namespace zeb::test
