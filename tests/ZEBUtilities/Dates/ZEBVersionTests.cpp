#include <ZEBUtilities/Dates/ZEBVersion.h>
#include <gtest/gtest.h>

namespace zeb::test {

TEST(ZEBVersion, ReadsAndWritesDotSeparatedText) {
  const std::pair<NSString, const char*> rows[] = {
      {"10.3", "10.3.0.0"},       {"1.2.3.4.5", "1.2.3.4"},
      {"300.-1.7b", "255.0.7.0"}, {" +8 .99999999999999999999.x.-0", "8.255.0.0"},
      {"...4", "0.0.0.4"},        {"1.", "1.0.0.0"},
      {"1\u00E92.3", "1.3.0.0"},  {"", "0.0.0.0"},
      {nullptr, "0.0.0.0"},       {std::string(1'000'000, '.'), "0.0.0.0"}};
  for (const auto& [text, written] : rows) {
    const ZEBVersion version = ZEBVersionFromDotSeparatedVersionString(text);
    EXPECT_EQ(ZEBVersionToDotSeparatedVersionString(version), NSString(written)) << text;
    EXPECT_EQ(ZEBVersionFromInt(ZEBVersionToInt(version)), version);
  }
}

TEST(ZEBVersion, ComparesNumericallyAllPartsOrTheSelectedOnes) {
  constexpr ZEBVersionCompareOptions all = ~0u;  // the function without options
  const std::tuple<const char*, const char*, ZEBVersionCompareOptions, NSComparisonResult> rows[] =
      {{"1.2", "1.10", all, NSOrderedAscending},
       {"255", "1.255.255.255", all, NSOrderedDescending},
       {"1.2.3.4", "1.2.3.4", all, NSOrderedSame},
       {"1.2.3.4", "1.2.9.9", ZEBVersionCompareMajor | ZEBVersionCompareMinor, NSOrderedSame},
       {"1.2.3.4", "1.2.9.9", ZEBVersionComparePatch, NSOrderedAscending},
       {"2.1.9.4", "1.2.9.3", ZEBVersionCompareMinor | ZEBVersionCompareBuild, NSOrderedAscending},
       {"2.1.9.4", "1.2.9.3", ZEBVersionComparePatch | ZEBVersionCompareBuild, NSOrderedDescending},
       {"2.1.9.4", "1.2.9.3", 0, NSOrderedSame},
       {"2.1.9.4", "1.2.9.3", 16, NSOrderedSame}};
  for (const auto& [a, b, options, result] : rows) {
    const ZEBVersion one = ZEBVersionFromDotSeparatedVersionString(a);
    const ZEBVersion other = ZEBVersionFromDotSeparatedVersionString(b);
    EXPECT_EQ(options == all ? ZEBVersionCompare(one, other)
                             : ZEBVersionCompareWithOptions(one, other, options),
              result)
        << a << " and " << b << ", options " << options;
  }
}

}  // namespace zeb::test
