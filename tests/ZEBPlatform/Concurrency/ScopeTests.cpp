#include <ZEBPlatform/Concurrency/detail/CallGuard.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <gtest/gtest.h>

namespace zeb::test {

TEST(CallGuard, AdmitsTheOutermostCallAndForgetsItAlsoAfterAnException) {
  bool isCalling = false;
  const auto use = [&] {
    const detail::CallGuard outer(isCalling);
    EXPECT_TRUE(outer);
    for (int refused = 0; refused < 2; ++refused) EXPECT_FALSE(detail::CallGuard(isCalling));
    throw 1;
  };
  for (int call = 0; call < 2; ++call) EXPECT_THROW(use(), int);
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
