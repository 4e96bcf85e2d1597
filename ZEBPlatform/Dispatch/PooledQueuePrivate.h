#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/ThreadPoolPrivate.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace zeb::detail {

class ThreadGate;

/// A queue whose blocks run on the pool's threads in turns. A turn is one visit of a thread that
/// runs some of the queue's blocks.
///
/// Each requested turn is taken once, but up to two entries in the pool's lists can lead to it: one
/// at the queue's urgency, and one ahead of all other work as soon as a thread waits for the queue.
/// So a wait for a queue never depends on the pool's other work. The entry that a thread reaches
/// second finds no request, or the request of the next turn, which it then serves.
class PooledQueue : public DispatchQueue {
 protected:
  PooledQueue(std::string_view label, Urgency urgency);

  /// Causes one call of `takeTurn` on a thread of the pool. Does nothing if a turn is requested
  /// already.
  void requestTurn() noexcept;
  /// Runs some of the queue's blocks. The queue stays alive meanwhile.
  virtual void takeTurn() = 0;
  /// Whether a turn that has run its share of blocks should end, because other work waits. A turn
  /// that a thread waits for ends only for other work that a thread waits for.
  bool shouldYield() const noexcept;

  /// Waits until a thread that runs the queue's blocks opens the gate. Meanwhile the queue's turns
  /// go ahead of all other work of the pool.
  void waitAt(ThreadGate& gate) noexcept;

 private:
  /// The queue's item in one of the pool's lists. It keeps the queue alive while it is there.
  class Entry final : public WorkItem, private WorkRunner {
   public:
    Entry(PooledQueue& queue, std::uint32_t bit) noexcept;

   private:
    void runItem(WorkItem& item) override;

    PooledQueue& queue_;
    const std::uint32_t bit_;
  };

  bool isAwaited() const noexcept { return waitingThreads_.load(std::memory_order_seq_cst) > 0; }
  bool promoteTurn() noexcept;

  static constexpr std::uint32_t requested = 1;   ///< a turn is requested and has not begun
  static constexpr std::uint32_t isListed = 2;    ///< `entry_` lies in the pool
  static constexpr std::uint32_t isPromoted = 4;  ///< `promotedEntry_` lies in the pool

  alignas(64) std::atomic<std::uint32_t> turn_{0};
  std::atomic<std::size_t> waitingThreads_{0};  ///< threads that sleep in `waitAt`
  Entry entry_{*this, isListed};
  Entry promotedEntry_{*this, isPromoted};
  const Urgency urgency_;
};

}  // namespace zeb::detail
