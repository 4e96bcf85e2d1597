#include <ZEBPlatform/Concurrency/detail/CallGuard.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <gtest/gtest.h>

namespace zeb::test {

TEST(CallGuard, AdmitsTheOutermostCallAndForgetsItAlsoAfterAnException) {
  bool isCalling = false;
  for (int call = 0; call < 2; ++call) {
    try {
      const detail::CallGuard outer(isCalling);
      EXPECT_TRUE(outer);
      EXPECT_FALSE(detail::CallGuard(isCalling));
      EXPECT_FALSE(detail::CallGuard(isCalling)) << "the refused guard has cleared the flag";
      throw 1;
    } catch (int) {
    }
  }
}

TEST(NeverDestroyedDeathTest, OutlivesTheExitOfTheProcess) {
  struct Object {
    ~Object() { std::_Exit(1); }
  };
  const auto use = [] {
    static detail::NeverDestroyed<Object> object;
    std::exit(7);
  };
  EXPECT_EXIT(use(), testing::ExitedWithCode(7), "");
}

}  // namespace zeb::test
