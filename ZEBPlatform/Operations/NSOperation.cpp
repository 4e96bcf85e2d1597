#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Operations/CurrentOperationPrivate.h>
#include <ZEBPlatform/Operations/NSOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/Operations/OperationEndingPrivate.h>
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
    if (!runMain(nullptr)) return;
  } catch (...) {
    end();
    throw;
  }
  end();
}

/// Runs `main` unless the operation is cancelled. Returns whether the caller has to end it.
///
/// Catches only NSExceptions: on a queue, any other exception has to end the process where it is
/// thrown, before the operation counts as finished and its waiters return.
bool NSOperation::runMain(NSOperationQueue* queue) {
  if (isCancelled()) return true;
  state_.fetch_or(executingFlag, std::memory_order_acq_rel);
  const bool goesOn = isAsynchronous();
  const detail::CurrentOperation current(*this, queue);
  return !detail::loggingExceptions(*this, [this] { main(); }) || !goesOn;
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

/// Sets the flags and returns the earlier ones. If the operation had not finished before, fills
/// `ending`, and its waiters return. The caller has a reference.
NSOperation::State NSOperation::markFinished(State moreFlags, Ending& ending) noexcept {
  std::vector<dispatch_semaphore_t> waiters;
  State before = 0;
  {
    const detail::LockGuard guard(lock_);
    before = state_.fetch_or(finishedFlag | moreFlags, std::memory_order_acq_rel);
    if (before & finishedFlag) return before;
    ending.readyOperations = unlinkDependents();
    waiters.swap(waiters_);
    ending.completionBlock = std::exchange(completionBlock_, nullptr);
  }
  for (const dispatch_semaphore_t& waiter : waiters) dispatch_semaphore_signal(waiter);
  return before;
}

/// Ends an operation whose `main` was not called by its queue, or returned before. The caller has a
/// reference. An exception out of the completion block ends the process.
void NSOperation::end() noexcept {
  Ending ending;
  const State before = markFinished(0, ending);
  if (before & finishedFlag) return;
  if (before & enqueuedFlag) {
    // Until `main` has returned, the queue's reference belongs to the thread that called it.
    Ref<NSOperation> finished = before & leftFlag ? Ref<NSOperation>::adopt(this) : Ref(this);
    int none = 0;
    queue_->advance(finished, ending.readyOperations, none);
  } else {
    NSOperationQueue::submit(ending.readyOperations);
  }
  if (ending.completionBlock) ending.completionBlock();
}

/// Sets flags, counts dependencies that have finished, and returns whether the caller has to hand
/// the operation to its queue after that. One atomic operation decides it, so it is true once.
bool NSOperation::mustBeSubmittedAfter(State newFlags, State finishedDependencies) noexcept {
  State before = state_.load(std::memory_order_relaxed);
  State after = 0;
  do {
    after = (before | newFlags) - finishedDependencies * oneDependency;
    if (isToBeSubmittedIn(after)) after |= submittedFlag;
  } while (!state_.compare_exchange_weak(before, after, std::memory_order_acq_rel,
                                         std::memory_order_relaxed));
  return (after & ~before) & submittedFlag;
}

void NSOperation::cancel() {
  if (mustBeSubmittedAfter(cancelledFlag)) NSOperationQueue::submit(this);
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
