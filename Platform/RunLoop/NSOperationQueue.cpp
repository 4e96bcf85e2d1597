#include <Foundation/NSException.h>
#include <Linux/Thread.h>
#include <RunLoop/CurrentOperationPrivate.h>
#include <RunLoop/NSBlockOperation.h>
#include <RunLoop/NSOperationQueue.h>

#include <algorithm>
#include <utility>

namespace zeb {

namespace {

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

/// Tickets that are counted under the queue's mutex and given to the thread pool after it.
class NSOperationQueue::Tickets {
 public:
  explicit Tickets(NSOperationQueue& queue) : queue_(queue) {}

  /// Under the mutex.
  void add(NSOperation* readyOperation) {
    if (!target_) {
      aliveTarget_ = queue_.underlyingQueue_;
      target_ = aliveTarget_ ? aliveTarget_.get() : queue_.globalQueue_.get();
    }
    ++queue_.ticketCount_;
    if (!readyOperation || readyOperation->isTicketUsed_) {
      ++withoutOperation_;
      return;
    }
    readyOperation->isTicketUsed_ = true;
    readyOperation->retain();
    readyOperation->nextTicket_ = nullptr;
    *end_ = readyOperation;
    end_ = &readyOperation->nextTicket_;
  }

  void post() {
    while (NSOperation* operation = first_) {
      first_ = operation->nextTicket_;
      targetFor(*operation).async(operation->ticket_);
    }
    for (; withoutOperation_ > 0; --withoutOperation_) {
      target_->async(*detail::newWorkItem([queue = &queue_] { queue->useTicket(); }));
    }
  }

 private:
  DispatchQueue& targetFor(const NSOperation& operation) const {
    if (aliveTarget_ || operation.qualityOfService() == NSQualityOfServiceDefault) return *target_;
    return *globalQueueFor(operation.qualityOfService());
  }

  NSOperationQueue& queue_;
  dispatch_queue_t aliveTarget_;
  DispatchQueue* target_ = nullptr;
  NSOperation* first_ = nullptr;
  NSOperation** end_ = &first_;
  std::int64_t withoutOperation_ = 0;
};

NSOperationQueue::NSOperationQueue() : globalQueue_(globalQueueFor(qualityOfService_)) {}

NSOperationQueue::NSOperationQueue(OfMainThread)
    : isMain_(true),
      limit_(1),
      underlyingQueue_(dispatch_get_main_queue()),
      name_("NSOperationQueue Main Queue") {}

const Ref<NSOperationQueue>& NSOperationQueue::mainQueue() {
  static const auto* queue =
      new Ref<NSOperationQueue>(Ref<NSOperationQueue>::adopt(new NSOperationQueue(ofMainThread)));
  return *queue;
}

Ref<NSOperationQueue> NSOperationQueue::currentQueue() {
  const auto* current = detail::CurrentOperation::current();
  while (current && !current->queue) current = current->outer;
  if (current) return Ref(current->queue);
  return isMainThread() ? mainQueue() : nullptr;
}

// Adding. ------------------------------------------------------------------------------------------

void NSOperationQueue::addOperation(const Ref<NSOperation>& operation) {
  if (!operation) return;
  operation->claim();
  Ref<NSOperation> awaitedBarrier = latestBarrier();
  try {
    operation->addDependency(awaitedBarrier);
    operation->requireNoCircle();
    while (!append(*operation, awaitedBarrier)) operation->addDependency(awaitedBarrier);
  } catch (...) {
    operation->removeDependency(awaitedBarrier);
    operation->state_.fetch_and(~NSOperation::claimedFlag, std::memory_order_acq_rel);
    throw;
  }
}

Ref<NSOperation> NSOperationQueue::latestBarrier() const {
  std::lock_guard guard(mutex_);
  return barrier_;
}

/// False when there is a barrier other than the awaited one; then that is the one to wait for.
bool NSOperationQueue::append(NSOperation& operation, Ref<NSOperation>& awaitedBarrier) {
  Tickets tickets(*this);
  {
    std::lock_guard guard(mutex_);
    if (barrier_ && barrier_ != awaitedBarrier && !operation.isBarrier_) {
      awaitedBarrier = barrier_;
      return false;
    }
    operation.queue_ = this;
    operation.retain();
    operation.previousInQueue_ = last_;
    (last_ ? last_->nextInQueue_ : first_) = &operation;
    last_ = &operation;
    ++count_;
    if (!self_) self_ = Ref(this);
    const auto state =
        operation.state_.fetch_or(NSOperation::enqueuedFlag, std::memory_order_acq_rel);
    if (operation.shallSubmit(state | NSOperation::enqueuedFlag)) {
      pushReady(operation);
      if (hasRoomForTicket()) tickets.add(&operation);
    }
  }
  tickets.post();
  return true;
}

void NSOperationQueue::addOperations(std::span<const Ref<NSOperation>> operations,
                                     bool waitUntilFinished) {
  for (const Ref<NSOperation>& operation : operations) addOperation(operation);
  if (!waitUntilFinished) return;
  for (const Ref<NSOperation>& operation : operations) {
    if (operation) operation->waitUntilFinished();
  }
}

void NSOperationQueue::addOperationWithBlock(Block<void()> block) {
  if (block) addOperation(makeRef<NSBlockOperation>(std::move(block)));
}

void NSOperationQueue::addBarrierBlock(Block<void()> block) {
  if (!block) return;
  Ref<NSOperation> barrier = makeRef<NSBlockOperation>(std::move(block));
  barrier->isBarrier_ = true;
  barrier->claim();
  std::vector<Ref<NSOperation>> earlier;
  {
    std::lock_guard guard(mutex_);
    earlier = allOperations();
    if (barrier_) earlier.push_back(barrier_);
    barrier_ = barrier;
  }
  try {
    for (const Ref<NSOperation>& operation : earlier) barrier->addDependency(operation);
    barrier->requireNoCircle();
  } catch (...) {
    barrier->cancel();  // others wait for it already
    append(*barrier, barrier);
    throw;
  }
  append(*barrier, barrier);
}

// Running. -----------------------------------------------------------------------------------------

/// Takes over operations that have got ready, of whatever queues.
void NSOperationQueue::submit(NSOperation* readyOperations) {
  while (readyOperations) {
    NSOperationQueue& queue = *readyOperations->queue_;
    Tickets tickets(queue);
    {
      std::lock_guard guard(queue.mutex_);
      do {
        NSOperation& operation = *readyOperations;
        readyOperations = std::exchange(operation.nextReady_, nullptr);
        queue.pushReady(operation);
        if (queue.hasRoomForTicket()) tickets.add(&operation);
      } while (readyOperations && readyOperations->queue_ == &queue);
    }
    tickets.post();
  }
}

/// On a thread of the pool.
void NSOperationQueue::useTicket() {
  Ref<NSOperationQueue> idle;
  Ref<NSOperation> operation;
  {
    std::lock_guard guard(mutex_);
    --ticketCount_;
    const bool mayRun = !isSuspended_ && (limit_ < 0 || executingCount_ < limit_);
    operation = Ref(mayRun ? takeReady() : nullptr);
    if (operation) {
      ++executingCount_;
    } else {
      idle = referenceIfIdle();
    }
  }
  if (operation) operation->execute(this);
}

/// The operation has finished.
void NSOperationQueue::remove(NSOperation& operation) {
  Ref<NSOperationQueue> idle;
  std::vector<dispatch_semaphore_t> waiters;
  Ref<NSOperation> barrier;
  Tickets tickets(*this);
  {
    std::lock_guard guard(mutex_);
    (operation.previousInQueue_ ? operation.previousInQueue_->nextInQueue_ : first_) =
        operation.nextInQueue_;
    (operation.nextInQueue_ ? operation.nextInQueue_->previousInQueue_ : last_) =
        operation.previousInQueue_;
    --executingCount_;
    if (--count_ == 0) waiters.swap(waiters_);
    if (barrier_.get() == &operation) std::swap(barrier, barrier_);
    if (hasRoomForTicket()) tickets.add(firstReady());
    idle = referenceIfIdle();
  }
  tickets.post();
  for (const dispatch_semaphore_t& waiter : waiters) dispatch_semaphore_signal(waiter);
  // Later operations depend on the barrier: it must not keep all that was before it alive.
  if (operation.isBarrier_) operation.releaseDependencies();
  operation.release();
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

/// Whether one ticket more would have something to run.
bool NSOperationQueue::hasRoomForTicket() const noexcept {
  return !isSuspended_ && ticketCount_ < readyCount_ &&
         (limit_ < 0 || ticketCount_ + executingCount_ < limit_);
}

Ref<NSOperationQueue> NSOperationQueue::referenceIfIdle() noexcept {
  if (count_ > 0 || ticketCount_ > 0) return nullptr;
  return std::exchange(self_, nullptr);
}

void NSOperationQueue::waitUntilAllOperationsAreFinished() {
  if (operationCount() == 0) return;
  requireThatWaitingCanEnd();
  const dispatch_semaphore_t finished = dispatch_semaphore_create(0);
  {
    std::lock_guard guard(mutex_);
    if (count_ == 0) return;
    waiters_.push_back(finished);
  }
  dispatch_semaphore_wait(finished, DISPATCH_TIME_FOREVER);
}

void NSOperationQueue::requireThatWaitingCanEnd() const {
  bool isHopeless = isMain_ && isMainThread();
  for (auto* current = detail::CurrentOperation::current(); current; current = current->outer) {
    isHopeless = isHopeless || current->queue == this;
  }
  if (!isHopeless) return;
  throw NSException(NSGenericException, NSString::stringWithFormat(
                                            "waiting here for %s would never end", description()));
}

// Properties. --------------------------------------------------------------------------------------

std::vector<Ref<NSOperation>> NSOperationQueue::operations() const {
  std::lock_guard guard(mutex_);
  return allOperations();
}

std::vector<Ref<NSOperation>> NSOperationQueue::allOperations() const {
  std::vector<Ref<NSOperation>> operations;
  operations.reserve(count_);
  for (NSOperation* operation = first_; operation; operation = operation->nextInQueue_) {
    operations.emplace_back(operation);
  }
  return operations;
}

std::size_t NSOperationQueue::operationCount() const {
  std::lock_guard guard(mutex_);
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
  change([&] { limit_ = count; });
}

std::int64_t NSOperationQueue::maxConcurrentOperationCount() const {
  std::lock_guard guard(mutex_);
  return limit_;
}

void NSOperationQueue::setSuspended(bool suspended) {
  if (isMain_) return;
  change([&] { isSuspended_ = suspended; });
}

/// Changes what decides how many may run, and lets those run that may do so now.
void NSOperationQueue::change(FunctionView<void()> step) {
  Tickets tickets(*this);
  {
    std::lock_guard guard(mutex_);
    step();
    for (NSOperation* operation = nullptr; hasRoomForTicket();) tickets.add(operation);
  }
  tickets.post();
}

bool NSOperationQueue::isSuspended() const {
  std::lock_guard guard(mutex_);
  return isSuspended_;
}

NSQualityOfService NSOperationQueue::qualityOfService() const {
  std::lock_guard guard(mutex_);
  return qualityOfService_;
}

void NSOperationQueue::setQualityOfService(NSQualityOfService service) {
  std::lock_guard guard(mutex_);
  qualityOfService_ = service;
  globalQueue_ = globalQueueFor(service);
}

void NSOperationQueue::setUnderlyingQueue(const dispatch_queue_t& queue) {
  if (isMain_) return;
  if (queue && queue == dispatch_get_main_queue()) {
    raiseInvalidArgument("the main dispatch queue has its own operation queue");
  }
  dispatch_queue_t replaced = queue;  // released after the lock
  std::lock_guard guard(mutex_);
  if (count_ > 0)
    raiseInvalidArgument("the underlying queue can't change while there are operations");
  std::swap(underlyingQueue_, replaced);
}

dispatch_queue_t NSOperationQueue::underlyingQueue() const {
  std::lock_guard guard(mutex_);
  return underlyingQueue_;
}

NSString NSOperationQueue::name() const {
  std::lock_guard guard(mutex_);
  return name_;
}

void NSOperationQueue::setName(const NSString& name) {
  std::lock_guard guard(mutex_);
  name_ = name.copy();
}

std::string NSOperationQueue::description() const {
  const NSString itsName = name();
  return itsName.isNil() ? NSObject::description() : itsName.utf8();
}

}  // namespace zeb
