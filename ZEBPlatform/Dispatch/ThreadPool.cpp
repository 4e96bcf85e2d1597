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

/// Looking for work before going to sleep: shorter than the sleep and the wake-up that it saves.
constexpr int maxSpins = 2000;
/// A thread beyond the number of processors leaves after so long without work.
constexpr std::uint64_t surplusLifetime = 5'000'000'000;
/// How often the watcher looks at threads that leave work waiting.
constexpr std::chrono::milliseconds watchInterval{5};
/// Looking at hundreds of threads takes long; looks in vain may take this part of a processor at most.
constexpr int watchShare = 20;

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
  // Without a thread for it only the waits of this library are seen.
  if (!startServiceThread("zeb-pool-watch", watch, this)) isWatched_ = true;
}

// Waking is by the order of sequentially consistent operations: a producer first appends, then looks for
// threads that look for work; a thread first notes that it stops looking, then looks a last time.
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

bool ThreadPool::hasWorkFor(const Crew& crew) const noexcept {
  return &crew == &reserve_ ? hasAwaitedWork() : hasWaitingWork();
}

void ThreadPool::wakeOrGrow() {
  if (spinning_.load(std::memory_order_seq_cst) > 0) return;
  if (wake(ordinary_) || growIfShort(ordinary_)) return;
  if (hasAwaitedWork() && !wake(reserve_)) growIfShort(reserve_);
  // All threads are busy, or blocked without our knowing.
  if (!mayGrow()) return;
  if (isWatched_.load() || isWatched_.exchange(true)) return;
  const LockGuard guard(watchLock_);
  watch_.notifyOne();
}

/// Whether one slept.
bool ThreadPool::wake(Crew& crew) {
  if (crew.sleeping.load(std::memory_order_seq_cst) == 0) return false;
  const LockGuard guard(lock);
  Worker* const worker = crew.lastSleeper;
  if (!worker) return false;
  crew.lastSleeper = worker->nextSleeper;
  crew.sleeping.fetch_sub(1, std::memory_order_seq_cst);
  worker->isWoken = true;
  worker->wake.notifyOne();
  return true;
}

/// Whether a thread was missing and could be started.
bool ThreadPool::growIfShort(Crew& crew) {
  std::size_t threads = crew.threads.load(std::memory_order_relaxed);
  do {
    const std::size_t blocked = crew.blocked.load(std::memory_order_seq_cst);
    if (threads >= std::min(maxThreads, processors_ + blocked)) return false;
  } while (!crew.threads.compare_exchange_weak(threads, threads + 1, std::memory_order_relaxed));
  return startThread(crew);
}

/// Starts a thread that the crew counts already.
bool ThreadPool::startThread(Crew& crew) {
  const auto work = [](void* ofCrew) { shared().work(*static_cast<Crew*>(ofCrew)); };
  if (startServiceThread(&crew == &reserve_ ? "zeb-reserve" : "zeb-pool", work, &crew)) return true;
  // The system has no thread to give: the work waits for those that there are.
  if (crew.threads.fetch_sub(1, std::memory_order_relaxed) == 1 && &crew == &ordinary_) {
    fatal("No thread is left to run queued work.");
  }
  return false;
}

/// Whether there is work that would be run if there were more threads, and may be more of them. Otherwise there is
/// nothing to watch: the work waits until a thread takes it.
bool ThreadPool::mayGrow() const noexcept {
  const auto mayGrow = [this](const Crew& crew) {
    return crew.threads.load(std::memory_order_seq_cst) < maxThreads && hasWorkFor(crew);
  };
  return mayGrow(ordinary_) || mayGrow(reserve_);
}

/// Finds threads that are blocked in a way that this library does not see: while work waits and fewer
/// threads can run than there are processors, there are such ones.
void ThreadPool::watch() {
  for (;;) {
    {
      const LockGuard guard(watchLock_);
      while (!isWatched_.load()) watch_.wait(watchLock_);
    }
    std::chrono::nanoseconds interval = watchInterval;
    while (mayGrow()) {
      std::this_thread::sleep_for(interval);
      const auto begin = std::chrono::steady_clock::now();
      bool hasReplaced = replaceBlocked(ordinary_);
      hasReplaced |= replaceBlocked(reserve_);
      const std::chrono::nanoseconds duration = std::chrono::steady_clock::now() - begin;
      interval = watchInterval;
      if (!hasReplaced) interval = std::max(interval, duration * watchShare);
    }
    isWatched_.store(false);
    if (mayGrow()) wakeOrGrow();  // what came meanwhile saw a watcher
  }
}

/// Whether a thread was missing and could be started.
bool ThreadPool::replaceBlocked(Crew& crew) {
  if (!hasWorkFor(crew) || crew.threads.load(std::memory_order_relaxed) >= maxThreads) return false;
  std::array<int, maxThreads> identifiers;
  std::size_t candidates = 0;  // those that are not blocked as far as we know
  {
    const LockGuard guard(lock);
    for (const Worker* worker : crew.workers) {
      if (worker->blockingScopes.load(std::memory_order_relaxed) > 0) continue;
      identifiers[candidates++] = worker->identifier;
    }
  }
  std::size_t runnable = 0;
  for (std::size_t index = 0; index < candidates; ++index) {
    runnable += !isThreadBlocked(identifiers[index]);
    if (runnable == processors_) return false;
  }
  if (!hasWorkFor(crew)) return false;
  // Other threads may have started some while the states were read.
  std::size_t threads = crew.threads.load(std::memory_order_relaxed);
  do {
    if (threads >= maxThreads) return false;
  } while (!crew.threads.compare_exchange_weak(threads, threads + 1, std::memory_order_relaxed));
  return startThread(crew);
}

WorkItem* ThreadPool::takeFor(const Crew& crew) noexcept {
  if (WorkItem* item = awaited_.pop()) return item;
  if (&crew == &reserve_) return nullptr;
  for (WorkList& list : waiting_) {
    if (WorkItem* item = list.pop()) return item;
  }
  return nullptr;
}

/// For a while, unless another thread does so already: one that looks is enough.
WorkItem* ThreadPool::lookForWork() {
  WorkItem* item = nullptr;
  if (spinning_.fetch_add(1, std::memory_order_seq_cst) == 0) {
    spin(maxSpins, [&] { return (item = takeFor(ordinary_)) != nullptr; });
  }
  spinning_.fetch_sub(1, std::memory_order_seq_cst);
  // Producers relied on this thread's looking: there may be more than what it found.
  if (item && hasWaitingWork()) wakeOrGrow();
  return item;
}

ThreadPool::Worker::Worker(Crew& ofCrew) noexcept
    : crew(ofCrew), identifier(currentThreadIdentifier()) {}

void ThreadPool::work(Crew& crew) {
  Worker self(crew);
  currentWorker = &self;
  {
    const LockGuard guard(lock);
    crew.workers.push_back(&self);
  }
  for (;;) {
    WorkItem* item = takeFor(crew);
    if (!item && &crew == &ordinary_) item = lookForWork();
    if (!item) {
      if (!sleepUntilWoken(self)) break;
    } else if (item->runner) {
      item->runner->runItem(*item);
    } else {
      item->run();
      item->dispose();
    }
  }
  currentWorker = nullptr;
  // Who submitted before this thread was counted out may have relied on it, or have seen a full crew.
  if (hasWorkFor(crew)) wakeOrGrow();
}

/// False when the thread is not needed any more.
bool ThreadPool::sleepUntilWoken(Worker& worker) {
  Crew& crew = worker.crew;
  const LockGuard guard(lock);
  worker.isWoken = false;
  worker.nextSleeper = std::exchange(crew.lastSleeper, &worker);
  crew.sleeping.fetch_add(1, std::memory_order_seq_cst);
  if (!hasWorkFor(crew)) {
    const std::uint64_t end = isSurplus(crew) ? mach_absolute_time() + surplusLifetime : UINT64_MAX;
    while (!worker.isWoken && mach_absolute_time() < end) worker.wake.waitUntil(lock, end);
  }
  if (worker.isWoken) return true;  // and who woke it has taken it from the sleepers
  Worker** link = &crew.lastSleeper;
  while (*link != &worker) link = &(*link)->nextSleeper;
  *link = worker.nextSleeper;
  crew.sleeping.fetch_sub(1, std::memory_order_seq_cst);
  if (hasWorkFor(crew) || !isSurplus(crew)) return true;
  std::erase(crew.workers, &worker);
  crew.threads.fetch_sub(1, std::memory_order_seq_cst);
  return false;
}

/// Whether the crew has more threads than it keeps when there is nothing to do.
bool ThreadPool::isSurplus(const Crew& crew) const noexcept {
  return crew.threads.load(std::memory_order_relaxed) > (&crew == &ordinary_ ? processors_ : 0);
}

ThreadPool::BlockingScope::BlockingScope(FunctionView<bool()> submit) noexcept {
  Worker* const worker = currentWorker;
  if (worker) {
    worker->blockingScopes.fetch_add(1, std::memory_order_relaxed);
    worker->crew.blocked.fetch_add(1, std::memory_order_seq_cst);
  }
  const bool hasSubmitted = submit && submit();
  if (worker && !hasSubmitted && shared().hasWaitingWork()) shared().wakeOrGrow();
}

ThreadPool::BlockingScope::~BlockingScope() {
  Worker* const worker = currentWorker;
  if (!worker) return;
  worker->crew.blocked.fetch_sub(1, std::memory_order_seq_cst);
  worker->blockingScopes.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace zeb::detail
