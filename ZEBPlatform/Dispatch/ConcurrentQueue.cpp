#include <ZEBPlatform/Concurrency/detail/Spin.h>
#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>
#include <ZEBPlatform/Dispatch/ConcurrentQueuePrivate.h>
#include <ZEBPlatform/Dispatch/QueueFramePrivate.h>

#include <vector>

namespace zeb::detail {

namespace {

/// After this many blocks a thread ends its turn if other work waits.
constexpr int maxItemsPerTurn = 128;
/// A thread that has run the last block tests this often for another one, which takes about as long
/// as getting a thread from the pool.
constexpr int maxSpins = 100;

}  // namespace

ConcurrentQueue::ConcurrentQueue(std::string_view label, Urgency urgency)
    : PooledQueue(label, urgency) {}

/// The queue holds a reference to itself while anything is inside; the first entry retains it.
/// The caller has a reference of its own.
bool ConcurrentQueue::tryEnter(Access access) noexcept {
  std::uint64_t state = state_.load(std::memory_order_relaxed);
  for (;;) {
    const bool isFree = access == Access::exclusive ? state == 0 : !(state & closed);
    if (!isFree) return false;
    const std::uint64_t entered = access == Access::exclusive ? closed | 1 : state + 1;
    const bool isFirst = state == 0;
    if (isFirst) retain();
    if (state_.compare_exchange_weak(state, entered, std::memory_order_acquire)) return true;
    if (isFirst) release();
  }
}

/// Admits the waiter now if the queue is open, and otherwise adds it to those that wait.
void ConcurrentQueue::enterOrWait(Waiter waiter) {
  bool isUnattended = false;
  {
    LockGuard guard(lock_);
    if (tryEnter(waiter.access)) {
      guard.unlock();
      admitOne(waiter);
      if (waiter.item) announce();
      return;
    }
    waiters_.push_back(waiter);
    // If the last one inside has just left while the queue was open, no other thread will admit it.
    isUnattended = state_.fetch_or(closed, std::memory_order_acq_rel) == 0;
  }
  if (!isUnattended) return;
  retain();
  admitNext();
}

/// Lets a waiter that has entered go on. Blocks must be announced afterwards.
void ConcurrentQueue::admitOne(const Waiter& waiter) noexcept {
  if (waiter.gate) {
    waiter.gate->open();
  } else {
    ready_.push(*waiter.item);
  }
}

/// Makes sure that a thread takes the blocks in `ready_`. A producer first appends a block and then
/// tests whether a thread is spinning; such a thread first stops counting as one and then tests
/// whether the list is empty. These operations are sequentially consistent, so one of the two
/// notices the other.
void ConcurrentQueue::announce() noexcept {
  if (spinning_.load(std::memory_order_seq_cst) == 0) requestTurn();
}

void ConcurrentQueue::takeTurn() {
  WorkItem* item = ready_.pop();
  for (int left = maxItemsPerTurn; item; --left) {
    // This thread is busy now, so the other blocks get another thread.
    if (!ready_.isEmpty()) requestTurn();
    item->runner->runItem(*item);
    if (left <= 0 && shouldYield()) {
      if (!ready_.isEmpty()) requestTurn();
      return;
    }
    item = ready_.pop();
    if (!item) item = spinForNext();
  }
  // A block whose push() is under way cannot be popped yet, but its producer may already rely on
  // this turn. The list does not count as empty then.
  if (!ready_.isEmpty()) requestTurn();
}

WorkItem* ConcurrentQueue::spinForNext() noexcept {
  WorkItem* item = nullptr;
  spinning_.fetch_add(1, std::memory_order_seq_cst);
  spin(maxSpins, [&] { return (item = ready_.pop()) != nullptr; });
  spinning_.fetch_sub(1, std::memory_order_seq_cst);
  return item ? item : ready_.pop();
}

/// Called when the last one inside has left a closed queue: admits the next barrier, or all waiters
/// up to the next barrier.
void ConcurrentQueue::admitNext() {
  std::vector<Waiter> admitted;
  bool isEmpty = false;
  {
    const LockGuard guard(lock_);
    if (!waiters_.empty() && waiters_.front().access == Access::exclusive) {
      admitted.push_back(waiters_.front());
      waiters_.pop_front();
      state_.store(closed | 1, std::memory_order_release);
    } else {
      while (!waiters_.empty() && waiters_.front().access == Access::shared) {
        admitted.push_back(waiters_.front());
        waiters_.pop_front();
      }
      const std::uint64_t running = admitted.size();
      isEmpty = waiters_.empty() && running == 0;
      state_.store(waiters_.empty() ? running : closed | running, std::memory_order_release);
    }
  }
  // An admitted block may finish and release the queue before the other waiters have been admitted.
  const dispatch_queue_t alive(this);
  bool hasBlocks = false;
  for (const Waiter& waiter : admitted) {
    hasBlocks |= waiter.item != nullptr;
    admitOne(waiter);
  }
  if (hasBlocks) announce();
  if (isEmpty) release();
}

void ConcurrentQueue::leave() noexcept {
  const std::uint64_t before = state_.fetch_sub(1, std::memory_order_acq_rel);
  if (before == (closed | 1)) {
    admitNext();
  } else if (before == 1) {
    release();
  }
}

void ConcurrentQueue::async(WorkItem& item) noexcept {
  const dispatch_queue_t alive(this);  // the block may release the caller's reference meanwhile
  item.runner = &sharedRunner_;
  if (tryEnter(Access::shared)) {
    ready_.push(item);
    announce();
  } else {
    enterOrWait({&item, nullptr, Access::shared});
  }
}

void ConcurrentQueue::barrierAsync(WorkItem& item) noexcept {
  const dispatch_queue_t alive(this);
  item.runner = &exclusiveRunner_;
  enterOrWait({&item, nullptr, Access::exclusive});
}

void ConcurrentQueue::Runner::runItem(WorkItem& item) {
  {
    QueueFrame frame(queue_, access_);
    item.run();
    item.dispose();
  }
  queue_.leave();
}

void ConcurrentQueue::sync(FunctionView<void()> block) {
  if (const QueueFrame* frame = QueueFrame::find(*this)) {
    if (frame->access() == Access::exclusive) reportDeadlock("dispatch_sync", *this);
    // The thread is inside already. Waiting behind a barrier, which waits for this thread to leave,
    // would never end.
    block();
    return;
  }
  runInside(Access::shared, block);
}

void ConcurrentQueue::barrierSync(FunctionView<void()> block) {
  if (QueueFrame::find(*this)) reportDeadlock("dispatch_barrier_sync", *this);
  runInside(Access::exclusive, block);
}

void ConcurrentQueue::runInside(Access access, FunctionView<void()> block) {
  if (!tryEnter(access)) {
    ThreadGate gate;
    enterOrWait({nullptr, &gate, access});
    waitAt(gate);
  }
  struct Stay {
    ConcurrentQueue& queue;
    ~Stay() { queue.leave(); }
  } stay{*this};
  QueueFrame frame(*this, access);
  block();
}

}  // namespace zeb::detail
