#include <RunLoop/NSNotificationCenter.h>
#include <RunLoop/NSOperationQueue.h>
#include <ZEBUtilities/ZEBThread.h>

#include <utility>

namespace zeb {

const char* const ZEBThreadWillExitNotification = "ZEBThreadWillExitNotification";

namespace {

constexpr NSTimeInterval secondsBetweenLooks = 1.0;

/// An observation that its own block ends.
struct Observation : NSObject {
  Ref<NSObject> token;
};

Ref<NSObject> announceExitOf(const Ref<NSThread>& thread) {
  const auto observation = makeRef<Observation>();
  observation->token = NSNotificationCenter::defaultCenter()->addObserverForName(
      NSThreadWillExitNotification, thread, NSOperationQueue::mainQueue(),
      [observation](const Ref<NSNotification>& notification) {
        const auto& centre = NSNotificationCenter::defaultCenter();
        const Ref<NSThread> exiting = notification->object().object<NSThread>();
        centre->postNotificationName(ZEBThreadWillExitNotification, exiting->name());
        centre->removeObserver(std::exchange(observation->token, nullptr));
      });
  return observation->token;
}

}  // namespace

ZEBThread::ZEBThread()
    : thread_(makeRef<NSThread>([self = Ref<ZEBThread>(this)] { self->runLoop(); })),
      observer_(announceExitOf(thread_)) {
  thread_->start();
}

void ZEBThread::runLoop() {
  const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  loop->addPort(NSPort::port(), NSDefaultRunLoopMode);
  while (!isCancelled()) {
    loop->runMode(NSDefaultRunLoopMode,
                  NSDate::date().dateByAddingTimeInterval(secondsBetweenLooks));
  }
}

void ZEBThread::performBlock(Block<void()> block, bool synchronous) {
  if (isCancelled()) return;
  const auto callUnlessCancelled = [self = Ref<ZEBThread>(this), block = std::move(block)] {
    if (block && !self->isCancelled()) block();
  };
  performOnThread(thread_, callUnlessCancelled, synchronous);
}

bool ZEBThread::isCurrentThread() const { return NSThread::currentThread() == thread_; }

}  // namespace zeb
