#pragma once

#include <ZEBPlatform/Operations/NSOperation.h>

namespace zeb {

/// What is left to do for an operation that has just finished.
struct NSOperation::Ending {
  NSOperation* readyOperations = nullptr;  ///< were waiting for this operation last
  Block<void()> completionBlock;
};

}  // namespace zeb
