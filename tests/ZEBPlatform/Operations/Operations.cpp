#include <ZEBPlatform/Dispatch/detail/MainQueue.h>
#include <ZEBPlatform/Operations.h>

#include <csignal>
#include <latch>
#include <regex>
#include <set>

#include "Support/LogRecorder.h"
#include "Support/Support.h"

namespace zeb::test {

using Operations = std::vector<Ref<NSOperation>>;

static Ref<NSOperation> operation(Block<void()> block = [] {}) {
  return NSBlockOperation::blockOperationWithBlock(std::move(block));
}

static Ref<NSOperation> named(const char* name) {
  const auto made = operation();
  made->setName(name);
  return made;
}

/// Letters of what it is: ready, executing, cancelled, finished.
static std::string state(const NSOperation& operation) {
  return std::string(operation.isReady(), 'r') + std::string(operation.isExecuting(), 'e') +
         std::string(operation.isCancelled(), 'c') + std::string(operation.isFinished(), 'f');
}

TEST(NSOperation, RunsOnceAndTellsWhereItIs) {
  std::atomic<int> deaths = 0;
  std::string states;
  Ref<NSOperation> work;
  work = operation([&, probe = makeRef<Probe>(deaths)] {
    states += state(*work);
    EXPECT_NE(raisedText([&] { work->start(); }).find("is executing"), std::string::npos);
  });
  work->setCompletionBlock([&, probe = makeRef<Probe>(deaths)] {
    states += state(*work) + (work->completionBlock() ? "!" : "");
  });
  work->start();
  EXPECT_EQ(deaths, 2) << "both blocks are released";
  work->start();
  work->cancel();
  EXPECT_EQ(states + state(*work), "rerfrcf");
}

TEST(NSOperation, RefusesToBeRunTwice) {
  const auto queue = makeRef<NSOperationQueue>();
  queue->setSuspended(true);
  const auto first = named("first"), second = named("second"), done = named("done");
  second->addDependency(first);
  done->start();
  queue->addOperation(first);
  const std::string error = "NSInvalidArgumentException: ";
  EXPECT_EQ(raisedText([&] { second->start(); }), error + "second is not ready");
  EXPECT_EQ(raisedText([&] { queue->addOperation(first); }), error + "first is on a queue");
  EXPECT_EQ(raisedText([&] { first->start(); }), error + "first is on a queue");
  EXPECT_EQ(raisedText([&] { queue->addOperations({second, done}, false); }),
            error + "done has finished");
  EXPECT_EQ(queue->operationCount(), 1u) << "none of them is added";
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
}

TEST(NSOperation, WaitsForWhatItDependsOn) {
  const auto queue = makeRef<NSOperationQueue>(), otherQueue = makeRef<NSOperationQueue>();
  std::string order;
  const auto first = operation([&] { order += '1'; }), second = operation([&] { order += '2'; }),
             third = operation([&] { order += '3'; }), unneeded = operation(),
             dropped = operation();  // does not wait for what finishes later
  for (const auto& each : {second, first, second, Ref<NSOperation>(), unneeded})
    third->addDependency(each);
  second->addDependency(first);
  queue->addOperations({third, nullptr, second}, false);
  EXPECT_FALSE(third->isReady() || second->isReady());
  for (int i = 0; i < 9; ++i) dropped->addDependency(first);
  dropped->removeDependency(operation());
  dropped->removeDependency(first);
  EXPECT_TRUE(dropped->isReady() && dropped->dependencies().empty());
  operation()->addDependency(first);  // dies at once
  otherQueue->addOperation(first);
  second->waitUntilFinished();
  EXPECT_FALSE(third->isReady());
  third->removeDependency(unneeded);
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(order, "123");
  EXPECT_EQ(third->dependencies(), (Operations{second, first})) << "also when they have finished";
}

TEST(NSOperation, FinishesUnrunWhenCancelled) {
  const auto queue = makeRef<NSOperationQueue>();
  std::atomic<int> runs = 0;
  std::latch completed(1);
  const auto cancelled = operation([&] { ++runs; }), after = operation([&] { runs += 10; });
  cancelled->addDependency(operation());  // never started
  cancelled->setCompletionBlock([&] { completed.count_down(); });
  after->addDependency(cancelled);
  queue->addOperations({after, cancelled}, false);
  EXPECT_FALSE(cancelled->isReady());
  cancelled->cancel();
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_EQ(runs, 10);
  completed.wait();
  EXPECT_EQ(state(*cancelled), "rcf");
}

TEST(NSOperation, LogsPlatformExceptionsAndLetsOthersPass) {
  LogRecorder log;
  const auto queue = makeRef<NSOperationQueue>();
  const auto raising = makeRef<NSBlockOperation>([] { raiseInvalidArgument("no such thing"); });
  const auto several = makeRef<NSBlockOperation>([] {});
  raising->setName("raising");
  several->addExecutionBlock([] { raiseInvalidArgument("either"); });
  several->addDependency(raising);
  queue->addOperations({raising, several}, true);
  ASSERT_EQ(log.lines.size(), 2u);
  EXPECT_EQ(log.lines[0],
            "3|NSOperation|ZEBPlatform/Operations/NSOperation|-[NSOperation main]|exception thrown "
            "in raising: NSInvalidArgumentException: no such thing");

  const auto throwing = operation([] { throw 1; });
  EXPECT_THROW(throwing->start(), int);
  EXPECT_TRUE(throwing->isFinished());
}

TEST(NSOperation, OtherExceptionsEndTheProcessBeforeWaitersReturn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto throwOnQueue = [] {
    const auto throwing = operation([] { throw 1; });
    throwing->setCompletionBlock([] { std::_Exit(0); });
    makeRef<NSOperationQueue>()->addOperations({throwing}, true);
    std::_Exit(0);
  };
  EXPECT_EXIT(throwOnQueue(), testing::KilledBySignal(SIGABRT), "");
  const auto throwing = operation();
  throwing->setCompletionBlock([] { throw 1; });
  EXPECT_EXIT(throwing->start(), testing::KilledBySignal(SIGABRT), "");
}

TEST(NSOperation, ReportsCyclesInsteadOfHanging) {
  const auto queue = makeRef<NSOperationQueue>();
  const auto a = named("a"), b = named("b"), c = named("c"), d = named("d"), outside = named("out");
  const std::string error = "NSInvalidArgumentException: operations wait for each other: ";
  EXPECT_EQ(raisedText([&] { a->addDependency(a); }), error + "a -> a");
  a->addDependency(b);
  b->addDependency(c);
  b->addDependency(d);
  c->addDependency(a);
  d->addDependency(operation());
  outside->addDependency(d);
  outside->addDependency(a);
  for (const auto& [enqueued, cycle] :
       {std::pair(a, "a -> b -> c -> a"), {c, "c -> a -> b -> c"}, {outside, "a -> b -> c -> a"}})
    EXPECT_EQ(raisedText([&] { queue->addOperations({operation(), enqueued}, true); }),
              error + cycle);
  EXPECT_EQ(queue->operationCount(), 0u);
  c->removeDependency(a);
  queue->addOperations({outside, a, b}, false);
  EXPECT_EQ(raisedText([&] { c->addDependency(outside); }), error + "c -> out -> a -> b -> c")
      << "which runs as soon as c and d are enqueued";
  c->addDependency(d);
  queue->addOperations({c, d, d->dependencies()[0]}, false);
  queue->waitUntilAllOperationsAreFinished();
}

/// Every operation waits for later ones; all are reached from the first one that is enqueued.
TEST(NSOperation, LooksThroughLargeGraphsOnce) {
  std::mt19937 random(1);
  constexpr std::size_t count = 20'000;
  Operations operations(count);
  std::size_t left = count;  // plain: each operation waits for the next one
  for (std::size_t i = count; i-- > 0;) {
    operations[i] = operation([&, i] { EXPECT_EQ(--left, i); });
    for (std::size_t edge = 0; edge < 5 && i + 1 < count; ++edge)
      operations[i]->addDependency(operations[edge ? i + 1 + random() % (count - i - 1) : i + 1]);
  }
  makeRef<NSOperationQueue>()->addOperations(operations, true);
  EXPECT_EQ(left, 0u);
}

/// Enqueued operations get dependencies at random; a plain search finds out which of them close a
/// cycle.
TEST(NSOperation, FindsCyclesOfLateDependencies) {
  const auto queue = makeRef<NSOperationQueue>();
  queue->setSuspended(true);
  std::mt19937 random(1);
  Operations operations(150);
  for (auto& each : operations) queue->addOperation(each = operation());
  int refusals = 0;
  for (int step = 0; step < 3000; ++step) {
    const auto &from = operations[random() % 150], &to = operations[random() % 150];
    if (step % 5 == 4) {
      from->removeDependency(to);
      continue;
    }
    std::set<NSOperation*> reached;
    const std::function<void(const Ref<NSOperation>&)> search = [&](const auto& next) {
      if (reached.insert(next.get()).second) std::ranges::for_each(next->dependencies(), search);
    };
    search(to);
    const bool isCycle = reached.contains(from.get());
    ASSERT_EQ(raisedText([&] { from->addDependency(to); }).empty(), !isCycle) << step;
    refusals += isCycle;
  }
  EXPECT_TRUE(refusals > 300 && refusals < 2000) << refusals;
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
}

/// Two chains grow on a queue and then get dependencies on each other step by step, downwards and
/// upwards. If each step searched a whole chain, this would take minutes.
TEST(NSOperation, LateDependenciesCostNoSearchOfAllOthers) {
  const auto queue = makeRef<NSOperationQueue>();
  queue->setSuspended(true);
  constexpr std::size_t count = 30'000;
  Operations one(count), other(count);
  for (Operations* chain : {&one, &other})
    for (auto& each : *chain) queue->addOperation(each = operation());
  for (std::size_t i = 1; i < count; ++i) one[i]->addDependency(one[i - 1]);
  for (std::size_t i = count - 1; i > 0; --i) other[i]->addDependency(other[i - 1]);
  for (std::size_t i = 0; i < count; ++i) one[i]->addDependency(other[i]);
  for (std::size_t i = count / 2; i < count; ++i) other[i]->addDependency(one[i / 2]);
  EXPECT_NE(raisedText([&] { other[0]->addDependency(one.back()); }), "");
  queue->setSuspended(false);
  queue->waitUntilAllOperationsAreFinished();
}

TEST(NSOperation, ChainsOfAnyLengthDieOnASmallStack) {
  std::atomic<int> deaths = 0;
  Ref<NSOperation> last;
  for (int i = 0; i < 100'000; ++i) {
    const auto link = operation([probe = makeRef<Probe>(deaths)] {});
    link->addDependency(std::exchange(last, link));
  }
  runOnSmallStack([&] { last = nullptr; });
  EXPECT_EQ(deaths, 100'000);
}

TEST(NSOperation, RefusesToWaitForEver) {
  const auto serial = makeRef<NSOperationQueue>(), other = makeRef<NSOperationQueue>();
  const auto& mainQueue = NSOperationQueue::mainQueue();
  serial->setMaxConcurrentOperationCount(1);
  serial->setName("serial");
  other->setName("other");
  const auto later = named("later"), onMain = named("on main"), behind = named("behind"),
             between = operation();
  behind->addDependency(between);
  std::string reports;
  // Keeps what differs between the messages.
  const std::regex message(
      "NSGenericException: waiting here for (.*) would never end"
      "(: it waits for [^,]*)?(, for which this thread is needed)?");
  const auto report = [&](const auto& wait) {
    reports += std::regex_replace(raisedText(wait), message, "$1$2") + '\n';
  };
  Ref<NSOperation> asking;
  asking = operation([&] {
    serial->addOperation(later);
    report([&] { serial->waitUntilAllOperationsAreFinished(); });
    for (const auto& needed : {asking, later}) {
      report([&] { needed->waitUntilFinished(); });
      between->addDependency(needed);
      report([&] { behind->waitUntilFinished(); });
      between->removeDependency(needed);
    }
    makeRef<NSOperationQueue>()->addOperations({operation()}, true);
  });
  asking->setName("asking");
  serial->addOperations({asking, nullptr}, true);
  onMain->addDependency(operation());
  mainQueue->addOperation(onMain);
  report([&] { onMain->waitUntilFinished(); });
  report([&] { mainQueue->waitUntilAllOperationsAreFinished(); });
  between->addDependency(onMain);
  report([&] { other->addOperations({behind, between}, true); });
  report([&] { other->waitUntilAllOperationsAreFinished(); });
  EXPECT_EQ(reports,
            "serial\nasking\nbehind: it waits for asking\nlater\nbehind: it waits for later\n"
            "on main\nNSOperationQueue Main Queue\n" +
                between->description() + ": it waits for on main\nother: it waits for on main\n");
  onMain->cancel();
  waitUntil([&] { return onMain->isFinished(); }, "the main queue ran the operation",
            detail::runMainQueue);
  other->waitUntilAllOperationsAreFinished();
}

TEST(NSBlockOperation, RunsItsBlocksAtOnce) {
  std::latch everybody(3);
  const auto several = makeRef<NSBlockOperation>(), none = makeRef<NSBlockOperation>();
  several->addExecutionBlock(nullptr);
  for (int i = 0; i < 3; ++i) several->addExecutionBlock([&] { everybody.arrive_and_wait(); });
  makeRef<NSOperationQueue>()->addOperations({several, none}, true);
  EXPECT_TRUE(everybody.try_wait());
}

TEST(NSInvocationOperation, KeepsWhatTheCallAnswered) {
  struct Adder : NSObject {
    Value next() { return ++sum; }
    int sum = 41;
  };
  const auto adder = makeRef<Adder>();
  const auto make = [](auto... call) { return makeRef<NSInvocationOperation>(call...); };
  const auto method = make(adder, &Adder::next), nothing = make([&] { adder->sum = 0; }),
             raising = make([]() -> Value { raiseRange(3, 2); }),
             cancelled = make([] { return Value(1); }), nilBlock = make(Block<void()>()),
             nilFunction = make(std::function<void()>());
  cancelled->cancel();
  LogRecorder log;
  for (const auto& each : {method, nothing, raising, cancelled, nilBlock, nilFunction})
    each->start();
  EXPECT_EQ(method->result(), 42);
  EXPECT_EQ(adder->sum, 0);
  for (const auto& each : {nothing, nilBlock, nilFunction}) EXPECT_EQ(each->result(), Value());
  EXPECT_EQ(raisedName([&] { raising->result(); }), NSRangeException);
  EXPECT_EQ(raisedName([&] { cancelled->result(); }), NSInvocationOperationCancelledException);
}

/// Ends on another thread than the one that began it.
struct Download final : NSOperation {
  bool isAsynchronous() const noexcept override { return true; }
  void main() override { hasBegun.count_down(); }
  void cancel() override {
    NSOperation::cancel();
    finish();
  }
  using NSOperation::finish;
  std::latch hasBegun{1};
};

TEST(NSOperation, GoesOnAfterMainWhenAsynchronous) {
  const auto queue = makeRef<NSOperationQueue>();
  queue->setMaxConcurrentOperationCount(1);
  const auto download = makeRef<Download>(), cancelled = makeRef<Download>();
  std::atomic<bool> hasRun = false;
  queue->addOperations({download, cancelled, operation([&] { hasRun = true; })}, false);
  cancelled->cancel();  // finishes when its turn comes, and not before
  EXPECT_FALSE(cancelled->isFinished());
  download->hasBegun.wait();
  EXPECT_EQ(state(*download), "re");
  EXPECT_FALSE(hasRun) << "the place is taken";
  for (int time = 0; time < 2; ++time) download->finish();
  queue->waitUntilAllOperationsAreFinished();
  EXPECT_TRUE(hasRun && cancelled->isFinished() && !cancelled->hasBegun.try_wait());
}

}  // namespace zeb::test
