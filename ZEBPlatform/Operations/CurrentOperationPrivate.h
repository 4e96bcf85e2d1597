#pragma once

#include <ZEBPlatform/Concurrency/detail/FrameStack.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>

namespace zeb::detail {

/// Records, while it lives, which operation its thread is running and for which queue.
class CurrentOperation : public FrameStack<CurrentOperation> {
 public:
  CurrentOperation(const NSOperation& itsOperation, NSOperationQueue* itsQueue) noexcept
      : operation(itsOperation), queue(itsQueue) {}

  const NSOperation& operation;
  NSOperationQueue* const queue;  ///< null if the operation was started by hand
};

}  // namespace zeb::detail
