#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include "Support/Support.h"

namespace zeb::test {

TEST(Block, CopiesShareOneClosureUntilTheLast) {
  std::atomic<int> deaths = 0;
  const Block<int()> none = nullptr;
  EXPECT_TRUE(!none && none == Block<int()>());
  auto probe = makeRef<Probe>(deaths);
  Block<int()> block = [probe = std::move(probe), calls = 0]() mutable { return ++calls; };
  Block<int()> copy = block;
  EXPECT_TRUE(block == copy && !(block == none));
  EXPECT_EQ(block(), 1);
  block = nullptr;
  EXPECT_EQ(copy(), 2);
  EXPECT_EQ(deaths, 0);
  copy = nullptr;
  EXPECT_EQ(deaths, 1);
}

int twice(int number) { return 2 * number; }

TEST(FunctionView, CallsWhateverItViews) {
  auto counting = [sum = 0](int number) mutable { return sum += number; };
  const auto constant = [](int number) { return number + 1; };
  const Block<int(int)> block = twice;
  const auto call = [](FunctionView<int(int)> view) { return view ? view(10) : -1; };
  EXPECT_EQ(call(twice) + call(&twice) + call(block) + call(constant), 71);
  EXPECT_EQ(call(counting) + call(counting), 30) << "the closure itself is called, not a copy";
  EXPECT_EQ(call(nullptr), -1);
}

TEST(NilCallDeathTest, SaysWhatHappened) {
  const Block<int(int)> block = nullptr;
  EXPECT_DEATH(block(1), "^A nil block was called");
  const FunctionView<int(int)> view = block;
  EXPECT_DEATH(view(1), "^A nil block was called");
}

}  // namespace zeb::test
