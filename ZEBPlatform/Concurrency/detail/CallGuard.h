#pragma once

namespace zeb::detail {

/// A guard against re-entrancy: keeps a function from running again while it already runs on the
/// same thread.
///
///     const CallGuard guard(isCalling_);
///     if (!guard) return;
///
/// The guard that sets the flag clears it when it ends, also when an exception ends it. The flag
/// must outlive the guard. It is a plain bool of one thread: do not use the guard to keep other
/// threads out.
class CallGuard {
 public:
  explicit CallGuard(bool& isUnderWay) noexcept : isUnderWay_(isUnderWay), isEntered_(!isUnderWay) {
    isUnderWay_ = true;
  }
  CallGuard(const CallGuard&) = delete;
  CallGuard& operator=(const CallGuard&) = delete;
  ~CallGuard() {
    if (isEntered_) isUnderWay_ = false;
  }

  /// Whether this guard belongs to the outermost call, which may go on.
  explicit operator bool() const noexcept { return isEntered_; }

 private:
  bool& isUnderWay_;
  const bool isEntered_;
};

}  // namespace zeb::detail
