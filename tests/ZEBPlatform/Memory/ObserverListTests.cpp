#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Memory/detail/ObserverIndex.h>

#include "Support/Support.h"

namespace zeb::test {

struct Entry final : detail::ObserverEntry {
  explicit Entry(const Ref<Probe>& itsObserver) : observer(itsObserver) {}
  ~Entry() override { ++ends; }
  bool isDead() const noexcept { return !observer.isAlive(); }
  const WeakRef<Probe> observer;
  static inline int ends = 0;
};
using List = detail::ObserverList<Entry>;
using Index = detail::ObserverIndex<Entry>;

static std::vector<Entry*> active(const List::Snapshot& snapshot) {
  std::vector<Entry*> entries;
  for (const Ref<Entry>& entry : snapshot) {
    if (!entry->isRemoved()) entries.push_back(entry.get());
  }
  return entries;
}

TEST(ObserverList, SnapshotsKeepWhatTheyFoundInTheOrderOfAdding) {
  std::vector<Ref<Entry>> entries;
  std::vector<Entry*> expected;
  List list;
  List::Snapshot half;
  EXPECT_TRUE(list.isEmpty() && active(list.snapshot()).empty());
  for (int i = 0; i < 100; ++i) {
    if (i == 50) half = list.snapshot();
    entries.push_back(makeRef<Entry>(nullptr));
    expected.push_back(entries.back().get());
    (void)list.add(entries.back());
  }
  EXPECT_EQ(active(list.snapshot()), expected);
  expected.resize(50);
  EXPECT_EQ(active(half), expected);

  EXPECT_FALSE(list.remove(*entries[0])) << "a gap";
  expected.erase(expected.begin());
  EXPECT_EQ(active(half), expected) << "removed entries are known as such";
  EXPECT_EQ(std::ranges::distance(list.snapshot()), 100);
  EXPECT_TRUE(list.closeGaps() && !list.closeGaps());
  EXPECT_EQ(std::ranges::distance(list.snapshot()), 99);
  for (std::size_t i = 1; i < entries.size(); ++i) {
    (void)list.remove(*entries[i]);
    EXPECT_LE(std::ranges::distance(list.snapshot()), 2 * static_cast<int>(list.size()));
  }
  EXPECT_TRUE(list.isEmpty());
  entries.clear();
  EXPECT_LE(Entry::ends, 50) << "the snapshot keeps its entries";
  half = {};
  EXPECT_EQ(Entry::ends, 100);
}

TEST(ObserverIndex, FindsTheDeadInTime) {
  std::atomic<int> deaths = 0;
  Index index;
  std::vector<Ref<Entry>> entries;
  const auto living = makeRef<Probe>(deaths);
  std::size_t looks = 0, most = 0;
  for (int i = 0; i < 10'000; ++i) {
    entries.push_back(makeRef<Entry>(i % 10 ? makeRef<Probe>(deaths) : living));
    index.reserve(&index);
    index.add(&index, *entries.back());
    most = std::max(most, index.size());
    if (!index.isRemovalDue()) continue;
    looks += index.size();
    for (Entry* dead : index.deadEntries()) index.remove(*dead);
  }
  EXPECT_LT(most, 2 * 1001 + 16u);
  EXPECT_LT(looks, 20'000u) << "a constant number for each addition";
}

}  // namespace zeb::test
