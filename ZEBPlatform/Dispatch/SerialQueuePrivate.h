#pragma once

#include <ZEBPlatform/Dispatch/PooledQueuePrivate.h>

#include <atomic>

namespace zeb::detail {

/// A serial queue as a linked list that producers append to with one exchange.
///
/// Whoever makes the list non-empty owns the queue, or hands it to a thread that does; the item that
/// runs stays at the front until it is done, so that "the list is empty" and "nobody owns the queue" are
/// one and the same.
class SerialQueue : public PooledQueue {
 public:
  SerialQueue(std::string_view label, Urgency urgency);

  void async(WorkItem& item) noexcept final;
  void sync(FunctionView<void()> block) override;
  void barrierAsync(WorkItem& item) noexcept final { async(item); }
  void barrierSync(FunctionView<void()> block) final { sync(block); }

 protected:
  /// Has the items run, by whatever thread serves this queue. Called by the owner.
  virtual void schedule() noexcept;
  /// Runs items as the owner until none is left, or a waiting thread has taken over, or `most` have run.
  /// Whether the caller still owns the queue, for there are more.
  bool runItems(int most);

 private:
  class Waiter;

  void takeTurn() final;
  bool append(WorkItem& item) noexcept;
  WorkItem* removeFront(WorkItem& front) noexcept;
  void passOn(WorkItem& front) noexcept;

  alignas(64) std::atomic<WorkItem*> back_{nullptr};
  alignas(64) WorkItem* front_ = nullptr;  ///< the owner's
};

}  // namespace zeb::detail
