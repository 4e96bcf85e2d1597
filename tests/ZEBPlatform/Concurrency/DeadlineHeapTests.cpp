#include <ZEBPlatform/Concurrency/detail/DeadlineHeap.h>
#include <ZEBPlatform/Concurrency/detail/RepeatGrid.h>
#include <ZEBPlatform/Concurrency/detail/Seconds.h>
#include <gtest/gtest.h>

#include <random>

namespace zeb::test {

TEST(DeadlineHeap, AnswersInOrderAfterMovesAndRemovals) {
  std::mt19937 random(3);
  std::vector<detail::DeadlineNode> nodes(10'000);
  detail::DeadlineHeap heap;
  for (auto& node : nodes) {
    node.deadline = random() % 5000;
    heap.put(node);
  }
  for (std::size_t index = 0; index < nodes.size(); index += 3) {
    nodes[index].deadline = random() % 5000;
    heap.put(nodes[index]);
    heap.remove(nodes[index + (index + 1 < nodes.size())]);
  }
  std::vector<std::uint64_t> expected;
  for (const auto& node : nodes) {
    if (node.isInHeap()) expected.push_back(node.deadline);
  }
  std::sort(expected.begin(), expected.end());
  std::vector<std::uint64_t> taken;
  while (const auto* node = heap.takeDue(4000)) taken.push_back(node->deadline);
  EXPECT_GT(heap.nextWakeUp(), 4000u);
  while (const auto* node = heap.takeDue(5000)) taken.push_back(node->deadline);
  EXPECT_EQ(taken, expected);
  EXPECT_EQ(heap.nextWakeUp(), UINT64_MAX);
}

TEST(DeadlineHeap, WakesUpOnceForAllWhoseLeewayOverlaps) {
  std::vector<detail::DeadlineNode> nodes(3);
  detail::DeadlineHeap heap;
  for (const std::size_t index : {0u, 1u, 2u}) {
    nodes[index].deadline = 100 + index;
    nodes[index].leeway = index == 2 ? UINT64_MAX : 50 - 10 * index;
    heap.put(nodes[index]);
  }
  EXPECT_EQ(heap.nextWakeUp(), 141u) << "the earliest end of a leeway";
  while (heap.takeDue(141)) continue;
  EXPECT_TRUE(heap.isEmpty());
}

TEST(RepeatGrid, SkipsMissedPointsAndEndsWithTheClock) {
  EXPECT_EQ(detail::intervalsToNextPoint(100, 10, 109), 1u);
  EXPECT_EQ(detail::intervalsToNextPoint(100, 10, 110), 2u);
  EXPECT_EQ(detail::intervalsToNextPoint(UINT64_MAX - 25, 10, UINT64_MAX - 16), 1u);
  EXPECT_EQ(detail::intervalsToNextPoint(UINT64_MAX - 5, 10, UINT64_MAX - 5), 0u);
}

TEST(Seconds, AreLimitedToWhatNanosecondsCanCount) {
  using namespace std::chrono;
  EXPECT_EQ(detail::nanosecondsIn(-1.5), -1'500'000'000);
  EXPECT_EQ(detail::nanosecondsIn(NAN), 0);
  EXPECT_EQ(detail::nanosecondsIn(1e300), INT64_MAX);
  EXPECT_EQ(detail::nanosecondsIn(-1e300), -INT64_MAX);
  constexpr std::int64_t exact = 9'000'000'000'000'000'001;
  EXPECT_EQ(detail::nanosecondsIn(nanoseconds(exact)), exact);
  EXPECT_EQ(detail::nanosecondsIn(duration<float, std::milli>(0.5f)), 500'000);
  EXPECT_EQ(detail::nanosecondsIn(hours::max()), INT64_MAX);
  EXPECT_EQ(detail::nanosecondsIn(hours::min()), -INT64_MAX);
  EXPECT_EQ(detail::ticksIn(milliseconds(-1)), 0u);
  EXPECT_EQ(detail::ticksIn(2.0), 2'000'000'000u);
  EXPECT_EQ(detail::ticksIn(nanoseconds::max()), UINT64_MAX);
}

}  // namespace zeb::test
