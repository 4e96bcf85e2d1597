#include <Foundation/NSString.h>
#include <Geometry/CLLocation.h>
#include <Geometry/NSValue.h>
#include <gtest/gtest.h>

namespace zeb {
namespace {

TEST(Geometry, RecordsComeOutAsTheirOwnTypeOnly) {
  const Value samples[] = {boxed(CGRect{{1, 2.5}, {-3, 4}}),
                           boxed(CGPoint{1, 2}),
                           boxed(CGSize{1, 2}),
                           boxed(NSRange{1, SIZE_MAX}),
                           boxed(CGAffineTransformIdentity),
                           "{1, 2}"};
  std::string text;
  for (const Value& value : samples) {
    text += value.description().utf8() + (unboxed<CGRect>(value) ? " rect" : "") +
            (unboxed<CGPoint>(value) ? " point" : "") + (unboxed<CGSize>(value) ? " size" : "") +
            (unboxed<NSRange>(value) ? " range" : "") +
            (unboxed<CGAffineTransform>(value) ? " matrix" : "") + "; ";
    for (const Value& other : samples) EXPECT_EQ(value.isEqual(other), &value == &other);
  }
  EXPECT_EQ(text,
            "{{1, 2.5}, {-3, 4}} rect; {1, 2} point; {1, 2} size; {1, 18446744073709551615} range; "
            "[1, 0, 0, 1, 0, 0] matrix; {1, 2}; ");
  EXPECT_TRUE(boxed(CGPoint{0.0, 1}).isEqual(boxed(CGPoint{-0.0, 1})));
  EXPECT_EQ(boxed(CGPoint{0.0, 1}).hash(), boxed(CGPoint{-0.0, 1}).hash());
}

TEST(Geometry, EveryFieldOfALocationCounts) {
  const auto location = [](int changed) {
    double f[8] = {37.33182, -122.03118, 1, 2, 3, 4, 5, 6};
    if (changed < 8) f[changed] = 0;
    const NSDate date = NSDate::dateWithTimeIntervalSince1970(f[7]);
    return Value(
        makeRef<CLLocation>(CLLocation::Fields{{f[0], f[1]}, f[2], f[3], f[4], f[5], f[6], date}));
  };
  for (int i = 0; i < 9; ++i) EXPECT_EQ(location(8) == location(i), i == 8) << i;
  EXPECT_EQ(location(8).hash(), location(8).hash());
  EXPECT_EQ(location(8).description(),
            "<+37.33182000,-122.03118000> +/- 2.00m (speed 5.00 mps / course 4.00) "
            "@ 1970-01-01 00:00:06 +0000");
}

}  // namespace
}  // namespace zeb
