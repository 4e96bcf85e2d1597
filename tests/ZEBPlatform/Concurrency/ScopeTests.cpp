#include <ZEBPlatform/Concurrency/detail/CallGuard.h>
#include <ZEBPlatform/Concurrency/detail/FrameStack.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>
#include <thread>

namespace zeb::test {

TEST(CallGuard, AdmitsTheOutermostCallAndForgetsItAlsoAfterAnException) {
  bool isCalling = false;
  for (int call = 0; call < 2; ++call) {
    try {
      const detail::CallGuard outer(isCalling);
      EXPECT_TRUE(outer);
      {
        EXPECT_FALSE(detail::CallGuard(isCalling));
      }
      EXPECT_FALSE(detail::CallGuard(isCalling)) << "the refused guard has cleared the flag";
      throw std::runtime_error("mine");
    } catch (const std::runtime_error&) {
      EXPECT_FALSE(isCalling);
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
  EXPECT_EQ(Frame::innermost(), &outer);
  EXPECT_EQ(Other::innermost(), nullptr);
}

TEST(NeverDestroyedDeathTest, OutlivesTheExitOfTheProcess) {
  struct Object {
    explicit Object(int its) : value(its) {}
    ~Object() { std::_Exit(1); }
    int value;
  };
  const auto use = [] {
    static detail::NeverDestroyed<Object> object(7);
    std::exit(object->value);
  };
  EXPECT_EXIT(use(), testing::ExitedWithCode(7), "");
}

}  // namespace zeb::test
