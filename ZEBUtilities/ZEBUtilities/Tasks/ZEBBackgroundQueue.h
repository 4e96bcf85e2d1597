#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>

namespace zeb {

/// The library's queue for work that must not run on the main thread and need not run in parallel.
class ZEBBackgroundQueue {
 public:
  ZEBBackgroundQueue() = delete;

  /// A serial queue; every call returns the same one. Any thread.
  static const dispatch_queue_t& sharedBackgroundQueue();

  /// Registered as "ZEBBackgroundQueue", with sharedBackgroundQueue.
  static Class* runtimeClass();
};

}  // namespace zeb
