#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Operations/CurrentOperationPrivate.h>
#include <ZEBPlatform/Operations/NSBlockOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/Operations/OperationEndingPrivate.h>

#include <algorithm>
#include <utility>

namespace zeb {

namespace {

/// Tickets queued in the pool at most; more would not start more threads.
constexpr std::int64_t maxTickets = 4;

/// The operations that one ticket runs at most before other work gets the thread.
constexpr int maxOperationsPerTicket = 32;

dispatch_queue_t globalQueueFor(NSQualityOfService service) {
  dispatch_queue_t queue = dispatch_get_global_queue(service);
  return queue ? queue : dispatch_get_global_queue(QOS_CLASS_DEFAULT);
}

/// 0 for the highest of the five priorities.
std::size_t rank(NSOperationQueuePriority priority) noexcept {
  const auto nearest = std::clamp<std::int64_t>(priority, NSOperationQueuePriorityVeryLow,
                                                NSOperationQueuePriorityVeryHigh);
  return static_cast<std::size_t>((NSOperationQueuePriorityVeryHigh + 2 - nearest) / 4);
}

}  // namespace

/// Tickets that are counted with the queue's lock held and given to the thread pool afterwards. A
/// ticket runs whatever is first in the queue by then, not the operation for which it was made.
class NSOperationQueue::Tickets {
 public:
  /// Adds as many as the queue has room for.
  void add(NSOperationQueue& queue) ZEB_REQUIRES(queue.lock_) {
    if (!queue.hasRoomForTicket()) return;
    queue_ = &queue;
    target_ = queue.underlyingQueue_ ? queue.underlyingQueue_ : queue.globalQueue_;
    const NSQualityOfService service = queue.firstReady()->qualityOfService();
    if (!queue.underlyingQueue_ && service != NSQualityOfServiceDefault) {
      target_ = globalQueueFor(service);
    }
    for (; queue.hasRoomForTicket(); ++queue.ticketCount_) ++count_;
  }

  void post() {
    for (; count_ > 0; --count_) {
      dispatch_async(target_, [queue = queue_] { queue->useTicket(); });
    }
  }

 private:
  NSOperationQueue* queue_ = nullptr;  // lives as long as it has tickets
  dispatch_queue_t target_;
  std::int64_t count_ = 0;
};

NSOperationQueue::NSOperationQueue() : globalQueue_(globalQueueFor(qualityOfService_)) {}

NSOperationQueue::NSOperationQueue(OfMainThread)
    : isMain_(true),
      limit_(1),
      underlyingQueue_(dispatch_get_main_queue()),
      name_("NSOperationQueue Main Queue") {}

const Ref<NSOperationQueue>& NSOperationQueue::mainQueue() {
  static const detail::NeverDestroyed<Ref<NSOperationQueue>> queue(
      Ref<NSOperationQueue>::adopt(new NSOperationQueue(ofMainThread)));
  return *queue;
}

Ref<NSOperationQueue> NSOperationQueue::currentQueue() {
  const auto* current = detail::CurrentOperation::innermost();
  while (current && !current->queue) current = current->outer();
  if (current) return Ref(current->queue);
  return isMainThread() ? mainQueue() : nullptr;
}

// Adding. ---

void NSOperationQueue::addOperation(const Ref<NSOperation>& operation) {
  addOperations({&operation, 1}, false);
}

void NSOperationQueue::addOperations(std::span<const Ref<NSOperation>> operations,
                                     bool waitUntilFinished) {
  std::size_t claimed = 0;
  try {
    Ref<NSOperation> awaitedBarrier = latestBarrier();
    for (const Ref<NSOperation>& operation : operations) {
      if (operation) operation->claim();
      ++claimed;
      if (!operation) continue;
      operation->addDependency(awaitedBarrier);
      operation->requireNoCycle();
    }
    while (!append(operations, awaitedBarrier)) {
      for (const Ref<NSOperation>& operation : operations) {
        if (operation) operation->addDependency(awaitedBarrier);
      }
    }
  } catch (...) {
    for (const Ref<NSOperation>& operation : operations.first(claimed)) {
      if (operation) operation->unclaim();
    }
    throw;
  }
  if (!waitUntilFinished) return;
  // Backwards: when the last ones have finished, most others have too, which saves waits.
  for (auto operation = operations.rbegin(); operation != operations.rend(); ++operation) {
    if (*operation) (*operation)->waitUntilFinished();
  }
}

Ref<NSOperation> NSOperationQueue::latestBarrier() const {
  const detail::LockGuard guard(lock_);
  return barrier_;
}

/// Appends all operations with one locking, so that the threads that run them do not contend for
/// the lock over each. False when there is a barrier other than `awaitedBarrier`, which then
/// becomes it.
bool NSOperationQueue::append(std::span<const Ref<NSOperation>> operations,
                              Ref<NSOperation>& awaitedBarrier) {
  Tickets tickets;
  {
    const detail::LockGuard guard(lock_);
    if (barrier_ && barrier_ != awaitedBarrier) {
      awaitedBarrier = barrier_;
      return false;
    }
    for (const Ref<NSOperation>& operation : operations) {
      if (operation) append(*operation);
    }
    if (count_ > 0 && !self_) self_ = Ref(this);
    tickets.add(*this);
  }
  tickets.post();
  return true;
}

void NSOperationQueue::append(NSOperation& operation) noexcept {
  operation.retain();
  operation.queue_ = this;
  operation.previousInQueue_ = last_;
  (last_ ? last_->nextInQueue_ : first_) = &operation;
  last_ = &operation;
  ++count_;
  if (operation.mustBeSubmittedAfter(NSOperation::enqueuedFlag)) pushReady(operation);
}

void NSOperationQueue::addOperationWithBlock(Block<void()> block) {
  if (block) addOperation(makeRef<NSBlockOperation>(std::move(block)));
}

/// The barrier waits for the operations added since the previous barrier, and for that barrier,
/// which waits for everything older. This suffices because even cancelled barriers finish in order.
void NSOperationQueue::addBarrierBlock(Block<void()> block) {
  if (!block) return;
  const Ref<NSOperation> barrier = makeRef<NSBlockOperation>(std::move(block));
  // It is put into the queue first, because its place there decides what it has to wait for. Until
  // all of that is added, a dependency that does not exist keeps it from running.
  barrier->claim();
  barrier->state_.fetch_or(NSOperation::barrierFlag | NSOperation::oneDependency);
  std::vector<Ref<NSOperation>> earlier;
  {
    const detail::LockGuard guard(lock_);
    for (NSOperation* operation = last_; operation; operation = operation->previousInQueue_) {
      earlier.emplace_back(operation);
      if (barrier_.get() == operation) break;
    }
    barrier_ = barrier;
    append(*barrier);
    if (!self_) self_ = Ref(this);
  }
  const auto letGo = [&barrier] {
    if (barrier->mustBeSubmittedAfter(0, 1)) submit(barrier.get());
  };
  try {
    for (const Ref<NSOperation>& operation : earlier) barrier->addDependency(operation);
    barrier->requireNoCycle();
  } catch (...) {
    barrier->cancel();  // other operations may wait for it already
    letGo();
    throw;
  }
  letGo();
}

// Running. ---

/// Hands operations that have become ready to their queues. The list may mix several queues.
void NSOperationQueue::submit(NSOperation* readyOperations) {
  while (readyOperations) {
    NSOperationQueue& queue = *readyOperations->queue_;
    Tickets tickets;
    {
      const detail::LockGuard guard(queue.lock_);
      readyOperations = queue.pushReadyOfOwn(readyOperations);
      tickets.add(queue);
    }
    tickets.post();
  }
}

/// On a thread of the pool: runs the first ready operation, and more if no other work has to wait
/// for the thread meanwhile.
void NSOperationQueue::useTicket() {
  const Ref<NSOperationQueue> alive(this);
  int left = maxOperationsPerTicket;
  Ref<NSOperation> none;
  NSOperation* operation = advance(none, nullptr, left);
  while (operation) operation = run(*operation, left);
}

/// Runs an operation that was taken from the queue, and takes the next one if any are `left`.
NSOperation* NSOperationQueue::run(NSOperation& operation, int& left) {
  constexpr auto leftFlag = NSOperation::leftFlag, finishedFlag = NSOperation::finishedFlag;
  NSOperation::Ending ending;
  const bool goesOn = !operation.runMain(this);
  const NSOperation::State before =
      goesOn ? operation.state_.fetch_or(leftFlag, std::memory_order_acq_rel)
             : operation.markFinished(leftFlag, ending);
  Ref<NSOperation> finished;
  if (before & finishedFlag) {
    // Another thread has finished it and left the reference to this one.
    finished = Ref<NSOperation>::adopt(&operation);
  } else if (!goesOn) {
    finished = Ref<NSOperation>::adopt(&operation);
    // The user's code must not run between taking the next operation and running it, because that
    // code may wait for it.
    int none = 0;
    const bool isUsersCodeNext = ending.completionBlock || (before & NSOperation::barrierFlag);
    NSOperation* next = advance(finished, ending.readyOperations, isUsersCodeNext ? none : left);
    if (!finished) return next;
    // Later operations keep the barrier alive, so it must not keep alive everything before it.
    if (before & NSOperation::barrierFlag) operation.forgetDependencies();
    if (ending.completionBlock) std::exchange(ending.completionBlock, nullptr)();
  }
  finished = nullptr;
  return left > 0 ? advance(finished, nullptr, left) : nullptr;
}

/// Removes a finished operation, if there is one, adds what became ready by its end, and takes the
/// next operation to run if any are `left` of the thread's ticket. All that costs one locking. If
/// the reference to the finished operation is the last one, it takes nothing and leaves that
/// reference to the caller; otherwise it releases it.
NSOperation* NSOperationQueue::advance(Ref<NSOperation>& finished, NSOperation* readyOperations,
                                       int& left) {
  Ref<NSOperationQueue> self;
  std::vector<dispatch_semaphore_t> waiters;
  Ref<NSOperation> barrier;
  Tickets tickets;
  NSOperation* next = nullptr;
  {
    const detail::LockGuard guard(lock_);
    if (left == maxOperationsPerTicket) --ticketCount_;
    readyOperations = pushReadyOfOwn(readyOperations);
    if (finished) {
      unlink(*finished);
      if (count_ == 0) waiters.swap(waiters_);
      if (barrier_ == finished) std::swap(barrier, barrier_);
      if (left > 0 && finished->releaseUnlessLast()) static_cast<void>(finished.leak());
    }
    if (!finished) next = takeNext(left);
    tickets.add(*this);
    self = referenceIfIdle();
  }
  tickets.post();
  submit(readyOperations);
  for (const dispatch_semaphore_t& waiter : waiters) dispatch_semaphore_signal(waiter);
  return next;
}

void NSOperationQueue::unlink(NSOperation& operation) noexcept {
  (operation.previousInQueue_ ? operation.previousInQueue_->nextInQueue_ : first_) =
      operation.nextInQueue_;
  (operation.nextInQueue_ ? operation.nextInQueue_->previousInQueue_ : last_) =
      operation.previousInQueue_;
  --executingCount_;
  --count_;
}

NSOperation* NSOperationQueue::takeNext(int& left) noexcept {
  if (left == 0 || isSuspended_ || (limit_ >= 0 && executingCount_ >= limit_)) return nullptr;
  NSOperation* operation = takeReady();
  if (!operation) return nullptr;
  ++executingCount_;
  // A limited queue posts a ticket for the place that becomes free, and on an underlying queue the
  // work of others waits for its turn.
  left = limit_ >= 0 || underlyingQueue_ ? 0 : left - 1;
  return operation;
}

/// Takes this queue's own operations from the front of the list and returns the rest.
NSOperation* NSOperationQueue::pushReadyOfOwn(NSOperation* readyOperations) noexcept {
  while (readyOperations && readyOperations->queue_ == this) {
    NSOperation& operation = *readyOperations;
    readyOperations = std::exchange(operation.nextReady_, nullptr);
    pushReady(operation);
  }
  return readyOperations;
}

void NSOperationQueue::pushReady(NSOperation& operation) noexcept {
  ReadyList& list = ready_[rank(operation.queuePriority())];
  *list.end = &operation;
  list.end = &operation.nextReady_;
  ++readyCount_;
}

NSOperation* NSOperationQueue::firstReady() const noexcept {
  for (const ReadyList& list : ready_) {
    if (list.first) return list.first;
  }
  return nullptr;
}

NSOperation* NSOperationQueue::takeReady() noexcept {
  for (ReadyList& list : ready_) {
    NSOperation* operation = list.first;
    if (!operation) continue;
    list.first = operation->nextReady_;
    if (!list.first) list.end = &list.first;
    --readyCount_;
    return operation;
  }
  return nullptr;
}

/// Whether one more ticket would have something to run.
bool NSOperationQueue::hasRoomForTicket() const noexcept {
  return !isSuspended_ && ticketCount_ < std::min(readyCount_, maxTickets) &&
         (limit_ < 0 || ticketCount_ + executingCount_ < limit_);
}

Ref<NSOperationQueue> NSOperationQueue::referenceIfIdle() noexcept {
  if (count_ > 0 || ticketCount_ > 0) return nullptr;
  return std::exchange(self_, nullptr);
}

void NSOperationQueue::waitUntilAllOperationsAreFinished() {
  if (operationCount() == 0) return;
  NSOperation::requireThatWaitingCanEnd([this] { return operations(); }, *this);
  const dispatch_semaphore_t finished = dispatch_semaphore_create(0);
  {
    const detail::LockGuard guard(lock_);
    if (count_ == 0) return;
    waiters_.push_back(finished);
  }
  dispatch_semaphore_wait(finished, DISPATCH_TIME_FOREVER);
}

// Properties. ---

std::vector<Ref<NSOperation>> NSOperationQueue::operations() const {
  std::vector<Ref<NSOperation>> operations;
  const detail::LockGuard guard(lock_);
  operations.reserve(count_);
  for (NSOperation* operation = first_; operation; operation = operation->nextInQueue_) {
    operations.emplace_back(operation);
  }
  return operations;
}

std::size_t NSOperationQueue::operationCount() const {
  const detail::LockGuard guard(lock_);
  return count_;
}

void NSOperationQueue::cancelAllOperations() {
  for (const Ref<NSOperation>& operation : operations()) operation->cancel();
}

void NSOperationQueue::setMaxConcurrentOperationCount(std::int64_t count) {
  if (count < NSOperationQueueDefaultMaxConcurrentOperationCount) {
    raiseInvalidArgument("the number of operations at once can't be negative");
  }
  if (isMain_) return;
  {
    const detail::LockGuard guard(lock_);
    limit_ = count;
  }
  runWhatMayRun();
}

std::int64_t NSOperationQueue::maxConcurrentOperationCount() const {
  const detail::LockGuard guard(lock_);
  return limit_;
}

void NSOperationQueue::setSuspended(bool suspended) {
  if (isMain_) return;
  {
    const detail::LockGuard guard(lock_);
    isSuspended_ = suspended;
  }
  runWhatMayRun();
}

/// After a change of the limit or the suspension.
void NSOperationQueue::runWhatMayRun() {
  Tickets tickets;
  {
    const detail::LockGuard guard(lock_);
    tickets.add(*this);
  }
  tickets.post();
}

bool NSOperationQueue::isSuspended() const {
  const detail::LockGuard guard(lock_);
  return isSuspended_;
}

NSQualityOfService NSOperationQueue::qualityOfService() const {
  const detail::LockGuard guard(lock_);
  return qualityOfService_;
}

void NSOperationQueue::setQualityOfService(NSQualityOfService service) {
  const detail::LockGuard guard(lock_);
  qualityOfService_ = service;
  globalQueue_ = globalQueueFor(service);
}

void NSOperationQueue::setUnderlyingQueue(const dispatch_queue_t& queue) {
  if (isMain_) return;
  if (queue && queue == dispatch_get_main_queue()) {
    raiseInvalidArgument("the main dispatch queue has its own operation queue");
  }
  dispatch_queue_t replaced = queue;  // released after the lock
  const detail::LockGuard guard(lock_);
  if (count_ > 0)
    raiseInvalidArgument("the underlying queue can't change while there are operations");
  std::swap(underlyingQueue_, replaced);
}

dispatch_queue_t NSOperationQueue::underlyingQueue() const {
  const detail::LockGuard guard(lock_);
  return underlyingQueue_;
}

NSString NSOperationQueue::name() const {
  const detail::LockGuard guard(lock_);
  return name_;
}

void NSOperationQueue::setName(const NSString& name) {
  const detail::LockGuard guard(lock_);
  name_ = name.copy();
}

std::string NSOperationQueue::description() const {
  const NSString itsName = name();
  return itsName.isNil() ? NSObject::description() : itsName.utf8();
}

}  // namespace zeb
