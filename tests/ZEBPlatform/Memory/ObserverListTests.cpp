#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Memory/detail/ObserverIndex.h>

#include "Support/Storm.h"

namespace zeb::test {
namespace {

struct Entry final : detail::ObserverEntry {
  explicit Entry(
      const Ref<Probe>& itsObserver, std::function<void()> itsEnd = [] {})
      : observer(itsObserver), end(std::move(itsEnd)) {}
  ~Entry() override { end(); }
  bool isDead() const noexcept { return !observer.isAlive(); }
  const WeakRef<Probe> observer;
  const std::function<void()> end;
};
using List = detail::ObserverList<Entry>;
using Index = detail::ObserverIndex<Entry>;

std::vector<Entry*> active(const List::Snapshot& snapshot) {
  std::vector<Entry*> entries;
  for (const Ref<Entry>& entry : snapshot) {
    if (!entry->isRemoved()) entries.push_back(entry.get());
  }
  return entries;
}

TEST(ObserverList, SnapshotsKeepWhatTheyFoundInTheOrderOfAdding) {
  std::atomic<int> ends = 0;
  std::vector<Ref<Entry>> entries;
  std::vector<Entry*> expected;
  List list;
  List::Snapshot half;
  EXPECT_TRUE(list.isEmpty() && active(list.snapshot()).empty());
  for (int i = 0; i < 100; ++i) {
    if (i == 50) half = list.snapshot();
    entries.push_back(makeRef<Entry>(nullptr, [&] { ++ends; }));
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
  EXPECT_LE(ends, 50) << "the snapshot keeps its entries";
  half = List::Snapshot();
  EXPECT_EQ(ends, 100);
}

TEST(ObserverIndex, FindsEntriesByOwnerAndTheDeadInTime) {
  std::atomic<int> deaths = 0;
  const int owners[2] = {};
  Index index;
  std::vector<Ref<Entry>> entries;
  const auto living = makeRef<Probe>(deaths);
  const auto add = [&](const int& owner, const Ref<Probe>& observer) {
    entries.push_back(makeRef<Entry>(observer));
    index.reserve(&owner);
    index.add(&owner, *entries.back());
  };
  for (int i = 0; i < 4; ++i) add(owners[i % 2], living);
  EXPECT_EQ(index.olderThan(*entries[2]), entries[0].get());
  EXPECT_EQ(index.ownerOf(*entries[2]), &owners[0]);
  for (const std::size_t newest : {2u, 0u}) {
    EXPECT_EQ(index.newestOf(&owners[0]), entries[newest].get());
    index.remove(*entries[newest]);
  }
  EXPECT_TRUE(!index.newestOf(&owners[0]) && index.countOf(&owners[0]) == 0);
  index.remove(*entries[1]);
  EXPECT_TRUE(index.newestOf(&owners[1]) == entries[3].get() && index.countOf(&owners[1]) == 1);

  std::size_t looks = 0, most = 0;
  for (int i = 0; i < 10'000; ++i) {
    add(owners[0], i % 10 ? makeRef<Probe>(deaths) : living);
    most = std::max(most, index.size());
    if (!index.isRemovalDue()) continue;
    looks += index.size();
    for (Entry* dead : index.deadEntries()) index.remove(*dead);
  }
  EXPECT_LT(most, 2 * 1001 + 16u);
  EXPECT_LT(looks, 20'000u) << "a constant number for each addition";
}

/// The threads share one list under one lock, and read it without. The end of an entry takes the
/// lock: an entry that ended with the lock held would hang.
TEST(ObserverList, StandsThreadsThatAddRemoveIterateAndDestroy) {
  std::atomic<int> made = 0, ends = 0, deaths = 0, found = 0;
  {
    detail::Lock lock;
    List list;
    Index index;
    const auto end = [&] {
      const detail::LockGuard guard(lock);
      ++ends;
    };
    storm(4, [&](int, std::mt19937& random) {
      std::vector<Ref<Probe>> mine;
      for (int step = 0; step < 10'000; ++step) {
        std::vector<Ref<Entry>> removed;
        std::vector<Ref<List::Array>> replaced;
        List::Snapshot snapshot;
        const auto remove = [&](Entry* entry) {
          removed.emplace_back(entry);
          index.remove(*entry);
          replaced.push_back(list.remove(*entry));
        };
        const auto action = random() % 4;
        if (action == 0) {
          ++made;
          mine.push_back(makeRef<Probe>(deaths));
          auto entry = makeRef<Entry>(mine.back(), end);
          const detail::LockGuard guard(lock);
          if (index.isRemovalDue()) std::ranges::for_each(index.deadEntries(), remove);
          index.reserve(mine.back().get());
          index.add(mine.back().get(), *entry);
          replaced.push_back(list.add(std::move(entry)));
        } else if (action == 1 && !mine.empty()) {
          const detail::LockGuard guard(lock);
          Entry* entry = index.newestOf(mine[random() % mine.size()].get());
          if (entry && !entry->isDead()) remove(entry);
        } else if (action == 2 && mine.size() > 8) {
          mine.erase(mine.begin(), mine.begin() + 6);
        } else if (action == 3) {
          const detail::LockGuard guard(lock);
          if (random() % 4 == 0) replaced.push_back(list.closeGaps());
          snapshot = list.snapshot();
        }
        for (const Ref<Entry>& entry : snapshot) {
          const Ref<Probe> observer = entry->isRemoved() ? nullptr : entry->observer.lock();
          EXPECT_TRUE(!observer || observer->isAlive);
          found += observer != nullptr;
        }
      }
    });
    EXPECT_EQ(deaths, made);
    for (Entry* dead : index.deadEntries()) {
      index.remove(*dead);
      (void)list.remove(*dead);
    }
    EXPECT_TRUE(list.isEmpty() && index.size() == 0);
  }
  EXPECT_GT(found, 1000);
  EXPECT_EQ(ends, made);
}

}  // namespace
}  // namespace zeb::test
