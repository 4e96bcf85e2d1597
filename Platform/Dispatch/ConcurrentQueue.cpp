#include <Dispatch/ConcurrentQueue.h>
#include <Dispatch/QueueFrame.h>
#include <Dispatch/ThreadGate.h>

#include <vector>

namespace zeb::detail {

ConcurrentQueue::ConcurrentQueue(std::string_view label, Urgency urgency)
    : DispatchQueue(label), urgency_(urgency) {}

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

/// Starts it now, or puts it in line.
void ConcurrentQueue::enterOrQueue(Waiting waiting) {
  bool mustAdmit = false;
  {
    std::unique_lock lock(mutex_);
    if (tryEnter(waiting.access)) {
      lock.unlock();
      start(waiting);
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

void ConcurrentQueue::start(const Waiting& waiting) noexcept {
  if (waiting.gate) {
    waiting.gate->open();
  } else {
    ThreadPool::shared().submit(*waiting.item, urgency_);
  }
}

/// The last one inside has left a closed queue: lets in the next barrier, or all up to it.
void ConcurrentQueue::admit() {
  std::vector<Waiting> admitted;
  bool isEmpty = false;
  {
    std::lock_guard guard(mutex_);
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
  for (const Waiting& waiting : admitted) start(waiting);
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
  item.runner = &sharedRunner_;
  if (tryEnter(Access::shared)) {
    ThreadPool::shared().submit(item, urgency_);
  } else {
    enterOrQueue({&item, nullptr, Access::shared});
  }
}

void ConcurrentQueue::barrierAsync(WorkItem& item) noexcept {
  item.runner = &exclusiveRunner_;
  enterOrQueue({&item, nullptr, Access::exclusive});
}

void ConcurrentQueue::Runner::runItem(WorkItem& item) noexcept {
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
    gate.wait();
  }
  struct Stay {
    ConcurrentQueue& queue;
    ~Stay() { queue.leave(); }
  } stay{*this};
  QueueFrame frame(*this, access);
  block();
}

}  // namespace zeb::detail
