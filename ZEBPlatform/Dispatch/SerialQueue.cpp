#include <ZEBPlatform/Concurrency/detail/Spin.h>
#include <ZEBPlatform/Concurrency/detail/ThreadGate.h>
#include <ZEBPlatform/Dispatch/QueueFramePrivate.h>
#include <ZEBPlatform/Dispatch/SerialQueuePrivate.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>

namespace zeb::detail {

namespace {

/// After this many items a queue gives up its thread if other work waits.
constexpr int maxItemsPerTurn = 128;
/// A thread that has run the last item tests this often for another one, which takes about as long
/// as getting a thread from the pool.
constexpr int maxSpins = 100;

}  // namespace

/// A thread that waits in `sync`. It becomes the queue's owner when its item reaches the head.
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

/// Answers whether the list was empty, so that the caller is the owner now.
bool SerialQueue::append(WorkItem& item) noexcept {
  item.next.store(nullptr, std::memory_order_relaxed);
  WorkItem* previous = tail_.exchange(&item, std::memory_order_acq_rel);
  if (previous) {
    previous->next.store(&item, std::memory_order_release);
    return false;
  }
  head_ = &item;
  return true;
}

/// Answers the new head, or null: then the list is empty and the caller is no longer the owner.
WorkItem* SerialQueue::removeHead(WorkItem& head) noexcept {
  WorkItem* next = head.next.load(std::memory_order_acquire);
  if (!next) {
    WorkItem* expected = &head;
    if (tail_.compare_exchange_strong(expected, nullptr, std::memory_order_acq_rel)) return nullptr;
    // A producer has appended its item, but has not linked it to this one yet.
    while (!(next = head.next.load(std::memory_order_acquire))) relaxProcessor();
  }
  head_ = next;
  return next;
}

void SerialQueue::async(WorkItem& item) noexcept {
  if (append(item)) schedule();
}

void SerialQueue::schedule() noexcept { requestTurn(); }

void SerialQueue::takeTurn() {
  while (runItems(maxItemsPerTurn)) {
    if (shouldYield()) return requestTurn();
  }
}

bool SerialQueue::runItems(int maxItems) {
  QueueFrame frame(*this, QueueFrame::Access::exclusive);
  WorkItem* item = head_;
  for (int left = maxItems;;) {
    if (Waiter::isOne(*item)) {
      static_cast<Waiter*>(item)->giveTurn();
      return false;
    }
    item->run();
    const auto hasNext = [item] { return item->next.load(std::memory_order_relaxed) != nullptr; };
    if (!hasNext()) spin(maxSpins, hasNext);
    WorkItem* next = removeHead(*item);
    item->dispose();
    if (!next) return false;
    if (--left == 0) return true;
    item = next;
  }
}

/// Ends an ownership that began in `sync`. The next owner is the next waiting thread, or a thread
/// that runs the items.
void SerialQueue::passOn(WorkItem& head) noexcept {
  WorkItem* next = removeHead(head);
  if (!next) return;
  if (Waiter::isOne(*next)) {
    static_cast<Waiter*>(next)->giveTurn();
  } else {
    schedule();
  }
}

void SerialQueue::sync(FunctionView<void()> block) {
  if (QueueFrame::find(*this)) reportDeadlock("dispatch_sync", *this);
  const dispatch_queue_t alive(this);  // the block may release the caller's reference
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
