#include <ZEBPlatform/RunLoop/LoopTimePrivate.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <ZEBPlatform/RunLoop/NSThread.h>
#include <ZEBPlatform/RunLoop/PostedBlockPrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopCorePrivate.h>

namespace zeb {

NSRunLoop::NSRunLoop(bool isMain) : core_(std::make_unique<detail::RunLoopCore>(isMain)) {}
NSRunLoop::~NSRunLoop() = default;

Ref<NSRunLoop> NSRunLoop::make(bool isMain) { return Ref<NSRunLoop>::adopt(new NSRunLoop(isMain)); }

Ref<NSRunLoop> NSRunLoop::currentRunLoop() { return NSThread::currentThread()->runLoop(); }
const Ref<NSRunLoop>& NSRunLoop::mainRunLoop() { return NSThread::mainThread()->runLoop(); }

void NSRunLoop::run() { core_->run(NSDefaultRunLoopMode, UINT64_MAX, false); }

void NSRunLoop::runUntilDate(const NSDate& limit) {
  core_->run(NSDefaultRunLoopMode, detail::momentOfDate(limit), false);
}

void NSRunLoop::runFor(std::chrono::duration<double> limit) {
  core_->run(NSDefaultRunLoopMode, detail::momentAfter(limit.count()), false);
}

bool NSRunLoop::runMode(const NSString& mode, std::chrono::duration<double> limit) {
  return core_->run(mode, detail::momentAfter(limit.count()), true);
}

bool NSRunLoop::runMode(const NSString& mode, const NSDate& limit) {
  return core_->run(mode, detail::momentOfDate(limit), true);
}

void NSRunLoop::stop() { core_->stop(); }

NSDate NSRunLoop::limitDateForMode(const NSString& mode) {
  const detail::RunLoopModes::Outlook outlook = core_->fireTimers(mode);
  if (outlook.hasTimers) return detail::dateOfMoment(outlook.nextWakeUp);
  return outlook.hasInputs ? NSDate::distantFuture() : nullptr;
}

NSString NSRunLoop::currentMode() const { return core_->currentMode(); }

void NSRunLoop::post(detail::WorkItem& item) {
  if (!core_->post(item)) detail::PostedBlock::drop(item);
}

void NSRunLoop::post(detail::WorkItem& item, const NSArray& modes, const void* target) {
  item.runner = new detail::PostedBlock(modes, target);
  if (modes.count() == 0 || !core_->post(item)) detail::PostedBlock::drop(item);
}

void NSRunLoop::cancelPerformBlocksWithTarget(const void* target) { core_->dropBlocks(target); }

bool NSRunLoop::add(RunLoopItem& item, const NSString& mode) {
  {
    const detail::LockGuard guard(item.lock_);
    if (!item.isValid() || (item.loop_ && item.loop_.get() != this)) return false;
    if (core_->modes().insert(item, mode)) {
      item.loop_ = Ref<NSRunLoop>(this);
      return true;
    }
  }
  item.invalidate();
  return false;
}

void NSRunLoop::remove(RunLoopItem* item, const NSString& mode) {
  if (item) core_->remove(*item, mode);
}

void NSRunLoop::addTimer(const Ref<NSTimer>& timer, const NSString& mode) {
  if (!timer || !add(*timer, mode)) return;
  timer->schedule();
  // If the loop has ended in between, it did not see the timer.
  if (core_->modes().isClosed()) timer->invalidate();
}

void NSRunLoop::addObserver(const Ref<RunLoopObserver>& observer, const NSString& mode) {
  if (observer && add(*observer, mode)) core_->observerWasAdded();
}

void NSRunLoop::removeObserver(const Ref<RunLoopObserver>& observer, const NSString& mode) {
  remove(observer.get(), mode);
}

void NSRunLoop::addSource(const Ref<RunLoopSource>& source, const NSString& mode) {
  // The source may have been signalled before.
  if (source && add(*source, mode)) core_->requestPass();
}

void NSRunLoop::removeSource(const Ref<RunLoopSource>& source, const NSString& mode) {
  remove(source.get(), mode);
}

void NSRunLoop::addDescriptorSource(const Ref<RunLoopDescriptorSource>& source,
                                    const NSString& mode) {
  if (!source || !source->isValid()) return;
  if (!core_->canWatch(source->descriptor())) return source->invalidate();
  if (add(*source, mode)) core_->watch(source->descriptor());
}

void NSRunLoop::removeDescriptorSource(const Ref<RunLoopDescriptorSource>& source,
                                       const NSString& mode) {
  remove(source.get(), mode);
}

void NSRunLoop::addPort(const Ref<NSPort>& port, const NSString& mode) {
  if (port) add(*port, mode);
}

void NSRunLoop::removePort(const Ref<NSPort>& port, const NSString& mode) {
  remove(port.get(), mode);
}

void NSRunLoop::addCommonMode(const NSString& mode) { core_->makeCommon(mode); }
int NSRunLoop::pollableDescriptor() { return core_->pollableDescriptor(); }
void NSRunLoop::runPending() { core_->runPending(); }

}  // namespace zeb
