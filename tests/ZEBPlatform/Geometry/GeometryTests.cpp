#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Geometry.h>
#include <gtest/gtest.h>

namespace zeb::test {

TEST(Geometry, RecordsComeOutAsTheirOwnTypeOnly) {
  const Value point = boxed(CGPoint{0.0, 2});
  const Value other = boxed(CGPoint{-0.0, 2});
  EXPECT_EQ(boxed(CGRect{{1, 2.5}, {-3, 4}}).description(), "{{1, 2.5}, {-3, 4}}");
  EXPECT_EQ(boxed(NSRange{1, SIZE_MAX}).description(), "{1, 18446744073709551615}");
  EXPECT_TRUE(unboxed<CGPoint>(point) && !unboxed<CGSize>(point) && !unboxed<CGPoint>("{0, 2}"));
  EXPECT_TRUE(point.isEqual(other) && point.hash() == other.hash());
}

TEST(Geometry, EveryFieldOfALocationCounts) {
  const auto location = [](int changed) {
    double f[8] = {37.33182, -122.03118, 1, 2, 3, 4, 5, 6};
    if (changed < 8) f[changed] = 0;
    const NSDate date = NSDate::dateWithTimeIntervalSince1970(f[7]);
    const CLLocation::Fields fields{{f[0], f[1]}, f[2], f[3], f[4], f[5], f[6], date};
    return Value(makeRef<CLLocation>(fields));
  };
  for (int i = 0; i < 9; ++i) {
    EXPECT_EQ(location(8) == location(i), i == 8) << i;
    EXPECT_EQ(location(8).hash() == location(i).hash(), i == 8) << i;
  }
}

}  // namespace zeb::test
