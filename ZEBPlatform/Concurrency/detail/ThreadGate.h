#pragma once

#include <atomic>
#include <cstdint>

namespace zeb::detail {

/// One event that one thread waits for and another thread reports once. A gate never closes again.
///
/// The wait has two halves, so that the waiting thread can report that it blocks before it sleeps:
///
///     if (!gate.spinUntilOpen()) gate.sleepUntilOpen();
///
/// Memory ordering: what a thread did before open() is visible to the waiting thread after its
/// wait.
/// Lifetime: the waiting thread may destroy the gate as soon as its wait returns, so the gate may
/// lie on that thread's stack; open() does not touch it any more once the waiting thread can see it
/// open.
/// Size: four bytes. Cost: open() is one atomic operation, and a system call if the other thread
/// sleeps.
/// Do not use it for several waiting threads, of which open() wakes only one, or for events that
/// repeat.
class ThreadGate {
 public:
  /// Tests for some microseconds whether the gate opens, because the other thread is often about to
  /// do that. Returns whether it is open.
  bool spinUntilOpen() const noexcept;
  /// Sleeps in the kernel until the gate is open; returns at once if it is open already.
  void sleepUntilOpen() noexcept;
  void open() noexcept;

 private:
  enum State : std::uint32_t { closed, awaited, opened };
  std::atomic<std::uint32_t> state_{closed};
};

}  // namespace zeb::detail
