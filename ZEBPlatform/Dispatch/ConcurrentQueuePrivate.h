#pragma once

#include <ZEBPlatform/Concurrency/detail/WorkList.h>
#include <ZEBPlatform/Dispatch/PooledQueuePrivate.h>
#include <ZEBPlatform/Dispatch/QueueFramePrivate.h>

#include <atomic>
#include <cstdint>
#include <deque>

namespace zeb::detail {

/// A concurrent queue with barriers. It works like a reader-writer lock: many blocks with shared
/// access or one with exclusive access are inside at a time. Blocks and threads that find it closed
/// wait in first-in-first-out order. While no barrier runs or waits, blocks enter at once without a
/// lock.
///
/// Blocks that have entered lie in a list of the queue's own. Each thread of the pool that takes a
/// turn runs blocks of the list. While the list is not empty, a turn is requested or a thread is
/// looking at the list.
class ConcurrentQueue final : public PooledQueue {
 public:
  ConcurrentQueue(std::string_view label, Urgency urgency);

  void async(WorkItem& item) noexcept override;
  void sync(FunctionView<void()> block) override;
  void barrierAsync(WorkItem& item) noexcept override;
  void barrierSync(FunctionView<void()> block) override;

 private:
  using Access = QueueFrame::Access;

  /// Waits to enter: a block, or a thread at its gate. The other pointer is null.
  struct Waiter {
    WorkItem* item;
    ThreadGate* gate;
    Access access;
  };

  /// Runs the queue's blocks with one kind of access.
  class Runner final : public WorkRunner {
   public:
    Runner(ConcurrentQueue& queue, Access access) noexcept : queue_(queue), access_(access) {}
    void runItem(WorkItem& item) override;

   private:
    ConcurrentQueue& queue_;
    const Access access_;
  };

  [[nodiscard]] bool tryEnter(Access access) noexcept;
  void enterOrWait(Waiter waiter) ZEB_EXCLUDES(lock_);
  void admitOne(const Waiter& waiter) noexcept;
  void announce() noexcept;
  void takeTurn() override;
  WorkItem* spinForNext() noexcept;
  void leave() noexcept ZEB_EXCLUDES(lock_);
  void admitNext() ZEB_EXCLUDES(lock_);
  void runInside(Access access, FunctionView<void()> block);

  /// Set while a barrier runs or waits: newcomers must wait.
  static constexpr std::uint64_t closed = std::uint64_t{1} << 63;

  Runner sharedRunner_{*this, Access::shared};
  Runner exclusiveRunner_{*this, Access::exclusive};
  alignas(64) std::atomic<std::uint64_t> state_{0};  ///< the number inside, and `closed`
  Lock lock_;
  std::deque<Waiter> waiters_ ZEB_GUARDED_BY(lock_);
  WorkList ready_;                            ///< blocks that have entered and have not begun
  alignas(64) std::atomic<int> spinning_{0};  ///< threads that test `ready_` before they leave
};

}  // namespace zeb::detail
