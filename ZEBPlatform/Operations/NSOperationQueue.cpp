#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Linux/detail/Thread.h>
#include <ZEBPlatform/Operations/CurrentOperationPrivate.h>
#include <ZEBPlatform/Operations/NSBlockOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>

#include <algorithm>
#include <utility>

namespace zeb {

namespace {

/// Those that wait in the thread pool's own queue show it that there is work for another thread; more would
/// show no more.
constexpr std::int64_t mostTickets = 4;

/// After so many operations somebody else's work gets the thread.
constexpr int operationsPerTicket = 32;

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

/// Tickets that are counted under the queue's mutex and given to the thread pool after it. A ticket runs what
/// is first in the queue by then, and not the operation for which it was made.
class NSOperationQueue::Tickets {
 public:
  /// Under the mutex: as many as there is room for.
  void add(NSOperationQueue& queue) {
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
      operation->requireNoCircle();
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
  // The last ones first: when they have finished, mostly all others have, which costs one wait altogether.
  for (auto operation = operations.rbegin(); operation != operations.rend(); ++operation) {
    if (*operation) (*operation)->waitUntilFinished();
  }
}

Ref<NSOperation> NSOperationQueue::latestBarrier() const {
  std::lock_guard guard(mutex_);
  return barrier_;
}

/// All at once, so that those who run them don't fight for the mutex over every one. False when there is a
/// barrier other than the awaited one; then that is the one to wait for.
bool NSOperationQueue::append(std::span<const Ref<NSOperation>> operations,
                              Ref<NSOperation>& awaitedBarrier) {
  Tickets tickets;
  {
    std::lock_guard guard(mutex_);
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
  const auto enqueued = NSOperation::enqueuedFlag;
  if (operation.shallSubmit(operation.state_.fetch_or(enqueued, std::memory_order_acq_rel) |
                            enqueued)) {
    pushReady(operation);
  }
}

void NSOperationQueue::addOperationWithBlock(Block<void()> block) {
  if (block) addOperation(makeRef<NSBlockOperation>(std::move(block)));
}

/// The barrier waits for what was added since the barrier before it, and for that one, which waits for all that
/// is older. As barriers finish in their turn even when they are cancelled, that is enough.
void NSOperationQueue::addBarrierBlock(Block<void()> block) {
  if (!block) return;
  const Ref<NSOperation> barrier = makeRef<NSBlockOperation>(std::move(block));
  // It is put into the queue first, so that its place there tells what it has to wait for. Until all that is
  // known, it waits for one operation that does not exist.
  barrier->claim();
  barrier->state_.fetch_or(NSOperation::barrierFlag | NSOperation::oneDependency);
  std::vector<Ref<NSOperation>> earlier;
  {
    std::lock_guard guard(mutex_);
    for (NSOperation* operation = last_; operation; operation = operation->previousInQueue_) {
      earlier.emplace_back(operation);
      if (barrier_.get() == operation) break;
    }
    barrier_ = barrier;
    append(*barrier);
    if (!self_) self_ = Ref(this);
  }
  const auto letGo = [&barrier] {
    const auto one = NSOperation::oneDependency;
    if (barrier->shallSubmit(barrier->state_.fetch_sub(one) - one)) submit(barrier.get());
  };
  try {
    for (const Ref<NSOperation>& operation : earlier) barrier->addDependency(operation);
    barrier->requireNoCircle();
  } catch (...) {
    barrier->cancel();  // others may wait for it already
    letGo();
    throw;
  }
  letGo();
}

// Running. -----------------------------------------------------------------------------------------

/// Takes over operations that have got ready, of whatever queues.
void NSOperationQueue::submit(NSOperation* readyOperations) {
  while (readyOperations) {
    NSOperationQueue& queue = *readyOperations->queue_;
    Tickets tickets;
    {
      std::lock_guard guard(queue.mutex_);
      readyOperations = queue.pushReadyOfOwn(readyOperations);
      tickets.add(queue);
    }
    tickets.post();
  }
}

/// On a thread of the pool: runs what comes first, and some more where that keeps nobody waiting.
void NSOperationQueue::useTicket() {
  const Ref<NSOperationQueue> alive(this);
  bool hasTicket = true;
  for (int most = operationsPerTicket; most > 0; --most) {
    Ref<NSOperation> operation;
    Ref<NSOperationQueue> self;
    Tickets tickets;
    {
      std::lock_guard guard(mutex_);
      if (std::exchange(hasTicket, false)) --ticketCount_;
      if (!isSuspended_ && (limit_ < 0 || executingCount_ < limit_)) {
        operation = Ref(takeReady());
      }
      if (operation) {
        ++executingCount_;
      } else {
        self = referenceIfIdle();
      }
      // A limited queue has posted a ticket for the place that becomes free, and on somebody else's queue
      // others wait for their turn.
      if (limit_ >= 0 || underlyingQueue_) most = 1;
      tickets.add(*this);
    }
    tickets.post();
    if (!operation) return;
    operation->execute(this);
  }
}

/// The operation has finished, and these have got ready by that.
void NSOperationQueue::remove(NSOperation& operation, NSOperation* readyOperations) {
  Ref<NSOperationQueue> self;
  std::vector<dispatch_semaphore_t> waiters;
  Ref<NSOperation> barrier;
  Tickets tickets;
  {
    std::lock_guard guard(mutex_);
    (operation.previousInQueue_ ? operation.previousInQueue_->nextInQueue_ : first_) =
        operation.nextInQueue_;
    (operation.nextInQueue_ ? operation.nextInQueue_->previousInQueue_ : last_) =
        operation.previousInQueue_;
    --executingCount_;
    if (--count_ == 0) waiters.swap(waiters_);
    if (barrier_.get() == &operation) std::swap(barrier, barrier_);
    readyOperations = pushReadyOfOwn(readyOperations);
    tickets.add(*this);
    self = referenceIfIdle();
  }
  tickets.post();
  submit(readyOperations);
  for (const dispatch_semaphore_t& waiter : waiters) dispatch_semaphore_signal(waiter);
  // Later operations depend on the barrier: it must not keep all that was before it alive.
  if (operation.flags() & NSOperation::barrierFlag) operation.forgetDependencies();
  operation.release();
}

/// Takes those that are this queue's from the front of the list. Answers the rest.
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

/// Whether one ticket more would have something to run.
bool NSOperationQueue::hasRoomForTicket() const noexcept {
  return !isSuspended_ && ticketCount_ < std::min(readyCount_, mostTickets) &&
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
    std::lock_guard guard(mutex_);
    if (count_ == 0) return;
    waiters_.push_back(finished);
  }
  dispatch_semaphore_wait(finished, DISPATCH_TIME_FOREVER);
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
  Tickets tickets;
  {
    std::lock_guard guard(mutex_);
    step();
    tickets.add(*this);
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
