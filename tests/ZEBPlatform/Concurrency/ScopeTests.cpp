#include <ZEBPlatform/Concurrency/detail/CallGuard.h>
#include <ZEBPlatform/Concurrency/detail/FrameStack.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <gtest/gtest.h>

#include <thread>

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

TEST(FrameStack, FindsTheInnermostFrameOfItsThreadAndKind) {
  struct Frame : detail::FrameStack<Frame> {};
  struct Other : detail::FrameStack<Other> {};
  const Frame outer;
  {
    const Frame inner;
    const Other other;
    EXPECT_EQ(Frame::innermost(), &inner);
    std::thread([] { EXPECT_EQ(Frame::innermost(), nullptr); }).join();
  }
  EXPECT_TRUE(Frame::innermost() == &outer && !Other::innermost());
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
