#pragma once

#include <ZEBPlatform/Concurrency/detail/WorkList.h>
#include <ZEBPlatform/Dispatch/PooledQueuePrivate.h>
#include <ZEBPlatform/Dispatch/QueueFramePrivate.h>

#include <atomic>
#include <cstdint>
#include <deque>

namespace zeb::detail {

/// A concurrent queue with barriers: a lock that is open to many shared holders or to one exclusive one,
/// where whoever finds it closed waits in line, threads and blocks alike. While no barrier is about,
/// blocks are let in at once and nothing is locked.
///
/// Blocks that were let in lie in a list of the queue's own, from which each thread of the pool that takes a turn runs
/// as many as it can; while the list is not empty, one more turn is requested or a thread looks at the list.
class ConcurrentQueue final : public PooledQueue {
 public:
  ConcurrentQueue(std::string_view label, Urgency urgency);

  void async(WorkItem& item) noexcept override;
  void sync(FunctionView<void()> block) override;
  void barrierAsync(WorkItem& item) noexcept override;
  void barrierSync(FunctionView<void()> block) override;

 private:
  using Access = QueueFrame::Access;

  /// In line: a block, or a thread at its gate.
  struct Waiting {
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

  bool tryEnter(Access access) noexcept;
  void enterOrQueue(Waiting waiting) ZEB_EXCLUDES(lock_);
  void letIn(const Waiting& waiting) noexcept;
  void announce() noexcept;
  void takeTurn() override;
  WorkItem* lookForNext() noexcept;
  void leave() noexcept;
  void admit() ZEB_EXCLUDES(lock_);
  void runInside(Access access, FunctionView<void()> block);

  /// Set while a barrier runs or waits: new arrivals stand in line.
  static constexpr std::uint64_t closed = std::uint64_t{1} << 63;

  Runner sharedRunner_{*this, Access::shared};
  Runner exclusiveRunner_{*this, Access::exclusive};
  alignas(64) std::atomic<std::uint64_t> state_{0};  ///< how many run, and `closed`
  Lock lock_;
  std::deque<Waiting> line_ ZEB_GUARDED_BY(lock_);
  WorkList ready_;                           ///< blocks that were let in and have not begun
  alignas(64) std::atomic<int> lookers_{0};  ///< threads that look at `ready_` before they leave
};

}  // namespace zeb::detail
