#pragma once

#include <atomic>

namespace zeb::detail {

/// Where one thread waits until another lets it pass, once. It may lie on the waiting thread's stack:
/// the other one does not touch it after it has let it pass.
class ThreadGate {
 public:
  /// A pool thread that waits here is replaced meanwhile.
  void wait() noexcept;
  /// The two halves of `wait`, for who has something to do between them: looks for a moment whether the gate
  /// opens, then sleeps until it does. The second half replaces nobody.
  bool isOpenSoon() const noexcept;
  void sleepUntilOpen() noexcept;
  void open() noexcept;

 private:
  enum State : int { closed, waiting, opened };
  std::atomic<int> state_{closed};
};

}  // namespace zeb::detail
