#include <Dispatch/ThreadPool.h>
#include <Linux/ThreadState.h>

#include <algorithm>
#include <chrono>
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

ThreadPool::Ring::Ring() noexcept {
  for (std::size_t index = 0; index < capacity; ++index) {
    cells_[index].turn.store(index, std::memory_order_relaxed);
  }
}

// A cell's turn says whose it is: equal to the position, the producer's; one more, the consumer's.
bool ThreadPool::Ring::push(WorkItem& item) noexcept {
  std::size_t position = tail_.load(std::memory_order_relaxed);
  for (;;) {
    Cell& cell = cells_[position % capacity];
    const std::size_t turn = cell.turn.load(std::memory_order_acquire);
    if (turn == position) {
      if (!tail_.compare_exchange_weak(position, position + 1, std::memory_order_relaxed)) continue;
      cell.item = &item;
      cell.turn.store(position + 1, std::memory_order_release);
      return true;
    }
    if (turn < position) return false;  // full
    position = tail_.load(std::memory_order_relaxed);
  }
}

WorkItem* ThreadPool::Ring::pop() noexcept {
  std::size_t position = head_.load(std::memory_order_relaxed);
  for (;;) {
    Cell& cell = cells_[position % capacity];
    const std::size_t turn = cell.turn.load(std::memory_order_acquire);
    if (turn == position + 1) {
      if (!head_.compare_exchange_weak(position, position + 1, std::memory_order_relaxed)) continue;
      WorkItem* item = cell.item;
      cell.turn.store(position + capacity, std::memory_order_release);
      return item;
    }
    if (turn < position + 1) return nullptr;  // empty
    position = head_.load(std::memory_order_relaxed);
  }
}

ThreadPool& ThreadPool::shared() {
  static auto* pool = new ThreadPool;
  return *pool;
}

ThreadPool::ThreadPool() : processors_(std::max(1u, std::thread::hardware_concurrency())) {
  std::thread([this] { watch(); }).detach();
}

void ThreadPool::submit(WorkItem& item, Urgency urgency) {
  const auto index = static_cast<std::size_t>(urgency);
  // Counted first, so that whoever finds nothing may sleep only when nothing is on its way.
  waitingItems_.fetch_add(1, std::memory_order_seq_cst);
  // What has overflowed is older, so later items must not overtake it through the ring.
  if (overflowItems_.load(std::memory_order_relaxed) > 0 || !rings_[index].push(item)) {
    item.next.store(nullptr, std::memory_order_relaxed);
    std::lock_guard guard(mutex_);
    Overflow& overflow = overflows_[index];
    if (overflow.back) {
      overflow.back->next.store(&item, std::memory_order_relaxed);
    } else {
      overflow.front = &item;
    }
    overflow.back = &item;
    overflowItems_.fetch_add(1, std::memory_order_relaxed);
  }
  wakeOrGrow();
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
    threads_.fetch_sub(1, std::memory_order_relaxed);
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
    while (waitingItems_.load(std::memory_order_seq_cst) > 0) {
      std::this_thread::sleep_for(watchInterval);
      std::size_t runnable = 0;
      {
        std::lock_guard guard(mutex_);
        for (const int identifier : threadIdentifiers_) runnable += isThreadRunnable(identifier);
      }
      if (!hasWaitingWork() || runnable >= processors_) continue;
      if (threads_.load(std::memory_order_relaxed) >= mostThreads) continue;
      threads_.fetch_add(1, std::memory_order_relaxed);
      startThread();
    }
    isWatched_.store(false);
    if (waitingItems_.load() > 0) wakeOrGrow();  // what came meanwhile saw a watcher
  }
}

WorkItem* ThreadPool::takeOverflow() {
  if (overflowItems_.load(std::memory_order_relaxed) == 0) return nullptr;
  std::lock_guard guard(mutex_);
  for (Overflow& overflow : overflows_) {
    WorkItem* item = overflow.front;
    if (!item) continue;
    overflow.front = item->next.load(std::memory_order_relaxed);
    if (!overflow.front) overflow.back = nullptr;
    overflowItems_.fetch_sub(1, std::memory_order_relaxed);
    return item;
  }
  return nullptr;
}

WorkItem* ThreadPool::take() {
  if (waitingItems_.load(std::memory_order_relaxed) == 0) return nullptr;
  WorkItem* item = nullptr;
  for (Ring& ring : rings_) {
    item = ring.pop();
    if (item) break;
  }
  if (!item) item = takeOverflow();
  if (item) waitingItems_.fetch_sub(1, std::memory_order_relaxed);
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
    if (!item && spinning_.fetch_add(1, std::memory_order_seq_cst) == 0) {
      for (int spin = 0; spin < spinsBeforeSleep && !item; ++spin) {
        relaxProcessor();
        item = take();
      }
      spinning_.fetch_sub(1, std::memory_order_seq_cst);
      // Producers relied on this thread's looking: there may be more than what it found.
      if (item && waitingItems_.load(std::memory_order_seq_cst) > 0) wakeOrGrow();
    } else if (!item) {
      spinning_.fetch_sub(1, std::memory_order_seq_cst);  // one that looks is enough
    }
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
  bool isNeeded = waitingItems_.load(std::memory_order_seq_cst) > 0;
  if (!isNeeded) {
    isNeeded = wake_.wait_for(lock, surplusLifetime, [this] { return wakeUps_ > 0; });
    if (isNeeded) --wakeUps_;
  }
  sleeping_.fetch_sub(1, std::memory_order_seq_cst);
  if (isNeeded || waitingItems_.load(std::memory_order_seq_cst) > 0) return true;
  if (threads_.load(std::memory_order_relaxed) <= processors_) return true;
  threads_.fetch_sub(1, std::memory_order_relaxed);
  std::erase(threadIdentifiers_, currentThreadIdentifier());
  return false;
}

ThreadPool::BlockingScope::BlockingScope() noexcept {
  if (!isPoolThread) return;
  ThreadPool& pool = shared();
  pool.blocked_.fetch_add(1, std::memory_order_seq_cst);
  if (pool.waitingItems_.load(std::memory_order_seq_cst) > 0) pool.wakeOrGrow();
}

ThreadPool::BlockingScope::~BlockingScope() {
  if (isPoolThread) shared().blocked_.fetch_sub(1, std::memory_order_seq_cst);
}

}  // namespace zeb::detail
