#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchSource.h>
#include <ZEBPlatform/Operations/NSBlockOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>

#include <chrono>
#include <numeric>

#include "Bench.h"
#include "Growth.h"

namespace zeb::bench {

namespace {

// Timers: all are created, then all are cancelled.

std::vector<std::size_t> makeOrder(std::size_t count) {
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t{0});
  return fromBothEnds(order);
}

/// Different delays, after which this program has ended.
std::chrono::nanoseconds delayOf(std::size_t number) {
  return std::chrono::hours(1) + std::chrono::microseconds(number * 7919 % 1'000'003);
}

void useSources(const std::vector<std::size_t>& order) {
  static const dispatch_queue_t queue = dispatch_queue_create("growth");
  std::vector<dispatch_source_t> sources;
  sources.reserve(order.size());
  for (std::size_t number = 0; number < order.size(); ++number) {
    dispatch_source_t& source = sources.emplace_back(dispatch_source_create_timer(queue));
    dispatch_source_set_timer(source, delayOf(number), std::chrono::nanoseconds::max());
    dispatch_source_set_event_handler(source, [number] { consume(number); });
    dispatch_resume(source);
  }
  for (const std::size_t number : order) dispatch_source_cancel(sources[number]);
}

void useTimers(const std::vector<std::size_t>& order) {
  std::vector<Ref<NSTimer>> timers;
  timers.reserve(order.size());
  for (std::size_t number = 0; number < order.size(); ++number) {
    timers.push_back(NSTimer::scheduledTimerWithTimeInterval(
        delayOf(number), false, [](const Ref<NSTimer>& timer) { consume(timer); }));
  }
  for (const std::size_t number : order) timers[number]->invalidate();
}

const GrowthCase sources(GrowthPlot::scheduling, "timer.dispatch", makeOrder, useSources);
const GrowthCase timers(GrowthPlot::scheduling, "timer.runloop", makeOrder, useTimers);

// Operations: they are created, connected, run and destroyed.

std::vector<Ref<NSOperation>> makeOperations(std::size_t count) {
  std::vector<Ref<NSOperation>> operations;
  operations.reserve(count);
  while (operations.size() < count) {
    operations.push_back(makeRef<NSBlockOperation>([count] { consume(count); }));
  }
  return operations;
}

void runIndependent(std::size_t count) {
  makeRef<NSOperationQueue>()->addOperations(makeOperations(count), true);
}

void runChain(std::size_t count) {
  const std::vector<Ref<NSOperation>> operations = makeOperations(count);
  for (std::size_t number = 1; number < count; ++number) {
    operations[number]->addDependency(operations[number - 1]);
  }
  makeRef<NSOperationQueue>()->addOperations(operations, true);
}

/// All wait for one operation, and another one waits for all.
void runFan(std::size_t count) {
  std::vector<Ref<NSOperation>> operations = makeOperations(count + 2);
  const Ref<NSOperation>& first = operations.front();
  const Ref<NSOperation>& last = operations.back();
  for (std::size_t number = 1; number <= count; ++number) {
    operations[number]->addDependency(first);
    last->addDependency(operations[number]);
  }
  makeRef<NSOperationQueue>()->addOperations(operations, true);
}

const GrowthCase independent(GrowthPlot::scheduling, "operations.independent", sameNumber,
                             runIndependent);
const GrowthCase chain(GrowthPlot::scheduling, "operations.chain", sameNumber, runChain);
const GrowthCase fan(GrowthPlot::scheduling, "operations.fan", sameNumber, runFan);

// Posts: one thread posts all blocks and waits until they have run.

template <DispatchQueueKind kind>
void postToQueue(std::size_t count) {
  static const dispatch_queue_t queue = dispatch_queue_create("growth", kind);
  for (std::size_t number = 0; number < count; ++number) {
    dispatch_async(queue, [number] { consume(number); });
  }
  dispatch_barrier_sync(queue, [] {});
}

void postToRunLoop(std::size_t count) {
  const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  for (std::size_t number = 0; number < count; ++number) {
    loop->performBlock([number] { consume(number); });
  }
  bool isDone = false;
  loop->performBlock([&] { isDone = true; });
  while (!isDone) loop->runUntilDate(nullptr);
}

const GrowthCase serial(GrowthPlot::posts, "post.serial", sameNumber,
                        postToQueue<DispatchQueueKind::serial>);
const GrowthCase concurrent(GrowthPlot::posts, "post.concurrent", sameNumber,
                            postToQueue<DispatchQueueKind::concurrent>);
const GrowthCase runLoop(GrowthPlot::posts, "post.runloop", sameNumber, postToRunLoop);

}  // namespace

}  // namespace zeb::bench
