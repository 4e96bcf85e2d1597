#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>
#include <ZEBPlatform/Dispatch/PooledQueuePrivate.h>

namespace zeb::detail {

PooledQueue::PooledQueue(std::string_view label, Urgency urgency)
    : DispatchQueue(label), urgency_(urgency) {}

// No waiting thread is missed because of the order of sequentially consistent operations: a thread
// that requests a turn first sets the request and then tests for waiting threads; a thread that
// waits first counts itself and then tests for a request.
void PooledQueue::requestTurn() noexcept {
  if (turn_.load(std::memory_order_seq_cst) & requested) return;
  retain();  // for the entry: another one may serve the request and release the queue at once
  const std::uint32_t bit = isAwaited() ? isPromoted : isListed;
  const std::uint32_t before = turn_.fetch_or(requested | bit, std::memory_order_seq_cst);
  if (bit == isListed && isAwaited()) promoteTurn();
  if (before & bit) {
    release();
  } else if (bit == isListed) {
    ThreadPool::shared().submit(entry_, urgency_);
  } else {
    ThreadPool::shared().submitAwaited(promotedEntry_);
  }
}

/// Answers whether that added an entry to the pool.
bool PooledQueue::promoteTurn() noexcept {
  std::uint32_t turn = turn_.load(std::memory_order_seq_cst);
  do {
    if (!(turn & requested) || (turn & isPromoted)) return false;
  } while (!turn_.compare_exchange_weak(turn, turn | isPromoted, std::memory_order_seq_cst));
  retain();
  ThreadPool::shared().submitAwaited(promotedEntry_);
  return true;
}

void PooledQueue::waitAt(ThreadGate& gate) noexcept {
  if (gate.spinUntilOpen()) return;
  waitingThreads_.fetch_add(1, std::memory_order_seq_cst);
  {
    const auto promote = [this] { return promoteTurn(); };
    const ThreadPool::BlockingScope blocking(promote);
    gate.sleepUntilOpen();
  }
  waitingThreads_.fetch_sub(1, std::memory_order_relaxed);
}

bool PooledQueue::shouldYield() const noexcept {
  const ThreadPool& pool = ThreadPool::shared();
  return isAwaited() ? pool.hasAwaitedWork() : pool.hasWaitingWork();
}

PooledQueue::Entry::Entry(PooledQueue& queue, std::uint32_t bit) noexcept
    : WorkItem(nullptr), queue_(queue), bit_(bit) {
  runner = this;
}

void PooledQueue::Entry::runItem(WorkItem&) {
  PooledQueue& queue = queue_;  // the entry itself may be submitted again at once
  const std::uint32_t before =
      queue.turn_.fetch_and(~(requested | bit_), std::memory_order_seq_cst);
  if (before & requested) queue.takeTurn();
  queue.release();
}

}  // namespace zeb::detail
