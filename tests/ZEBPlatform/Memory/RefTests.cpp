#include <ZEBPlatform/Memory/NSObject.h>
#include <gtest/gtest.h>

namespace zeb::test {

struct LoggedBase {
  void retain() { log += '+'; }
  void release() { log += '-'; }
  std::string log;
};
struct Logged : LoggedBase {};

TEST(Ref, RetainsAndReleasesExactly) {
  Logged object;
  {
    Ref<Logged> ref(&object);
    Ref<Logged> copy(ref);
    EXPECT_EQ(object.log, "++");
    Ref<Logged> moved(std::move(copy));
    Ref<LoggedBase> base(std::move(moved));
    EXPECT_EQ(object.log, "++");
    EXPECT_TRUE(!copy && !moved && base == ref);
    base = ref;
    EXPECT_EQ(object.log, "+++-");
    const Ref<Logged>& same = ref;
    ref = same;
    base = nullptr;
    EXPECT_EQ(object.log, "+++-+--");
    EXPECT_TRUE(ref.leak() == &object && ref == nullptr);
  }
  Ref<Logged>::adopt(&object);  // what was leaked
  EXPECT_EQ(object.log, "+++-+---");
}

struct Plain : NSObject {};

TEST(NSObject, HasIdentityAndAName) {
  const Ref<Plain> one = makeRef<Plain>();
  const Ref<Plain> other = makeRef<Plain>();
  EXPECT_TRUE(one->isEqual(*one) && !one->isEqual(*other));
  EXPECT_TRUE(one->className().ends_with("Plain")) << one->className();
  EXPECT_TRUE(one->description().starts_with("<" + one->className() + ": 0x"));
}

}  // namespace zeb::test
