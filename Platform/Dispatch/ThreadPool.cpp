#include <Dispatch/ThreadPool.h>
#include <Linux/Console.h>
#include <Linux/ThreadState.h>

#include <algorithm>
#include <chrono>
#include <system_error>
#include <thread>

namespace zeb::detail {

namespace {

/// Looking for work before going to sleep: shorter than the sleep and the wake-up that it saves.
constexpr int spinsBeforeSleep = 2000;
/// A thread beyond the number of processors leaves after so long without work.
constexpr std::chrono::seconds surplusLifetime{5};
/// How often the watcher looks at threads that leave work waiting.
constexpr std::chrono::milliseconds watchInterval{5};

}  // namespace

constinit thread_local ThreadPool::Crew* ThreadPool::currentCrew = nullptr;

ThreadPool& ThreadPool::shared() {
  static auto* pool = new ThreadPool;
  return *pool;
}

ThreadPool::ThreadPool() : processors_(std::max(1u, std::thread::hardware_concurrency())) {
  try {
    std::thread([this] { watch(); }).detach();
  } catch (const std::system_error&) {
    isWatched_ = true;  // never: without a thread for it, only the waits of this library are seen
  }
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
  if (isWatched_.load() || isWatched_.exchange(true)) return;
  std::lock_guard guard(watchMutex_);
  watch_.notify_one();
}

/// Whether one slept.
bool ThreadPool::wake(Crew& crew) {
  if (crew.sleeping.load(std::memory_order_seq_cst) == 0) return false;
  std::lock_guard guard(mutex_);
  if (crew.wakeUps >= crew.sleeping.load(std::memory_order_relaxed)) return false;
  ++crew.wakeUps;
  crew.wake.notify_one();
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
  try {
    std::thread([this, &crew] { work(crew); }).detach();
    return true;
  } catch (const std::system_error&) {
    // The system has no thread to give: the work waits for those that there are.
    if (crew.threads.fetch_sub(1, std::memory_order_relaxed) == 1 && &crew == &ordinary_) {
      fatal("No thread is left to run queued work.");
    }
    return false;
  }
}

/// Finds threads that are blocked in a way that this library does not see: while work waits and fewer
/// threads can run than there are processors, there are such ones.
void ThreadPool::watch() {
  for (;;) {
    {
      std::unique_lock lock(watchMutex_);
      watch_.wait(lock, [this] { return isWatched_.load(); });
    }
    while (hasWaitingWork()) {
      std::this_thread::sleep_for(watchInterval);
      replaceBlocked(ordinary_);
      replaceBlocked(reserve_);
    }
    isWatched_.store(false);
    if (hasWaitingWork()) wakeOrGrow();  // what came meanwhile saw a watcher
  }
}

void ThreadPool::replaceBlocked(Crew& crew) {
  if (!hasWorkFor(crew) || crew.threads.load(std::memory_order_relaxed) >= maxThreads) return;
  std::vector<int> identifiers;
  {
    std::lock_guard guard(mutex_);
    identifiers = crew.threadIdentifiers;
  }
  const auto runnable = static_cast<std::size_t>(
      std::count_if(identifiers.begin(), identifiers.end(), isThreadRunnable));
  if (runnable >= processors_ || !hasWorkFor(crew)) return;
  crew.threads.fetch_add(1, std::memory_order_relaxed);
  startThread(crew);
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
    for (int spin = 0; spin < spinsBeforeSleep && !item; ++spin) {
      relaxProcessor();
      item = takeFor(ordinary_);
    }
  }
  spinning_.fetch_sub(1, std::memory_order_seq_cst);
  // Producers relied on this thread's looking: there may be more than what it found.
  if (item && hasWaitingWork()) wakeOrGrow();
  return item;
}

void ThreadPool::work(Crew& crew) {
  currentCrew = &crew;
  {
    std::lock_guard guard(mutex_);
    crew.threadIdentifiers.push_back(currentThreadIdentifier());
  }
  for (;;) {
    WorkItem* item = takeFor(crew);
    if (!item && &crew == &ordinary_) item = lookForWork();
    if (!item) {
      if (!sleepUntilWoken(crew)) return;
    } else if (item->runner) {
      item->runner->runItem(*item);
    } else {
      item->run();
      item->dispose();
    }
  }
}

/// False when the thread is not needed any more.
bool ThreadPool::sleepUntilWoken(Crew& crew) {
  std::unique_lock lock(mutex_);
  crew.sleeping.fetch_add(1, std::memory_order_seq_cst);
  bool isNeeded = hasWorkFor(crew);
  if (!isNeeded) {
    isNeeded = crew.wake.wait_for(lock, surplusLifetime, [&] { return crew.wakeUps > 0; });
    if (isNeeded) --crew.wakeUps;
  }
  crew.sleeping.fetch_sub(1, std::memory_order_seq_cst);
  if (isNeeded || hasWorkFor(crew)) return true;
  const std::size_t kept = &crew == &ordinary_ ? processors_ : 0;
  if (crew.threads.load(std::memory_order_relaxed) <= kept) return true;
  crew.threads.fetch_sub(1, std::memory_order_relaxed);
  std::erase(crew.threadIdentifiers, currentThreadIdentifier());
  return false;
}

ThreadPool::BlockingScope::BlockingScope(FunctionView<bool()> submit) noexcept {
  if (currentCrew) currentCrew->blocked.fetch_add(1, std::memory_order_seq_cst);
  const bool hasSubmitted = submit && submit();
  if (currentCrew && !hasSubmitted && shared().hasWaitingWork()) shared().wakeOrGrow();
}

ThreadPool::BlockingScope::~BlockingScope() {
  if (currentCrew) currentCrew->blocked.fetch_sub(1, std::memory_order_seq_cst);
}

}  // namespace zeb::detail
