#include <ZEBPlatform/Dispatch/detail/MainQueue.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Operations.h>

#include <latch>

#include "Support/Storm.h"

namespace zeb::test {

TEST(NSOperationQueue, TakesTheMostImportantFirst) {
  const auto queue = makeRef<NSOperationQueue>();
  queue->setMaxConcurrentOperationCount(1);
  queue->setSuspended(true);
  std::vector<int> order;
  for (const int priority : {0, -8, 4, 8, -4, 0, -100, 100, 3, 8}) {
    const auto operation = makeRef<NSBlockOperation>([&, priority] { order.push_back(priority); });
    operation->setQueuePriority(static_cast<NSOperationQueuePriority>(priority));
    queue->addOperation(operation);
  }
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(order, (std::vector{8, 100, 8, 4, 3, 0, 0, -4, -8, -100}));
}

TEST(NSOperationQueue, RunsAsManyAtOnceAsItMay) {
  const auto queue = makeRef<NSOperationQueue>();
  EXPECT_EQ(raisedName([&] { queue->setMaxConcurrentOperationCount(-2); }),
            NSInvalidArgumentException);
  for (const int limit : {1, 3}) {
    queue->setMaxConcurrentOperationCount(0);
    std::atomic<int> atOnce = 0, ran = 0;
    for (int i = 0; i < 500; ++i) {
      queue->addOperationWithBlock([&, limit] {
        EXPECT_LE(++atOnce, limit);
        std::this_thread::yield();
        --atOnce, ++ran;
      });
    }
    EXPECT_EQ(ran, 0);
    queue->setMaxConcurrentOperationCount(limit);
    queue->waitUntilAllOperationsAreFinished();
    EXPECT_EQ(ran, 500);
  }
  // Without a limit, operations that block do not keep others from running.
  queue->setMaxConcurrentOperationCount(NSOperationQueueDefaultMaxConcurrentOperationCount);
  std::latch all(41);
  for (int i = 0; i < 41; ++i) queue->addOperationWithBlock([&] { all.arrive_and_wait(); });
  queue->waitUntilAllOperationsAreFinished();
}

/// A thread that calls the user's code must not have taken the next operation before.
TEST(NSOperationQueue, RunsWhatCompletionBlocksAndDestructorsWaitFor) {
  struct Waiter : NSOperation {
    ~Waiter() override { awaitNext(); }
    void awaitNext() const {
      waitUntil([this] { return next->isFinished(); }, "another thread runs the next operation");
    }
    const Ref<NSOperation> next = makeRef<NSBlockOperation>([] {});
  };
  const auto queue = makeRef<NSOperationQueue>();
  for (const bool hasBlock : {true, false}) {
    queue->setSuspended(true);
    auto first = makeRef<Waiter>();
    if (hasBlock) first->setCompletionBlock([waiter = first.get()] { waiter->awaitNext(); });
    queue->addOperations({first, first->next}, false);
    if (!hasBlock) first = nullptr;
    queue->setSuspended(false);
    queue->waitUntilAllOperationsAreFinished();
  }
}

TEST(NSOperationQueue, WaitsSuspendedAndOutlivesItsOwner) {
  for (const bool isCancelled : {true, false}) {
    auto queue = makeRef<NSOperationQueue>();
    const WeakRef<NSOperationQueue> weak(queue);
    std::atomic<int> ran = 0;
    queue->setSuspended(true);
    for (int i = 0; i < 100; ++i) queue->addOperationWithBlock([&] { ++ran; });
    queue->addOperationWithBlock(nullptr);
    if (isCancelled) queue->cancelAllOperations();
    EXPECT_TRUE(queue->operations().size() == 100 && ran == 0);
    queue->setSuspended(false);
    queue = nullptr;
    waitUntil([&] { return !weak.lock(); }, "the last operation releases its queue");
    EXPECT_EQ(ran, isCancelled ? 0 : 100);
  }
}

TEST(NSOperationQueue, RunsBarriersAlone) {
  const auto queue = makeRef<NSOperationQueue>();
  std::atomic<int> running = 0, ran = 0;
  for (int step = 1; step <= 2000; ++step) {
    queue->addOperationWithBlock([&] { ++running, std::this_thread::yield(), ++ran, --running; });
    if (step % 50 > 1) continue;
    queue->addBarrierBlock([&, step] { EXPECT_TRUE(running == 0 && ran == step) << step; });
  }
  queue->waitUntilAllOperationsAreFinished();

  queue->setSuspended(true);
  int order = 0;
  for (int pair = 0; pair < 100; ++pair) {
    queue->addOperationWithBlock([&, pair] { EXPECT_EQ(order, pair > 50 ? pair - 1 : pair); });
    queue->addBarrierBlock([&] { ++order; });
  }
  EXPECT_EQ(queue->operations().back()->dependencies().size(), 2u)
      << "each barrier waits for one operation and one barrier";
  const auto cancelled = queue->operations()[2 * 50 + 1];
  cancelled->cancel();
  EXPECT_FALSE(cancelled->isReady()) << "later ones still have to wait for those before it";
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(order, 99);

  const auto earlier = makeRef<NSBlockOperation>(), later = makeRef<NSBlockOperation>();
  earlier->addDependency(later);
  queue->addOperation(earlier);
  queue->addBarrierBlock([] {});
  EXPECT_EQ(raisedName([&] { queue->addOperation(later); }), NSInvalidArgumentException)
      << "it would wait for the barrier, which waits for what waits for it";
  earlier->removeDependency(later);
  queue->waitUntilAllOperationsAreFinished();
}

TEST(NSOperationQueue, KnowsWhereItRuns) {
  const auto queue = makeRef<NSOperationQueue>();
  queue->setUnderlyingQueue(dispatch_queue_create("serial"));
  queue->setSuspended(true);
  int order = 0;
  const auto look = [&] { EXPECT_EQ(NSOperationQueue::currentQueue(), queue); };
  for (int i = 0; i < 10; ++i) {
    queue->addOperationWithBlock([&, i] {
      makeRef<NSBlockOperation>(look)->start();
      EXPECT_EQ(order++, i) << "the underlying queue is serial";
    });
  }
  for (const dispatch_queue_t& other : {dispatch_queue_t(), dispatch_get_main_queue()})
    EXPECT_EQ(raisedName([&] { queue->setUnderlyingQueue(other); }), NSInvalidArgumentException);
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();

  const auto& mainQueue = NSOperationQueue::mainQueue();
  mainQueue->setSuspended(true);
  mainQueue->setMaxConcurrentOperationCount(8);
  EXPECT_TRUE(mainQueue->maxConcurrentOperationCount() == 1 && !mainQueue->isSuspended());
  EXPECT_EQ(NSOperationQueue::currentQueue(), mainQueue);
  std::thread([&] {
    EXPECT_FALSE(NSOperationQueue::currentQueue());
    mainQueue->addOperationWithBlock(
        [&] { EXPECT_EQ(NSOperationQueue::currentQueue(), mainQueue); });
  }).join();
  waitUntil([&] { return mainQueue->operationCount() == 0; }, "the main queue is empty",
            detail::runMainQueue);
}

/// Graphs over two queues. While they start, their operations are cancelled, waited for and
/// released, and dependencies are added and removed.
TEST(NSOperationQueue, StandsAStorm) {
  std::atomic<int> deaths = 0, made = 0, completions = 0;
  storm(4, [&](int, std::mt19937& random) {
    const Ref<NSOperationQueue> queues[]{makeRef<NSOperationQueue>(), makeRef<NSOperationQueue>()};
    queues[1]->setMaxConcurrentOperationCount(2);
    for (int round = 0; round < 20; ++round) {
      std::vector<Ref<NSOperation>> graph(60);
      for (std::size_t i = 0; i < 60; ++i, ++made) {
        graph[i] = makeRef<NSBlockOperation>([probe = makeRef<Probe>(deaths)] {});
        graph[i]->setCompletionBlock([&completions] { ++completions; });
        for (int edge = 0; edge < 3 && i > 0; ++edge) graph[i]->addDependency(graph[random() % i]);
      }
      std::jthread disturber([&, choice = random]() mutable {
        for (int step = 0; step < 60; ++step) {
          const std::size_t i = 1 + choice() % 59;
          if (step % 3 == 0) graph[i]->cancel();
          if (step % 3 == 1) graph[i]->removeDependency(graph[choice() % i]);
          if (step % 3 == 2) graph[i]->addDependency(graph[choice() % i]);
          if (step % 10 == 0) queues[0]->setSuspended(step % 20 == 0);
          if (step % 10 == 5) queues[1]->setMaxConcurrentOperationCount(1 + step % 3);
        }
      });
      for (std::size_t i = graph.size(); i-- > 0;) queues[random() % 2]->addOperation(graph[i]);
      if (round % 4 == 0) queues[0]->addBarrierBlock([] {});
      disturber.join();
      graph[random() % 60]->waitUntilFinished();
    }
    for (const auto& queue : queues) queue->waitUntilAllOperationsAreFinished();
  });
  waitUntil([&] { return completions == made && deaths == made; },
            "all operations have completed and are released");
}

}  // namespace zeb::test
