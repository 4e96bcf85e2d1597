#pragma once

#include <RunLoop/NSOperation.h>

namespace zeb {

/// That one operation waits for another one. Two lists hold it: what the waiting one depends on, which owns
/// it, and those that wait for the other one, until that has finished.
struct NSOperation::Dependency {
  Ref<NSOperation> operation;
  NSOperation* dependent;
  Dependency* next = nullptr;           ///< of the dependent's
  Dependency* nextDependent = nullptr;  ///< of the operation's
  Dependency** link = nullptr;  ///< what points here in the operation's list; null when not in it
};

}  // namespace zeb
