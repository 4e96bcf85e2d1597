#include <ZEBPlatform/Concurrency/detail/WorkList.h>

#include <set>

#include "Support/Storm.h"

namespace zeb::test {

using namespace detail;

struct Ticket {
  int producer = 0, number = 0;
};
static thread_local Ticket lastRun;

/// Uses blocks while the thread's other local objects are being destroyed.
struct AtThreadEnd {
  ~AtThreadEnd() {
    for (WorkItem* item : {early, newWorkItem([] {})}) {
      item->discard();
      item->dispose();
    }
  }
  WorkItem* early = nullptr;
};

TEST(WorkList, GivesEachItemToOneConsumerInItsProducersOrder) {
  constexpr int perProducer = 50'000;
  const auto captured = std::make_shared<int>(0);
  WorkList list;
  std::atomic<int> left = 2 * perProducer, outOfOrder = 0;
  storm(4, [&](int thread, std::mt19937&) {
    if (thread < 2) {
      thread_local AtThreadEnd atEnd;
      atEnd.early = newWorkItem([captured] {});
      for (int number = 1; number <= perProducer; ++number)
        list.push(*newWorkItem([captured, thread, number] { lastRun = {thread, number}; }));
      return;
    }
    int last[2] = {};
    while (left > 0) {
      WorkItem* item = list.pop();
      if (!item) continue;
      item->run();
      item->dispose();
      outOfOrder += lastRun.number <= std::exchange(last[lastRun.producer], lastRun.number);
      --left;
    }
  });
  EXPECT_TRUE(list.isEmpty() && !list.pop() && left == 0);
  EXPECT_EQ(outOfOrder, 0);
  EXPECT_EQ(captured.use_count(), 1);
}

TEST(WorkItem, KeepsTheAlignmentOfItsClosureAndDestroysItOnce) {
  struct alignas(128) Wide {
    std::shared_ptr<int> captured;
    void operator()() const { ++*captured; }
  };
  const auto captured = std::make_shared<int>(0);
  for (const bool runs : {true, false}) {
    WorkItem* item = newWorkItem(Wide{captured});
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(item) % 128, 0u);
    runs ? item->run() : item->discard();
    EXPECT_EQ(captured.use_count(), 1) << "the closure ends before the item";
    item->dispose();
  }
  EXPECT_EQ(*captured, 1);
}

TEST(WorkItemMemory, TakesHardlyMoreThanItsBlocks) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "Sanitizers get each block from the general allocator.";
#endif
  constexpr std::size_t pages = 3000;
  std::vector<void*> blocks;
  std::set<std::uintptr_t> used;
  while (used.size() < pages) {
    blocks.push_back(WorkItemMemory::allocate());
    used.insert(reinterpret_cast<std::uintptr_t>(blocks.back()) / 4096);
  }
  // A page with another one directly behind it has lost nothing to alignment.
  std::size_t adjacent = 0;
  for (const std::uintptr_t page : used) adjacent += used.contains(page + 1);
  EXPECT_GE(adjacent, pages * 9 / 10);
  for (void* block : blocks) WorkItemMemory::free(block);
}

}  // namespace zeb::test
