#include <ZEBPlatform/Concurrency/detail/SnapshotPointer.h>

#include "Support/Storm.h"

namespace zeb::test {

using Shared = detail::SnapshotPointer<Ref<Probe>>;

TEST(SnapshotPointer, DestroysEachSnapshotWithItsOwnLastPin) {
  std::atomic<int> deaths = 0;
  {
    Shared shared;
    EXPECT_FALSE(shared.pin() || shared.get());
    Shared::Pin first, before;
    for (int round = 0; round < 100; ++round) {
      Shared::Pin replaced = shared.replace(makeRef<Probe>(deaths));
      if (round == 1) first = std::move(replaced);
      before = shared.pin();
      EXPECT_EQ(&*before, shared.get());
    }
    EXPECT_EQ(deaths, 98) << "all but the current one and the pinned one";
    EXPECT_TRUE((*first)->isAlive);
    first = Shared::Pin();
    EXPECT_EQ(deaths, 99);
  }
  EXPECT_EQ(deaths, 100);
}

TEST(SnapshotPointer, CountsMorePinsThanItsWordHolds) {
  std::atomic<int> deaths = 0;
  Shared shared;
  constexpr std::size_t many = 100'000;
  for (std::size_t i = 0; i < many; ++i) EXPECT_FALSE(shared.pin()) << "empty";
  (void)shared.replace(makeRef<Probe>(deaths));
  for (std::size_t i = 0; i < many; ++i) EXPECT_TRUE(shared.pin());
  std::vector<Shared::Pin> pins;
  for (std::size_t i = 0; i < many; ++i) pins.push_back(shared.pin());
  (void)shared.replace(makeRef<Probe>(deaths));
  (void)shared.clear();
  EXPECT_EQ(deaths, 1) << "the second, which nobody had pinned";
  EXPECT_FALSE(shared.pin());
  while (pins.size() > 1) pins.pop_back();
  EXPECT_TRUE((*pins.front())->isAlive);
  pins.clear();
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
