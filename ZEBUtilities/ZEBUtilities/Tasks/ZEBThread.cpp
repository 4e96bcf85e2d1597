#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Tasks/ZEBThread.h>

#include <utility>

namespace zeb {

const char* const ZEBThreadWillExitNotification = "ZEBThreadWillExitNotification";

namespace {

constexpr NSTimeInterval secondsBetweenCancellationChecks = 1.0;

/// The token of an observation that is removed by its own block. The centre keeps the token.
struct Observation : NSObject {
  WeakRef<NSObject> token;
};

Ref<NSObject> announceExitOf(const Ref<NSThread>& thread) {
  const auto observation = makeRef<Observation>();
  Ref<NSObject> token = NSNotificationCenter::defaultCenter()->addObserverForName(
      NSThreadWillExitNotification, thread, NSOperationQueue::mainQueue(),
      [observation](const Ref<NSNotification>& notification) {
        const auto& centre = NSNotificationCenter::defaultCenter();
        const Ref<NSThread> exiting = notification->object().object<NSThread>();
        centre->postNotificationName(ZEBThreadWillExitNotification, exiting->name());
        centre->removeObserver(observation->token.lock());
      });
  observation->token = token;
  return token;
}

}  // namespace

ZEBThread::ZEBThread()
    : thread_(makeRef<NSThread>([self = Ref<ZEBThread>(this)] { self->runLoop(); })),
      observer_(announceExitOf(thread_)) {
  try {
    thread_->start();
  } catch (...) {
    NSNotificationCenter::defaultCenter()->removeObserver(observer_);
    throw;
  }
}

void ZEBThread::runLoop() {
  const Ref<NSRunLoop> loop = NSRunLoop::currentRunLoop();
  loop->addPort(NSPort::port(), NSDefaultRunLoopMode);
  while (!isCancelled()) {
    loop->runMode(NSDefaultRunLoopMode,
                  NSDate::date().dateByAddingTimeInterval(secondsBetweenCancellationChecks));
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

Class* ZEBThread::runtimeClass() {
  using Self = ZEBThread;
  static Class* const cls =
      registerClass("ZEBThread", {
                                     classMethod("init", [] { return makeRef<Self>(); }),
                                     classMethod("new", [] { return makeRef<Self>(); }),
                                     method("performBlockSync:", &Self::performBlockSync),
                                     method("performBlockAsync:", &Self::performBlockAsync),
                                     method("performBlock:synchronous:", &Self::performBlock),
                                     method("isCurrentThread", &Self::isCurrentThread),
                                     method("cancel", &Self::cancel),
                                     method("isCancelled", &Self::isCancelled),
                                     property("name", &Self::name, &Self::setName),
                                 });
  return cls;
}

}  // namespace zeb
