#pragma once

namespace zeb::detail {

/// Keeps a call from being entered again while it is under way on the same thread:
///
///     const CallGuard guard(isCalling_);
///     if (!guard) return;
///
/// The flag belongs to one thread; it is cleared when the guard that set it ends, also by an exception.
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

  /// Whether this guard's call is the first one.
  explicit operator bool() const noexcept { return isEntered_; }

 private:
  bool& isUnderWay_;
  const bool isEntered_;
};

}  // namespace zeb::detail
