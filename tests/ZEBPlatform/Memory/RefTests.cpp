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

TEST(NSObject, IsDescribedByItsClass) {
  struct Plain : NSObject {};
  const auto object = makeRef<Plain>();
  EXPECT_TRUE(object->className().ends_with("Plain")) << object->className();
  EXPECT_TRUE(object->description().starts_with("<" + object->className() + ": 0x"));
}

}  // namespace zeb::test
