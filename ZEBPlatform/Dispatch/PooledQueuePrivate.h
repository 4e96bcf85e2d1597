#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/ThreadPoolPrivate.h>

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace zeb::detail {

class ThreadGate;

/// A queue whose blocks run on the pool's threads, in turns: each turn is one thread's visit to the queue.
///
/// A turn is requested once and taken once, but up to two entries in the pool's lists can lead to it: one
/// at the queue's urgency, and one ahead of all other work as soon as a thread waits for the queue. So no
/// wait for a queue depends on what else lies in the pool. The entry that comes second finds no request,
/// or the next one, which it then serves.
class PooledQueue : public DispatchQueue {
 protected:
  PooledQueue(std::string_view label, Urgency urgency);

  /// Has `takeTurn` called once on a thread of the pool. Once more before that: nothing.
  void requestTurn() noexcept;
  /// Runs some of the queue's blocks. The queue stays alive meanwhile.
  virtual void takeTurn() = 0;
  /// Whether a thread that has run its share should let others have the thread. Those who hold up a
  /// waiting thread give way to their like only.
  bool shouldYield() const noexcept;

  /// Waits until the gate is opened by who runs the queue; the turn that leads there goes first.
  void waitAt(ThreadGate& gate) noexcept;

 private:
  /// What lies in the pool's lists. It keeps the queue alive there.
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

  static constexpr std::uint32_t requested = 1;   ///< a turn is wanted, and nobody has taken it
  static constexpr std::uint32_t isListed = 2;    ///< `entry_` lies in the pool
  static constexpr std::uint32_t isPromoted = 4;  ///< `promotedEntry_` lies in the pool

  alignas(64) std::atomic<std::uint32_t> turn_{0};
  std::atomic<std::size_t> waitingThreads_{0};  ///< those that sleep
  Entry entry_{*this, isListed};
  Entry promotedEntry_{*this, isPromoted};
  const Urgency urgency_;
};

}  // namespace zeb::detail
