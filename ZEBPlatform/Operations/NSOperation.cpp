#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Operations/CurrentOperationPrivate.h>
#include <ZEBPlatform/Operations/NSOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/Operations/OperationDependencyPrivate.h>
#include <ZEBPlatform/Operations/OperationExceptionsPrivate.h>

#include <utility>

namespace zeb {

NSOperation::NSOperation() noexcept = default;

NSOperation::~NSOperation() { letGo(dependencies_); }

/// Reserves the operation for the caller, which will run it. Throws if it is reserved already.
void NSOperation::claim() {
  const State before = state_.fetch_or(claimedFlag, std::memory_order_acq_rel);
  if (!(before & claimedFlag)) return;
  const char* problem = before & finishedFlag    ? "has finished"
                        : before & executingFlag ? "is executing"
                                                 : "is on a queue";
  raiseInvalidArgument(NSString::stringWithFormat("%s %s", description(), problem));
}

void NSOperation::start() {
  if (isFinished()) return;
  if (!isReady()) {
    raiseInvalidArgument(NSString::stringWithFormat("%s is not ready", description()));
  }
  claim();
  const Ref<NSOperation> alive(this);
  try {
    execute(nullptr);
  } catch (...) {
    end();
    throw;
  }
}

/// Catches only NSExceptions: on a queue, any other exception has to end the process where it is
/// thrown, before the operation counts as finished and its waiters return.
void NSOperation::execute(NSOperationQueue* queue) {
  if (!isCancelled()) {
    state_.fetch_or(executingFlag, std::memory_order_acq_rel);
    const bool goesOn = isAsynchronous();
    const detail::CurrentOperation current(*this, queue);
    if (detail::loggingExceptions(*this, [this] { main(); }) && goesOn) return;
  }
  end();
}

bool detail::loggingExceptions(const NSOperation& operation, FunctionView<void()> body) {
  try {
    body();
    return true;
  } catch (const NSException& exception) {
    constexpr const char* channel = "NSOperation";
    if (OLGCanLog(nullptr, OLGLevelError, channel)) {
      OLGLogEx(nullptr, OLGLevelError, channel, "ZEBPlatform/Operations/NSOperation",
               "-[NSOperation main]", __LINE__, "exception thrown in %s: %s",
               operation.description(), exception.what());
    }
    return false;
  }
}

void NSOperation::finish() {
  const Ref<NSOperation> alive(this);
  if (isExecuting()) end();
}

/// The caller has a reference. An exception out of the completion block ends the process.
void NSOperation::end() noexcept {
  NSOperation* readyOperations = nullptr;
  std::vector<dispatch_semaphore_t> waiters;
  Block<void()> completionBlock;
  {
    const detail::LockGuard guard(lock_);
    if (state_.fetch_or(finishedFlag, std::memory_order_acq_rel) & finishedFlag) return;
    readyOperations = unlinkDependents();
    waiters.swap(waiters_);
    completionBlock = std::exchange(completionBlock_, nullptr);
  }
  for (const dispatch_semaphore_t& waiter : waiters) dispatch_semaphore_signal(waiter);
  if (flags() & enqueuedFlag) {
    queue_->remove(*this, readyOperations);
  } else {
    NSOperationQueue::submit(readyOperations);
  }
  if (completionBlock) completionBlock();
}

void NSOperation::cancel() {
  const State before = state_.fetch_or(cancelledFlag, std::memory_order_acq_rel);
  if (shallSubmit(before | cancelledFlag)) NSOperationQueue::submit(this);
}

void NSOperation::setCompletionBlock(Block<void()> block) {
  const detail::LockGuard guard(lock_);
  std::swap(completionBlock_, block);  // the old one is released after the lock
}

Block<void()> NSOperation::completionBlock() const {
  const detail::LockGuard guard(lock_);
  return completionBlock_;
}

NSString NSOperation::name() const {
  const detail::LockGuard guard(lock_);
  return name_;
}

void NSOperation::setName(const NSString& name) {
  const detail::LockGuard guard(lock_);
  name_ = name.copy();
}

std::string NSOperation::description() const {
  const NSString itsName = name();
  return itsName.isNil() ? NSObject::description() : itsName.utf8();
}

}  // namespace zeb
