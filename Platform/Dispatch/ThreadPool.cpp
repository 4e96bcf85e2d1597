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

thread_local bool isPoolThread = false;

}  // namespace

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

bool ThreadPool::hasWaitingWork() const noexcept {
  return std::any_of(waiting_.begin(), waiting_.end(),
                     [](const WorkList& list) { return !list.isEmpty(); });
}

void ThreadPool::wakeOrGrow() {
  if (spinning_.load(std::memory_order_seq_cst) > 0) return;
  if (sleeping_.load(std::memory_order_seq_cst) > 0) {
    std::lock_guard guard(mutex_);
    if (wakeUps_ < sleeping_.load(std::memory_order_relaxed)) {
      ++wakeUps_;
      wake_.notify_one();
      return;
    }
  }
  if (growIfShort()) return;
  // All threads are busy, or blocked without our knowing.
  if (isWatched_.load() || isWatched_.exchange(true)) return;
  std::lock_guard guard(watchMutex_);
  watch_.notify_one();
}

bool ThreadPool::growIfShort() {
  std::size_t threads = threads_.load(std::memory_order_relaxed);
  for (;;) {
    const std::size_t wanted =
        std::min(mostThreads, processors_ + blocked_.load(std::memory_order_relaxed));
    if (threads >= wanted) return false;
    if (threads_.compare_exchange_weak(threads, threads + 1, std::memory_order_relaxed)) break;
  }
  startThread();
  return true;
}

void ThreadPool::startThread() {
  try {
    std::thread([this] { work(); }).detach();
  } catch (const std::system_error&) {
    // The system has no thread to give: the work waits for those that there are.
    if (threads_.fetch_sub(1, std::memory_order_relaxed) == 1) {
      fatal("No thread is left to run queued work.");
    }
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
      std::vector<int> identifiers;
      {
        std::lock_guard guard(mutex_);
        identifiers = threadIdentifiers_;
      }
      const auto runnable = static_cast<std::size_t>(
          std::count_if(identifiers.begin(), identifiers.end(), isThreadRunnable));
      if (!hasWaitingWork() || runnable >= processors_) continue;
      if (threads_.load(std::memory_order_relaxed) >= mostThreads) continue;
      threads_.fetch_add(1, std::memory_order_relaxed);
      startThread();
    }
    isWatched_.store(false);
    if (hasWaitingWork()) wakeOrGrow();  // what came meanwhile saw a watcher
  }
}

WorkItem* ThreadPool::take() noexcept {
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
      item = take();
    }
  }
  spinning_.fetch_sub(1, std::memory_order_seq_cst);
  // Producers relied on this thread's looking: there may be more than what it found.
  if (item && hasWaitingWork()) wakeOrGrow();
  return item;
}

void ThreadPool::work() {
  isPoolThread = true;
  {
    std::lock_guard guard(mutex_);
    threadIdentifiers_.push_back(currentThreadIdentifier());
  }
  for (;;) {
    WorkItem* item = take();
    if (!item) item = lookForWork();
    if (!item) {
      if (!sleepUntilWoken()) return;
    } else if (item->runner) {
      item->runner->runItem(*item);
    } else {
      item->run();
      item->dispose();
    }
  }
}

/// False when the thread is not needed any more.
bool ThreadPool::sleepUntilWoken() {
  std::unique_lock lock(mutex_);
  sleeping_.fetch_add(1, std::memory_order_seq_cst);
  bool isNeeded = hasWaitingWork();
  if (!isNeeded) {
    isNeeded = wake_.wait_for(lock, surplusLifetime, [this] { return wakeUps_ > 0; });
    if (isNeeded) --wakeUps_;
  }
  sleeping_.fetch_sub(1, std::memory_order_seq_cst);
  if (isNeeded || hasWaitingWork()) return true;
  if (threads_.load(std::memory_order_relaxed) <= processors_) return true;
  threads_.fetch_sub(1, std::memory_order_relaxed);
  std::erase(threadIdentifiers_, currentThreadIdentifier());
  return false;
}

ThreadPool::BlockingScope::BlockingScope() noexcept {
  if (!isPoolThread) return;
  ThreadPool& pool = shared();
  pool.blocked_.fetch_add(1, std::memory_order_seq_cst);
  if (pool.hasWaitingWork()) pool.wakeOrGrow();
}

ThreadPool::BlockingScope::~BlockingScope() {
  if (isPoolThread) shared().blocked_.fetch_sub(1, std::memory_order_seq_cst);
}

}  // namespace zeb::detail
