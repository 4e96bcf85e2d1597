#pragma once

#include <ZEBPlatform/Dispatch/PooledQueuePrivate.h>

#include <atomic>

namespace zeb::detail {

/// A serial queue as a linked list that producers append to with one exchange.
///
/// The thread that appends to the empty list becomes the queue's owner, which alone removes items,
/// and may pass the ownership on. The item that runs stays at the head until it is done, so that
/// "the list is empty" and "the queue has no owner" are the same fact.
class SerialQueue : public PooledQueue {
 public:
  SerialQueue(std::string_view label, Urgency urgency);

  void async(WorkItem& item) noexcept final;
  void sync(FunctionView<void()> block) override;
  void barrierAsync(WorkItem& item) noexcept final { async(item); }
  void barrierSync(FunctionView<void()> block) final { sync(block); }

 protected:
  /// Passes the ownership to a thread that runs the items. Called by the owner.
  virtual void schedule() noexcept;
  /// Runs items as the owner until the list is empty, a waiting thread has become the owner, or
  /// `maxItems` have run. Answers whether the caller still owns the queue, because it has more
  /// items.
  [[nodiscard]] bool runItems(int maxItems);

 private:
  class Waiter;

  void takeTurn() final;
  [[nodiscard]] bool append(WorkItem& item) noexcept;
  WorkItem* removeHead(WorkItem& head) noexcept;
  void passOn(WorkItem& head) noexcept;

  alignas(64) std::atomic<WorkItem*> tail_{nullptr};
  alignas(64) WorkItem* head_ = nullptr;  ///< used by the owner only
};

}  // namespace zeb::detail
