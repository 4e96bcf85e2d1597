#pragma once

#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/RunLoop/RunLoopObserver.h>

namespace zeb {

/// Runs a block once, on the main queue, the next time that the run loop of the thread which made it has
/// nothing left to do: for work that should wait until the current burst of events has been handled. The
/// loop must run in a common mode for that; a thread that runs no loop never gets there.
///
/// Whoever makes it must keep it until the block has run: a task that is released earlier never runs its block.
/// It may be released on any thread.
class ZEBMainThreadRunLoopDeferredTask : public NSObject {
 public:
  ZEBMainThreadRunLoopDeferredTask() = delete;
  /// Schedules the block at once. A nil block: nothing will happen.
  explicit ZEBMainThreadRunLoopDeferredTask(Block<void()> task);
  ~ZEBMainThreadRunLoopDeferredTask() override;

  /// "ZEBMainThreadRunLoopDeferredTask", with initWithTask: as a class method and the property task; blocks
  /// travel as Runtime/BlockConversion.h says.
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
