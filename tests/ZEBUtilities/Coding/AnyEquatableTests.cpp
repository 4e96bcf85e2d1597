#include <ZEBPlatform/Geometry.h>
#include <ZEBUtilities/Coding/AnyEquatable.h>
#include <gtest/gtest.h>

namespace zeb::test {

struct Version : AnyEquatableAdopter<Version> {
  explicit Version(int versionNumber) : number(versionNumber) {}
  bool operator==(const Version& other) const { return number == other.number; }
  int number;
};

TEST(AnyEquatable, ComparesObjectsByTheirEqualityAndTypesByTheirOwn) {
  const auto at = [](double number) {
    return makeRef<CLLocation>(
        CLLocation::Fields{.coordinate = {number, 0}, .timestamp = NSDate::distantPast()});
  };
  const auto one = at(1);
  const AnyEquatableObject object(one);
  const AnyEquatable& any = object;
  EXPECT_TRUE(object.isEqual(one) && object.isEqual(at(1)) && any.isEqual(one));
  EXPECT_TRUE(object.isEqual(Ref<NSObject>(one)) && object.isEqual(Value(one)));
  EXPECT_TRUE(object.isEqual(AnyEquatableObject::any(one)));
  EXPECT_FALSE(object.isEqual(at(2)) || object.isEqual(Value(1)) || object.isEqual(1));
  EXPECT_FALSE(object.isEqual(nullptr) || object.isEqual(std::any()) ||
               object.isEqual(Ref<CLLocation>()) || AnyEquatableObject(nullptr).isEqual(nullptr));
  EXPECT_TRUE(Version(1).isEqual(Version(1)) && Version(1).isEqual(std::any(Version(1))));
  EXPECT_FALSE(Version(1).isEqual(Version(2)) || Version(1).isEqual(object) ||
               Version(1).isEqual(one));
}

}  // namespace zeb::test
