#include <ZEBPlatform/Concurrency/detail/WorkList.h>

namespace zeb::detail {

void WorkList::push(WorkItem& item) noexcept {
  item.next.store(nullptr, std::memory_order_relaxed);
  WorkItem* previous = tail_.exchange(&item, std::memory_order_seq_cst);
  previous->next.store(&item, std::memory_order_release);
}

WorkItem* WorkList::pop() noexcept {
  if (isEmpty()) return nullptr;
  const LockGuard guard(consumers_);
  return popLocked();
}

WorkItem* WorkList::popLocked() noexcept {
  WorkItem* item = head_.load(std::memory_order_relaxed);
  WorkItem* next = item->next.load(std::memory_order_acquire);
  if (item == &stub_) {
    if (!next) return nullptr;
    head_.store(next, std::memory_order_relaxed);
    item = next;
    next = item->next.load(std::memory_order_acquire);
  }
  if (!next) {
    if (tail_.load(std::memory_order_acquire) != item) return nullptr;
    // The last item may leave only when another item follows it.
    push(stub_);
    next = item->next.load(std::memory_order_acquire);
    if (!next) return nullptr;
  }
  head_.store(next, std::memory_order_relaxed);
  return item;
}

}  // namespace zeb::detail
