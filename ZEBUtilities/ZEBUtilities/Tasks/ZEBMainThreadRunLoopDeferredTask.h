#pragma once

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/RunLoop/RunLoopObserver.h>

namespace zeb {

/// Runs a block once, on the main queue, the next time the run loop of the creating thread is about
/// to wait. Use it for work that should wait until the current burst of events has been handled.
/// The loop must run in a common mode; without a running loop, the block never runs.
///
/// Keep the task until the block has run: a task that is released earlier never runs its block. It
/// may be released on any thread.
class ZEBMainThreadRunLoopDeferredTask : public NSObject {
 public:
  ZEBMainThreadRunLoopDeferredTask() = delete;
  /// Schedules the block at once. A nil block does nothing.
  explicit ZEBMainThreadRunLoopDeferredTask(Block<void()> task);
  ~ZEBMainThreadRunLoopDeferredTask() override;

  /// Registered as "ZEBMainThreadRunLoopDeferredTask", with initWithTask: as a class method and the
  /// property task. Blocks are passed as described in Runtime/BlockConversion.h.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  const Block<void()>& task() const noexcept { return task_; }

 private:
  void schedule();
  void invokeDeferredTask();

  const Block<void()> task_;
  Ref<RunLoopObserver> observer_;  ///< nil once the task has run
};

}  // namespace zeb
