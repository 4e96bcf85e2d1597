#include <Dispatch/MainQueue.h>
#include <Memory/WeakRef.h>
#include <RunLoop/NSBlockOperation.h>
#include <RunLoop/NSOperationQueue.h>
#include <gtest/gtest.h>

#include <latch>
#include <semaphore>
#include <thread>

#include "../Support.h"

namespace zeb {
namespace {

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
  EXPECT_EQ(queue->operationCount(), 10u);
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(order, (std::vector{8, 100, 8, 4, 3, 0, 0, -4, -8, -100}));
}

TEST(NSOperationQueue, RunsAsManyAtOnceAsItMay) {
  const auto queue = makeRef<NSOperationQueue>();
  EXPECT_EQ(test::raisedName([&] { queue->setMaxConcurrentOperationCount(-2); }),
            NSInvalidArgumentException);
  for (const int limit : {0, 1, 3}) {
    queue->setMaxConcurrentOperationCount(limit);
    std::atomic<int> atOnce = 0, most = 0, ran = 0;
    for (int i = 0; i < 500; ++i) {
      queue->addOperationWithBlock([&] {
        int now = ++atOnce;
        for (int seen = most; seen < now && !most.compare_exchange_weak(seen, now);) {
        }
        std::this_thread::yield();
        --atOnce;
        ++ran;
      });
    }
    if (limit == 0) {
      EXPECT_EQ(ran, 0);
      queue->setMaxConcurrentOperationCount(2);
    }
    queue->waitUntilAllOperationsAreFinished();
    EXPECT_EQ(ran, 500);
    EXPECT_LE(most, limit == 0 ? 2 : limit);
  }
}

/// Each one waits for the one that was added after it.
TEST(NSOperationQueue, BlockedOperationsDoNotStarveOthers) {
  const auto queue = makeRef<NSOperationQueue>();
  std::vector<std::unique_ptr<std::binary_semaphore>> done;
  for (int i = 0; i <= 40; ++i) done.push_back(std::make_unique<std::binary_semaphore>(0));
  for (std::size_t i = 0; i < 40; ++i) {
    queue->addOperationWithBlock([&, i] {
      done[i + 1]->acquire();
      done[i]->release();
    });
  }
  queue->addOperationWithBlock([&] { done[40]->release(); });
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(done[0]->try_acquire());
}

TEST(NSOperationQueue, WaitsSuspendedAndOutlivesItsOwner) {
  auto queue = makeRef<NSOperationQueue>();
  std::atomic<int> ran = 0;
  std::latch last(100);
  queue->setSuspended(true);
  EXPECT_TRUE(queue->isSuspended());
  for (int i = 0; i < 100; ++i) {
    queue->addOperationWithBlock([&] {
      ++ran;
      last.count_down();
    });
  }
  EXPECT_EQ(queue->operations().size(), 100u);
  EXPECT_EQ(ran, 0);
  const WeakRef<NSOperationQueue> weak(queue);
  queue->setSuspended(false);
  queue = nullptr;
  last.wait();
  while (weak.lock()) std::this_thread::yield();  // it goes when the last operation has gone
}

TEST(NSOperationQueue, CancelsAll) {
  const auto queue = makeRef<NSOperationQueue>();
  queue->setSuspended(true);
  std::atomic<int> ran = 0;
  for (int i = 0; i < 10; ++i) queue->addOperationWithBlock([&] { ++ran; });
  queue->addOperation(nullptr);
  queue->addOperationWithBlock(nullptr);
  queue->cancelAllOperations();
  EXPECT_EQ(queue->operationCount(), 10u);
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(ran, 0);
}

TEST(NSOperationQueue, RunsBarriersAlone) {
  const auto queue = makeRef<NSOperationQueue>();
  std::atomic<int> running = 0, ran = 0;
  std::vector<int> ranBefore;
  const auto add = [&] {
    for (int i = 0; i < 50; ++i) {
      queue->addOperationWithBlock([&] {
        ++running;
        std::this_thread::yield();
        ++ran;
        --running;
      });
    }
  };
  for (int round = 0; round < 20; ++round) {
    add();
    for (int barrier = 0; barrier < 2; ++barrier) {
      queue->addBarrierBlock([&] {
        EXPECT_EQ(running, 0);
        ranBefore.push_back(ran);
      });
    }
  }
  queue->waitUntilAllOperationsAreFinished();
  ASSERT_EQ(ranBefore.size(), 40u);
  for (std::size_t round = 0; round < 40; ++round)
    EXPECT_EQ(ranBefore[round], 50 * (int(round) / 2 + 1));

  const auto earlier = makeRef<NSBlockOperation>(), later = makeRef<NSBlockOperation>();
  earlier->addDependency(later);
  queue->addOperation(earlier);
  queue->addBarrierBlock([] {});
  EXPECT_EQ(test::raisedName([&] { queue->addOperation(later); }), NSInvalidArgumentException)
      << "it would wait for the barrier, which waits for what waits for it";
  earlier->removeDependency(later);
  queue->waitUntilAllOperationsAreFinished();
}

TEST(NSOperationQueue, KnowsWhereItRuns) {
  const auto queue = makeRef<NSOperationQueue>();
  const auto underlying = dispatch_queue_create("underlying");
  queue->setUnderlyingQueue(underlying);
  EXPECT_EQ(queue->underlyingQueue(), underlying);
  EXPECT_EQ(test::raisedName([&] { queue->setUnderlyingQueue(dispatch_get_main_queue()); }),
            NSInvalidArgumentException);
  queue->setSuspended(true);
  int order = 0;
  for (int i = 0; i < 10; ++i) {
    queue->addOperationWithBlock([&, i] {
      EXPECT_EQ(NSOperationQueue::currentQueue(), queue);
      makeRef<NSBlockOperation>([&] {
        EXPECT_EQ(NSOperationQueue::currentQueue(), queue);
      })->start();
      EXPECT_EQ(order++, i) << "the underlying queue is serial";
    });
  }
  EXPECT_EQ(test::raisedName([&] { queue->setUnderlyingQueue(nullptr); }),
            NSInvalidArgumentException);
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
  queue->setUnderlyingQueue(nullptr);
  queue->setQualityOfService(NSQualityOfServiceUserInitiated);
  const auto background = makeRef<NSBlockOperation>([] {});
  background->setQualityOfService(NSQualityOfServiceBackground);
  queue->addOperations({background}, true);

  const auto& mainQueue = NSOperationQueue::mainQueue();
  EXPECT_EQ(NSOperationQueue::currentQueue(), mainQueue);
  std::thread([] { EXPECT_FALSE(NSOperationQueue::currentQueue()); }).join();
  mainQueue->setSuspended(true);
  mainQueue->setMaxConcurrentOperationCount(8);
  EXPECT_EQ(mainQueue->maxConcurrentOperationCount(), 1);
  std::thread([&] {
    for (int i = 0; i < 3; ++i) {
      mainQueue->addOperationWithBlock(
          [&] { EXPECT_EQ(NSOperationQueue::currentQueue(), mainQueue); });
    }
  }).join();
  EXPECT_EQ(mainQueue->operationCount(), 3u);
  while (mainQueue->operationCount() > 0) detail::runMainQueue();
}

/// Graphs over two queues whose operations are cancelled, freed of dependencies, waited for and dropped
/// while they start.
TEST(NSOperationQueue, StandsAStorm) {
  std::atomic<int> deaths = 0, made = 0, completions = 0;
  {
    const auto storm = [&](unsigned seed) {
      std::mt19937 random(seed);
      const Ref<NSOperationQueue> queues[] = {makeRef<NSOperationQueue>(),
                                              makeRef<NSOperationQueue>()};
      queues[1]->setMaxConcurrentOperationCount(2);
      for (int round = 0; round < 20; ++round) {
        std::vector<Ref<NSOperation>> graph;
        for (std::size_t i = 0; i < 60; ++i) {
          ++made;
          graph.push_back(makeRef<NSBlockOperation>(
              [probe = makeRef<test::Probe>(deaths)] { EXPECT_TRUE(probe->isAlive); }));
          graph[i]->setCompletionBlock([&completions] { ++completions; });
          for (int edge = 0; edge < 3 && i > 0; ++edge)
            graph[i]->addDependency(graph[random() % i]);
        }
        std::thread disturber([&graph, &queues, seed] {
          std::mt19937 choice(seed + 100);
          for (int step = 0; step < 60; ++step) {
            const std::size_t i = 1 + choice() % 59;
            if (step % 3 == 0) graph[i]->cancel();
            if (step % 3 == 1) graph[i]->removeDependency(graph[choice() % i]);
            if (step % 3 == 2) graph[i]->addDependency(graph[choice() % i]);
            if (step % 10 == 0) queues[0]->setSuspended(step % 20 == 0);
            if (step % 10 == 5) queues[1]->setMaxConcurrentOperationCount(1 + step % 3);
          }
          queues[0]->setSuspended(false);
        });
        for (std::size_t i = graph.size(); i-- > 0;) queues[random() % 2]->addOperation(graph[i]);
        if (round % 4 == 0) queues[0]->addBarrierBlock([] {});
        disturber.join();
        graph[random() % 60]->waitUntilFinished();
      }
      for (const auto& queue : queues) queue->waitUntilAllOperationsAreFinished();
    };
    std::vector<std::thread> threads;
    for (unsigned seed = 1; seed <= 4; ++seed) threads.emplace_back(storm, seed);
    for (std::thread& thread : threads) thread.join();
  }
  while (completions < made || deaths < made) std::this_thread::yield();
}

}  // namespace
}  // namespace zeb
