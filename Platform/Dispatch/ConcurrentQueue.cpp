#include <Dispatch/ConcurrentQueue.h>
#include <Dispatch/QueueFrame.h>
#include <Dispatch/ThreadGate.h>

#include <vector>

namespace zeb::detail {

ConcurrentQueue::ConcurrentQueue(std::string_view label, Urgency urgency)
    : DispatchQueue(label), urgency_(urgency) {}

bool ConcurrentQueue::tryEnter(Access access) noexcept {
  std::uint64_t state = state_.load(std::memory_order_relaxed);
  if (access == Access::exclusive) {
    state = 0;
    return state_.compare_exchange_strong(state, closed | 1, std::memory_order_acquire);
  }
  while (!(state & closed)) {
    if (state_.compare_exchange_weak(state, state + 1, std::memory_order_acquire)) return true;
  }
  return false;
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
  if (mustAdmit) admit();
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
      state_.store(line_.empty() ? running : closed | running, std::memory_order_release);
    }
  }
  for (const Waiting& waiting : admitted) start(waiting);
}

void ConcurrentQueue::leave() noexcept {
  if (state_.fetch_sub(1, std::memory_order_acq_rel) == (closed | 1)) admit();
}

void ConcurrentQueue::async(WorkItem& item) noexcept {
  retain();  // until the item has run
  item.runner = &sharedRunner_;
  if (tryEnter(Access::shared)) {
    ThreadPool::shared().submit(item, urgency_);
  } else {
    enterOrQueue({&item, nullptr, Access::shared});
  }
}

void ConcurrentQueue::barrierAsync(WorkItem& item) noexcept {
  retain();  // until the item has run
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
  queue_.release();
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
  const dispatch_queue_t alive(this);  // even if the block lets the caller's reference go
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
