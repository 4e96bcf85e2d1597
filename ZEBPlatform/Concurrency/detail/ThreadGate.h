#pragma once

#include <atomic>

namespace zeb::detail {

/// Where one thread waits until another thread lets it pass, once. It may lie on the waiting thread's
/// stack: the other thread does not touch it after it has opened it. What a thread did before `open()`
/// is visible to the waiting thread afterwards.
///
/// Waiting has two halves, so that the waiting thread can say that it blocks before it sleeps:
///
///     if (!gate.spinUntilOpen()) gate.sleepUntilOpen();
class ThreadGate {
 public:
  /// Looks for a moment whether the gate opens, because the other thread is often just about to do so.
  bool spinUntilOpen() const noexcept;
  void sleepUntilOpen() noexcept;
  void open() noexcept;

 private:
  enum State : int { closed, awaited, opened };
  std::atomic<int> state_{closed};
};

}  // namespace zeb::detail
