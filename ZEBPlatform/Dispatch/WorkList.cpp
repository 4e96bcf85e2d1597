#include <ZEBPlatform/Dispatch/WorkListPrivate.h>
#include <ZEBPlatform/Linux/detail/ThreadState.h>

namespace zeb::detail {

void WorkList::push(WorkItem& item) noexcept {
  item.next.store(nullptr, std::memory_order_relaxed);
  WorkItem* previous = back_.exchange(&item, std::memory_order_seq_cst);
  previous->next.store(&item, std::memory_order_release);
}

WorkItem* WorkList::pop() noexcept {
  if (isEmpty()) return nullptr;
  // The lock is held for some nanoseconds: sleeping for it would cost a thousand times as much.
  for (int attempt = 0; attempt < 100; ++attempt) {
    if (consumers_.try_lock()) {
      std::lock_guard guard(consumers_, std::adopt_lock);
      return popLocked();
    }
    relaxProcessor();
  }
  std::lock_guard guard(consumers_);
  return popLocked();
}

WorkItem* WorkList::popLocked() noexcept {
  WorkItem* item = front_.load(std::memory_order_relaxed);
  WorkItem* next = item->next.load(std::memory_order_acquire);
  if (item == &stub_) {
    if (!next) return nullptr;
    front_.store(next, std::memory_order_relaxed);
    item = next;
    next = item->next.load(std::memory_order_acquire);
  }
  if (!next) {
    if (back_.load(std::memory_order_acquire) != item) return nullptr;
    // The last one may go only when another one is behind it.
    push(stub_);
    next = item->next.load(std::memory_order_acquire);
    if (!next) return nullptr;
  }
  front_.store(next, std::memory_order_relaxed);
  return item;
}

}  // namespace zeb::detail
