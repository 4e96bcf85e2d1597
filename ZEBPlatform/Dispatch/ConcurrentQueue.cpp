#include <ZEBPlatform/Concurrency/detail/Spin.h>
#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>
#include <ZEBPlatform/Dispatch/ConcurrentQueuePrivate.h>
#include <ZEBPlatform/Dispatch/QueueFramePrivate.h>

#include <vector>

namespace zeb::detail {

namespace {

/// After this many blocks a thread ends its turn if other work is waiting.
constexpr int itemsPerTurn = 128;
/// How long a thread that has run the last block looks for a next one: about as long as it takes to get a
/// thread from the pool.
constexpr int maxSpins = 100;

}  // namespace

ConcurrentQueue::ConcurrentQueue(std::string_view label, Urgency urgency)
    : PooledQueue(label, urgency) {}

/// The queue refers to itself while anything is inside, from the first one's entrance on. The caller
/// has a reference of its own.
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

/// Lets it in now, or puts it in line.
void ConcurrentQueue::enterOrQueue(Waiting waiting) {
  bool mustAdmit = false;
  {
    LockGuard guard(lock_);
    if (tryEnter(waiting.access)) {
      guard.unlock();
      letIn(waiting);
      if (waiting.item) announce();
      return;
    }
    line_.push_back(waiting);
    // If the last one inside has left an open queue just now, nobody else will admit the line.
    mustAdmit = state_.fetch_or(closed, std::memory_order_acq_rel) == 0;
  }
  if (!mustAdmit) return;
  retain();
  admit();
}

/// It has entered. Blocks must be announced afterwards.
void ConcurrentQueue::letIn(const Waiting& waiting) noexcept {
  if (waiting.gate) {
    waiting.gate->open();
  } else {
    ready_.push(*waiting.item);
  }
}

/// Makes sure that a thread takes the blocks in `ready_`. A producer first appends a block and then looks
/// for threads that look at the list; such a thread first stops counting as one and then tests whether the
/// list is empty. These operations are sequentially consistent, so one of the two sees the other.
void ConcurrentQueue::announce() noexcept {
  if (lookers_.load(std::memory_order_seq_cst) == 0) requestTurn();
}

void ConcurrentQueue::takeTurn() {
  WorkItem* item = ready_.pop();
  for (int left = itemsPerTurn; item; --left) {
    // One thread less for the others: they get another one.
    if (!ready_.isEmpty()) requestTurn();
    item->runner->runItem(*item);
    if (left <= 0 && shouldYield()) {
      if (!ready_.isEmpty()) requestTurn();
      return;
    }
    item = ready_.pop();
    if (!item) item = lookForNext();
  }
  // A block that is just being appended can't be popped yet, but its producer may already rely on this
  // turn. The list does not count as empty then.
  if (!ready_.isEmpty()) requestTurn();
}

WorkItem* ConcurrentQueue::lookForNext() noexcept {
  WorkItem* item = nullptr;
  lookers_.fetch_add(1, std::memory_order_seq_cst);
  spin(maxSpins, [&] { return (item = ready_.pop()) != nullptr; });
  lookers_.fetch_sub(1, std::memory_order_seq_cst);
  return item ? item : ready_.pop();
}

/// The last one inside has left a closed queue: lets in the next barrier, or all up to it.
void ConcurrentQueue::admit() {
  std::vector<Waiting> admitted;
  bool isEmpty = false;
  {
    const LockGuard guard(lock_);
    if (!line_.empty() && line_.front().access == Access::exclusive) {
      admitted.push_back(line_.front());
      line_.pop_front();
      state_.store(closed | 1, std::memory_order_release);
    } else {
      while (!line_.empty() && line_.front().access == Access::shared) {
        admitted.push_back(line_.front());
        line_.pop_front();
      }
      const std::uint64_t running = admitted.size();
      isEmpty = line_.empty() && running == 0;
      state_.store(line_.empty() ? running : closed | running, std::memory_order_release);
    }
  }
  // A block that was let in may finish and release the queue before the others have been told.
  const dispatch_queue_t alive(this);
  bool hasBlocks = false;
  for (const Waiting& waiting : admitted) {
    hasBlocks |= waiting.item != nullptr;
    letIn(waiting);
  }
  if (hasBlocks) announce();
  if (isEmpty) release();
}

void ConcurrentQueue::leave() noexcept {
  const std::uint64_t before = state_.fetch_sub(1, std::memory_order_acq_rel);
  if (before == (closed | 1)) {
    admit();
  } else if (before == 1) {
    release();
  }
}

void ConcurrentQueue::async(WorkItem& item) noexcept {
  const dispatch_queue_t alive(this);  // even if the block lets the caller's reference go meanwhile
  item.runner = &sharedRunner_;
  if (tryEnter(Access::shared)) {
    ready_.push(item);
    announce();
  } else {
    enterOrQueue({&item, nullptr, Access::shared});
  }
}

void ConcurrentQueue::barrierAsync(WorkItem& item) noexcept {
  const dispatch_queue_t alive(this);
  item.runner = &exclusiveRunner_;
  enterOrQueue({&item, nullptr, Access::exclusive});
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
    // Already inside. Standing in line behind a barrier, which waits for this thread to leave, would
    // never end.
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
    enterOrQueue({nullptr, &gate, access});
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
