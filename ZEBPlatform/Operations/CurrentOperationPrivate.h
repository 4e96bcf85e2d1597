#pragma once

#include <ZEBPlatform/Operations/NSOperationQueue.h>

namespace zeb::detail {

/// Notes on a thread's stack which operation it is running, and for which queue, for as long as it lives.
class CurrentOperation {
 public:
  CurrentOperation(const NSOperation& itsOperation, NSOperationQueue* itsQueue) noexcept
      : operation(itsOperation), queue(itsQueue), outer(innermost) {
    innermost = this;
  }
  CurrentOperation(const CurrentOperation&) = delete;
  CurrentOperation& operator=(const CurrentOperation&) = delete;
  ~CurrentOperation() { innermost = outer; }

  static const CurrentOperation* current() noexcept { return innermost; }

  const NSOperation& operation;
  NSOperationQueue* const queue;  ///< null for one that was started by hand
  const CurrentOperation* const outer;

 private:
  static inline constinit thread_local const CurrentOperation* innermost = nullptr;
};

}  // namespace zeb::detail
