#pragma once

#include <ZEBPlatform/Dispatch/DispatchQueue.h>

namespace zeb {

/// The library's one queue for work that must not run on the main thread and need not run in parallel.
class ZEBBackgroundQueue {
 public:
  ZEBBackgroundQueue() = delete;

  /// Serial, and the same one every time. Any thread.
  static const dispatch_queue_t& sharedBackgroundQueue();

  /// "ZEBBackgroundQueue", with sharedBackgroundQueue.
  static Class* runtimeClass();
};

}  // namespace zeb
