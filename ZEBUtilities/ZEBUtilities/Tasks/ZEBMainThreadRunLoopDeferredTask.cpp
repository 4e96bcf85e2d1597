#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Tasks/ZEBMainThreadRunLoopDeferredTask.h>

#include <utility>

namespace zeb {

ZEBMainThreadRunLoopDeferredTask::ZEBMainThreadRunLoopDeferredTask(Block<void()> task)
    : task_(std::move(task)) {
  schedule();
}

ZEBMainThreadRunLoopDeferredTask::~ZEBMainThreadRunLoopDeferredTask() {
  if (observer_) observer_->invalidate();
}

void ZEBMainThreadRunLoopDeferredTask::schedule() {
  const WeakRef<ZEBMainThreadRunLoopDeferredTask> weakSelf(this);
  const auto submit = [weakSelf](const Ref<RunLoopObserver>&, RunLoopActivity) {
    dispatch_async(dispatch_get_main_queue(), [weakSelf] {
      if (const auto self = weakSelf.lock()) self->invokeDeferredTask();
    });
  };
  observer_ = makeRef<RunLoopObserver>(RunLoopBeforeWaiting, false, 0, submit);
  NSRunLoop::currentRunLoop()->addObserver(observer_, NSRunLoopCommonModes);
}

void ZEBMainThreadRunLoopDeferredTask::invokeDeferredTask() {
  if (const Ref<RunLoopObserver> observer = std::exchange(observer_, nullptr))
    observer->invalidate();
  if (task_) task_();
}

Class* ZEBMainThreadRunLoopDeferredTask::runtimeClass() {
  using Self = ZEBMainThreadRunLoopDeferredTask;
  static Class* const cls =
      registerClass("ZEBMainThreadRunLoopDeferredTask",
                    {
                        classMethod("initWithTask:",
                                    [](const Block<void()>& task) { return makeRef<Self>(task); }),
                        property("task", &Self::task),
                    });
  return cls;
}

}  // namespace zeb
