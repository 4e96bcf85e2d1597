#include <ZEBPlatform/Concurrency/detail/SnapshotPointer.h>

#include "Support/Storm.h"

namespace zeb::test {

using Shared = detail::SnapshotPointer<Ref<Probe>>;

TEST(SnapshotPointer, CountsMorePinsThanItsWordHoldsAndEndsWithTheLast) {
  std::atomic<int> deaths = 0;
  Shared shared;
  constexpr std::size_t many = 100'000;
  for (std::size_t i = 0; i < many; ++i) EXPECT_FALSE(shared.pin() || shared.get()) << "empty";
  EXPECT_FALSE(shared.replace(makeRef<Probe>(deaths)));
  for (std::size_t i = 0; i < many; ++i) EXPECT_EQ(&*shared.pin(), shared.get());
  std::vector<Shared::Pin> pins;
  for (std::size_t i = 0; i < many; ++i) pins.push_back(shared.pin());
  Shared::Pin replaced = shared.replace(makeRef<Probe>(deaths));
  EXPECT_EQ(&*replaced, &*pins.front());
  (void)shared.clear();
  EXPECT_EQ(deaths, 1) << "the second, which nobody had pinned";
  EXPECT_FALSE(shared.pin());
  pins.clear();
  EXPECT_TRUE((*replaced)->isAlive);
  replaced = Shared::Pin();
  EXPECT_EQ(deaths, 2);
}

TEST(SnapshotPointer, DestroysEachSnapshotOnceUnderReadersAndWriters) {
  std::atomic<int> deaths = 0, made = 0;
  {
    Shared shared;
    storm(4, [&](int thread, std::mt19937&) {
      Shared::Pin pins[3];
      for (int round = 0; round < 60'000; ++round) {
        Shared::Pin& pin = pins[round % 3] = shared.pin();
        EXPECT_TRUE(!pin || (*pin)->isAlive);
        if (thread < 2 || round % 16) continue;
        ++made;
        (void)shared.replace(makeRef<Probe>(deaths));
      }
    });
    EXPECT_EQ(made - deaths, 1) << "nothing but the current one is left";
  }
  EXPECT_EQ(deaths, made);
}

}  // namespace zeb::test
