#include <ZEBPlatform/Concurrency/detail/Spin.h>
#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>
#include <ZEBPlatform/Dispatch/QueueFramePrivate.h>
#include <ZEBPlatform/Dispatch/SerialQueuePrivate.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>

namespace zeb::detail {

namespace {

/// After so many items a queue lets others have its thread, if any wait.
constexpr int itemsPerTurn = 128;
/// How long a thread that has run the last item looks for a next one: about as long as it takes to get a
/// thread from the pool.
constexpr int maxSpins = 100;

}  // namespace

/// A thread that waits for its turn in `sync`. Reaching the front makes it the queue's owner.
class SerialQueue::Waiter final : public WorkItem {
 public:
  Waiter() noexcept : WorkItem(&operate) {}

  static bool isOne(const WorkItem& item) noexcept { return item.isOperatedBy(&operate); }

  ThreadGate& gate() noexcept { return gate_; }
  void giveTurn() noexcept { gate_.open(); }

 private:
  static void operate(WorkItem&, Operation) noexcept {}

  ThreadGate gate_;
};

SerialQueue::SerialQueue(std::string_view label, Urgency urgency) : PooledQueue(label, urgency) {}

/// Whether the list was empty, so that the caller owns the queue now.
bool SerialQueue::append(WorkItem& item) noexcept {
  item.next.store(nullptr, std::memory_order_relaxed);
  WorkItem* previous = back_.exchange(&item, std::memory_order_acq_rel);
  if (previous) {
    previous->next.store(&item, std::memory_order_release);
    return false;
  }
  front_ = &item;
  return true;
}

/// The new front, or null: then the caller owns the queue no longer.
WorkItem* SerialQueue::removeFront(WorkItem& front) noexcept {
  WorkItem* next = front.next.load(std::memory_order_acquire);
  if (!next) {
    WorkItem* expected = &front;
    if (back_.compare_exchange_strong(expected, nullptr, std::memory_order_acq_rel)) return nullptr;
    // A producer has become the back, but not linked itself to us yet.
    while (!(next = front.next.load(std::memory_order_acquire))) relaxProcessor();
  }
  front_ = next;
  return next;
}

void SerialQueue::async(WorkItem& item) noexcept {
  if (append(item)) schedule();
}

void SerialQueue::schedule() noexcept { requestTurn(); }

void SerialQueue::takeTurn() {
  while (runItems(itemsPerTurn)) {
    if (shouldYield()) return requestTurn();
  }
}

bool SerialQueue::runItems(int most) {
  QueueFrame frame(*this, QueueFrame::Access::exclusive);
  WorkItem* item = front_;
  for (;;) {
    if (Waiter::isOne(*item)) {
      static_cast<Waiter*>(item)->giveTurn();
      return false;
    }
    item->run();
    const auto hasNext = [item] { return item->next.load(std::memory_order_relaxed) != nullptr; };
    if (!hasNext()) spin(maxSpins, hasNext);
    WorkItem* next = removeFront(*item);
    item->dispose();
    if (!next) return false;
    if (--most == 0) return true;
    item = next;
  }
}

/// Ends an ownership that began in `sync`: the rest is for the next waiter, or for the queue's thread.
void SerialQueue::passOn(WorkItem& front) noexcept {
  WorkItem* next = removeFront(front);
  if (!next) return;
  if (Waiter::isOne(*next)) {
    static_cast<Waiter*>(next)->giveTurn();
  } else {
    schedule();
  }
}

void SerialQueue::sync(FunctionView<void()> block) {
  if (QueueFrame::find(*this)) reportDeadlock("dispatch_sync", *this);
  const dispatch_queue_t alive(this);  // even if the block lets the caller's reference go
  Waiter waiter;
  if (!append(waiter)) waitAt(waiter.gate());
  struct Ownership {
    SerialQueue& queue;
    Waiter& waiter;
    ~Ownership() { queue.passOn(waiter); }
  } ownership{*this, waiter};
  QueueFrame frame(*this, QueueFrame::Access::exclusive);
  block();
}

}  // namespace zeb::detail
