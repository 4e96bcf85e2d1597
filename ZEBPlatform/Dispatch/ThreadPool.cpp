#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Concurrency/detail/Spin.h>
#include <ZEBPlatform/Dispatch/ThreadPoolPrivate.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace zeb::detail {

namespace {

/// A thread tests this often for work before it sleeps. That takes less time than the sleep and the
/// wake-up that it saves.
constexpr int maxSpins = 2000;
/// A thread beyond the number of processors ends after this time without work, in nanoseconds.
constexpr std::uint64_t surplusLifetime = 5'000'000'000;
/// While work waits, the watcher examines the threads after each such interval.
constexpr std::chrono::milliseconds watchInterval{5};
/// Examining hundreds of threads takes long. Examinations without a result are this many times
/// their own duration apart, so that they take at most a twentieth of a processor.
constexpr int minIdleRatio = 20;

}  // namespace

constinit Lock ThreadPool::lock;
constinit thread_local ThreadPool::Worker* ThreadPool::currentWorker = nullptr;

ThreadPool& ThreadPool::shared() {
  static NeverDestroyed<ThreadPool> pool;
  return *pool;
}

ThreadPool::ThreadPool() : processors_(usableProcessorCount()) {
  {
    const LockGuard guard(lock);
    ordinary_.workers.reserve(maxThreads);
    reserve_.workers.reserve(maxThreads);
  }
  const auto watch = [](void* pool) { static_cast<ThreadPool*>(pool)->watch(); };
  // Without a watcher the pool only knows of waits of this library.
  if (!startServiceThread("zeb-pool-watch", watch, this)) isWatched_ = true;
}

// No wake-up is lost because of the order of sequentially consistent operations: a producer first
// appends its item and then tests for threads that look for work; a thread first records that it
// stops looking and then tests for work once more.
void ThreadPool::submit(WorkItem& item, Urgency urgency) {
  waiting_[static_cast<std::size_t>(urgency)].push(item);
  wakeOrGrow();
}

void ThreadPool::submitAwaited(WorkItem& item) {
  awaited_.push(item);
  wakeOrGrow();
}

bool ThreadPool::hasWaitingWork() const noexcept {
  return hasAwaitedWork() || std::any_of(waiting_.begin(), waiting_.end(),
                                         [](const WorkList& list) { return !list.isEmpty(); });
}

bool ThreadPool::hasWorkFor(const WorkerGroup& group) const noexcept {
  return &group == &reserve_ ? hasAwaitedWork() : hasWaitingWork();
}

void ThreadPool::wakeOrGrow() {
  if (spinning_.load(std::memory_order_seq_cst) > 0) return;
  if (wake(ordinary_) || growIfShort(ordinary_)) return;
  if (hasAwaitedWork() && !wake(reserve_)) growIfShort(reserve_);
  // All threads are busy, or blocked in ways that the pool does not know of.
  watchWaitingWork();
}

/// Makes the watcher look after the work that waits. Every thread that takes one of several items
/// calls this: it may block in its item, and the thread that was woken last relies on it.
void ThreadPool::watchWaitingWork() {
  if (isWatched_.load() || !mayRunMore() || isWatched_.exchange(true)) return;
  const LockGuard guard(watchLock_);
  watch_.notifyOne();
}

/// Answers whether a thread slept and was woken.
bool ThreadPool::wake(WorkerGroup& group) {
  if (group.sleeping.load(std::memory_order_seq_cst) == 0) return false;
  const LockGuard guard(lock);
  Worker* const worker = group.lastSleeper;
  if (!worker) return false;
  group.lastSleeper = worker->nextSleeper;
  group.sleeping.fetch_sub(1, std::memory_order_seq_cst);
  worker->isWoken = true;
  worker->wake.notifyOne();
  return true;
}

/// Answers whether a thread was missing and was started.
bool ThreadPool::growIfShort(WorkerGroup& group) {
  std::size_t threads = group.threads.load(std::memory_order_relaxed);
  do {
    const std::size_t blocked = group.blocked.load(std::memory_order_seq_cst);
    if (threads >= std::min(maxThreads, processors_ + blocked)) return false;
  } while (!group.threads.compare_exchange_weak(threads, threads + 1, std::memory_order_relaxed));
  return startThread(group);
}

/// Starts a thread that the group counts already. Answers false if the system refuses.
bool ThreadPool::startThread(WorkerGroup& group) {
  const auto work = [](void* ofGroup) { shared().work(*static_cast<WorkerGroup*>(ofGroup)); };
  if (startServiceThread(&group == &reserve_ ? "zeb-reserve" : "zeb-pool", work, &group))
    return true;
  // The work waits for the threads that exist.
  if (group.threads.fetch_sub(1, std::memory_order_relaxed) == 1 && &group == &ordinary_) {
    fatal("No thread is left to run queued work.");
  }
  return false;
}

/// Whether work waits that a sleeping thread or a new one within the limit could run. Otherwise the
/// watcher has nothing to do: the work waits until a thread takes it.
bool ThreadPool::mayRunMore() const noexcept {
  const auto mayRunMore = [this](const WorkerGroup& group) {
    return (group.threads.load(std::memory_order_seq_cst) < maxThreads ||
            group.sleeping.load(std::memory_order_seq_cst) > 0) &&
           hasWorkFor(group);
  };
  return mayRunMore(ordinary_) || mayRunMore(reserve_);
}

/// The watcher's loop. Replaces threads that are blocked in ways that the pool does not know of:
/// such threads exist if work waits and fewer threads are runnable than there are processors.
void ThreadPool::watch() {
  for (;;) {
    {
      const LockGuard guard(watchLock_);
      while (!isWatched_.load()) watch_.wait(watchLock_);
    }
    std::chrono::nanoseconds interval = watchInterval;
    while (mayRunMore()) {
      std::this_thread::sleep_for(interval);
      const auto begin = std::chrono::steady_clock::now();
      bool hasReplaced = replaceBlocked(ordinary_);
      hasReplaced |= replaceBlocked(reserve_);
      const std::chrono::nanoseconds duration = std::chrono::steady_clock::now() - begin;
      interval = watchInterval;
      if (!hasReplaced) interval = std::max(interval, duration * minIdleRatio);
    }
    isWatched_.store(false);
    if (mayRunMore()) wakeOrGrow();  // for items that were submitted while a watcher seemed to run
  }
}

/// Answers whether a thread was missing and was woken or started.
bool ThreadPool::replaceBlocked(WorkerGroup& group) {
  if (!hasWorkFor(group)) return false;
  std::array<int, maxThreads> identifiers;
  std::size_t candidates = 0;  // threads that the pool does not know to be blocked
  {
    const LockGuard guard(lock);
    for (const Worker* worker : group.workers) {
      if (worker->blockingScopes.load(std::memory_order_relaxed) > 0) continue;
      identifiers[candidates++] = worker->identifier;
    }
  }
  std::size_t runnable = 0;
  for (std::size_t index = 0; index < candidates; ++index) {
    runnable += !isThreadBlocked(identifiers[index]);
    if (runnable == processors_) return false;
  }
  if (!hasWorkFor(group)) return false;
  if (wake(group)) return true;
  // Other threads may have changed the number while the states were read.
  std::size_t threads = group.threads.load(std::memory_order_relaxed);
  do {
    if (threads >= maxThreads) return false;
  } while (!group.threads.compare_exchange_weak(threads, threads + 1, std::memory_order_relaxed));
  return startThread(group);
}

WorkItem* ThreadPool::takeFor(const WorkerGroup& group) noexcept {
  if (WorkItem* item = awaited_.pop()) return item;
  if (&group == &reserve_) return nullptr;
  for (WorkList& list : waiting_) {
    if (WorkItem* item = list.pop()) return item;
  }
  return nullptr;
}

/// Tests for work repeatedly for a short time, unless another thread does so already: one is
/// enough.
WorkItem* ThreadPool::spinForWork() {
  WorkItem* item = nullptr;
  if (spinning_.fetch_add(1, std::memory_order_seq_cst) == 0) {
    spin(maxSpins, [&] { return (item = takeFor(ordinary_)) != nullptr; });
  }
  spinning_.fetch_sub(1, std::memory_order_seq_cst);
  // Producers relied on this thread: there may be more work than the item that it found.
  if (item && hasWaitingWork()) wakeOrGrow();
  return item;
}

ThreadPool::Worker::Worker(WorkerGroup& ofGroup) noexcept
    : group(ofGroup), identifier(currentThreadIdentifier()) {}

void ThreadPool::work(WorkerGroup& group) {
  Worker self(group);
  currentWorker = &self;
  {
    const LockGuard guard(lock);
    group.workers.push_back(&self);
  }
  for (;;) {
    WorkItem* item = takeFor(group);
    if (!item && &group == &ordinary_) item = spinForWork();
    if (!item) {
      if (!sleepUntilWoken(self)) break;
    } else {
      watchWaitingWork();
      runAndDispose(*item);
    }
  }
  currentWorker = nullptr;
  // A producer that submitted before this thread stopped counting may have relied on it, or have
  // found the group full.
  if (hasWorkFor(group)) wakeOrGrow();
}

/// Answers false if the thread is not needed any more and must end.
bool ThreadPool::sleepUntilWoken(Worker& worker) {
  WorkerGroup& group = worker.group;
  const LockGuard guard(lock);
  worker.isWoken = false;
  worker.nextSleeper = std::exchange(group.lastSleeper, &worker);
  group.sleeping.fetch_add(1, std::memory_order_seq_cst);
  if (!hasWorkFor(group)) {
    const std::uint64_t end =
        isSurplus(group) ? mach_absolute_time() + surplusLifetime : UINT64_MAX;
    while (!worker.isWoken && mach_absolute_time() < end) worker.wake.waitUntil(lock, end);
  }
  if (worker.isWoken) return true;  // the waking thread has removed it from the list of sleepers
  Worker** link = &group.lastSleeper;
  while (*link != &worker) link = &(*link)->nextSleeper;
  *link = worker.nextSleeper;
  group.sleeping.fetch_sub(1, std::memory_order_seq_cst);
  if (hasWorkFor(group) || !isSurplus(group)) return true;
  std::erase(group.workers, &worker);
  group.threads.fetch_sub(1, std::memory_order_seq_cst);
  return false;
}

/// Whether the group has more threads than it keeps without work.
bool ThreadPool::isSurplus(const WorkerGroup& group) const noexcept {
  return group.threads.load(std::memory_order_relaxed) > (&group == &ordinary_ ? processors_ : 0);
}

ThreadPool::BlockingScope::BlockingScope(FunctionView<bool()> submit) noexcept {
  Worker* const worker = currentWorker;
  if (worker) {
    worker->blockingScopes.fetch_add(1, std::memory_order_relaxed);
    worker->group.blocked.fetch_add(1, std::memory_order_seq_cst);
  }
  const bool hasSubmitted = submit && submit();
  if (worker && !hasSubmitted && shared().hasWaitingWork()) shared().wakeOrGrow();
}

ThreadPool::BlockingScope::~BlockingScope() {
  Worker* const worker = currentWorker;
  if (!worker) return;
  worker->group.blocked.fetch_sub(1, std::memory_order_seq_cst);
  worker->blockingScopes.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace zeb::detail
