#pragma once

#include <ZEBPlatform/Concurrency/detail/BriefLock.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Operations/detail/Dependencies.h>

#include <atomic>
#include <cstdint>
#include <vector>

namespace zeb {

class NSOperationQueue;

/// The order in which a queue runs its ready operations. Other numbers count as the nearest of
/// these.
enum NSOperationQueuePriority : std::int64_t {
  NSOperationQueuePriorityVeryLow = -8,
  NSOperationQueuePriorityLow = -4,
  NSOperationQueuePriorityNormal = 0,
  NSOperationQueuePriorityHigh = 4,
  NSOperationQueuePriorityVeryHigh = 8,
};

/// How urgent an operation's or a queue's work is for the process's thread pool.
enum NSQualityOfService : std::int64_t {
  NSQualityOfServiceUserInteractive = 0x21,
  NSQualityOfServiceUserInitiated = 0x19,
  NSQualityOfServiceUtility = 0x11,
  NSQualityOfServiceBackground = 0x09,
  NSQualityOfServiceDefault = -1,  ///< of an operation: as its queue
};

/// One piece of work that runs once, after the operations that it depends on, usually on an
/// `NSOperationQueue`. Subclasses override `main`; see also `NSBlockOperation`.
///
/// An operation becomes ready when all its dependencies are finished (cancelled ones finish too) or
/// when it is cancelled, and is run once by its queue or by `start`. A cancelled operation finishes
/// without running its `main`, or as soon as its running `main` sees `isCancelled` and returns. An
/// operation that depends on one that is never started never runs.
///
/// An NSException that leaves `main` is logged and the operation finishes. The platform does not
/// handle any other exception. On a queue it ends the process where it is thrown, before the
/// operation finishes and its waiters return. Out of `start` it reaches the caller, after the
/// operation has finished.
///
/// Operations in a cycle of dependencies would never run. Cycles are reported instead: enqueueing
/// an operation throws NSException (NSInvalidArgumentException) that names the cycle if the
/// operation or anything that it waits for is part of one. So does an `addDependency` that closes a
/// cycle of operations on queues, or that makes an operation wait for itself, on a queue or not.
///
/// Everything may be called from any thread. Priority, quality of service, name and completion
/// block must be set before the operation is enqueued.
class NSOperation : public NSObject {
 public:
  NSOperation() noexcept;
  ~NSOperation() override;

  /// Runs the operation on this thread. Throws NSException (NSInvalidArgumentException) if it is
  /// not ready, executes already or is on a queue. Does nothing if it has finished.
  void start();
  /// The work. An asynchronous operation only begins it here.
  virtual void main() {}
  /// Sets `isCancelled`; a running `main` is not interrupted. An operation that waits on a queue
  /// becomes ready, whatever it depends on, and finishes. Overrides must call this.
  virtual void cancel();

  bool isCancelled() const noexcept { return flags() & cancelledFlag; }
  bool isExecuting() const noexcept {
    return (flags() & (executingFlag | finishedFlag)) == executingFlag;
  }
  bool isFinished() const noexcept { return flags() & finishedFlag; }
  /// Whether it waits for nothing any more.
  bool isReady() const noexcept { return isReadyIn(countedState()); }
  /// Whether the operation continues after `main` has returned, until `finish` is called.
  virtual bool isAsynchronous() const noexcept { return false; }

  /// Makes this operation wait for another one; nil is ignored. Has no effect once this operation
  /// is ready on a queue. The other operation is kept alive as long as this one depends on it, even
  /// after it has finished.
  void addDependency(const Ref<NSOperation>& operation);
  /// Does nothing for nil and for an operation that is not a dependency.
  void removeDependency(const Ref<NSOperation>& operation);
  /// In the order in which they were added, without duplicates.
  std::vector<Ref<NSOperation>> dependencies() const;

  /// Called once after the operation has finished, on the thread that finished it. By then
  /// `isFinished` is true, and waiters and dependent operations may run already. Released as soon
  /// as it has run. An exception that leaves it ends the process.
  virtual void setCompletionBlock(Block<void()> block);
  Block<void()> completionBlock() const;

  NSOperationQueuePriority queuePriority() const noexcept { return queuePriority_; }
  void setQueuePriority(NSOperationQueuePriority priority) noexcept { queuePriority_ = priority; }
  NSQualityOfService qualityOfService() const noexcept { return qualityOfService_; }
  void setQualityOfService(NSQualityOfService service) noexcept { qualityOfService_ = service; }
  NSString name() const;
  void setName(const NSString& name);

  /// Returns when the operation has finished; its completion block may still run.
  ///
  /// Throws NSException (NSGenericException) instead of waiting for ever if this operation, or an
  /// unfinished one that it depends on, directly or not,
  ///  - is one whose `main` is calling;
  ///  - is on the queue of the operation that is calling, which runs one at a time;
  ///  - is on the main queue and has not begun, and the main thread is calling.
  ///
  /// Changes after the wait has begun are not seen. Neither is anything that an operation waits for
  /// other than its dependencies: its own waits, dispatch queues, semaphores.
  void waitUntilFinished();

  /// The name, or the class and address.
  std::string description() const override;

 protected:
  /// Ends an asynchronous operation. Any thread. Does nothing before `main` is called, and when
  /// called again.
  void finish();

 private:
  friend class NSOperationQueue;
  class CycleSearch;
  class WaitCheck;
  struct Ending;
  using Dependency = detail::Dependency;
  using Dependencies = detail::Dependencies;

  // The state is one word, so that every step and what it leads to are one atomic operation: flags,
  // and above them the number of unfinished dependencies.
  using State = std::uint64_t;
  static constexpr State cancelledFlag = 1;
  static constexpr State claimedFlag = 2;    ///< a queue or `start` runs it or will run it
  static constexpr State enqueuedFlag = 4;   ///< its queue waits for it to become ready
  static constexpr State submittedFlag = 8;  ///< was ready: its queue may run it at any time
  static constexpr State executingFlag = 16;
  static constexpr State finishedFlag = 32;
  static constexpr State acyclicFlag = 64;   ///< neither it nor what it waits for is in a cycle
  static constexpr State onPathFlag = 128;   ///< of the search for cycles
  static constexpr State barrierFlag = 256;  ///< waits for its dependencies even when cancelled
  static constexpr State leftFlag = 512;     ///< the thread of its queue does not use it any more
  static constexpr State oneDependency = State{1} << 32;
  /// With one of these, new dependencies are counted in the state. Without, which is before the
  /// operation is enqueued, only the ends of dependencies are: the additions are in `uncounted_`,
  /// because that needs no atomic operation. The number in the state may be negative then.
  static constexpr State countingFlags = acyclicFlag | barrierFlag;

  State flags() const noexcept { return state_.load(std::memory_order_acquire); }
  /// The state with all unfinished dependencies.
  State countedState() const noexcept {
    const State state = flags();
    if (state & countingFlags) return state;
    return state + uncounted_.load(std::memory_order_relaxed) * oneDependency;
  }
  static bool isReadyIn(State state) noexcept {
    return (state & (cancelledFlag | barrierFlag)) == cancelledFlag || state < oneDependency;
  }
  /// Whether an operation in this state has to be handed to its queue. An operation in another
  /// state may run and be destroyed at any time, so that only owners of a reference may touch it.
  static bool isToBeSubmittedIn(State state) noexcept {
    return (state & (enqueuedFlag | submittedFlag)) == enqueuedFlag && isReadyIn(state);
  }
  bool mustBeSubmittedAfter(State newFlags, State finishedDependencies = 0) noexcept;

  void claim();
  void unclaim() noexcept { state_.fetch_and(~claimedFlag, std::memory_order_acq_rel); }
  bool runMain(NSOperationQueue* queue);
  State markFinished(State moreFlags, Ending& ending) noexcept;
  void end() noexcept;
  /// Throws if a wait for all these operations, which make up `what`, would certainly never end.
  static void requireThatWaitingCanEnd(FunctionView<std::vector<Ref<NSOperation>>()> awaited,
                                       const NSObject& what);
  bool isHeldUpBy(const WaitCheck& caller, bool isAwaitedItself) const;

  // See OperationCyclesPrivate.h.
  using Level = std::uint32_t;
  void requireNoCycle();
  bool markAcyclicIfDependenciesAre() ZEB_EXCLUDES(lock_);
  void rise(Level level, std::vector<Ref<NSOperation>>& dependents) ZEB_EXCLUDES(lock_);
  bool hasDependents() const ZEB_EXCLUDES(lock_);

  bool insertDependency(const Ref<NSOperation>& operation, State flagsAgainst);
  std::vector<Ref<NSOperation>> dependenciesWithout(State unwantedFlags) const ZEB_EXCLUDES(lock_);
  void removeDependent(Dependency& dependency) noexcept ZEB_REQUIRES(lock_);
  NSOperation* unlinkDependents() noexcept ZEB_REQUIRES(lock_);
  void forgetDependencies() ZEB_EXCLUDES(lock_);
  void letGo(Dependencies& dependencies) noexcept;

  std::atomic<State> state_{0};
  mutable detail::BriefLock lock_;
  std::atomic<Level> level_{0};                             ///< changed with the lock held
  std::atomic<std::uint32_t> uncounted_{0};                 ///< changed with the lock held
  Dependency* dependents_ ZEB_GUARDED_BY(lock_) = nullptr;  ///< the operations that wait for this
  Dependencies* lastDependencies_ ZEB_GUARDED_BY(lock_) = &dependencies_;
  Dependencies dependencies_ ZEB_GUARDED_BY(lock_);
  std::vector<dispatch_semaphore_t> waiters_ ZEB_GUARDED_BY(lock_);
  Block<void()> completionBlock_ ZEB_GUARDED_BY(lock_);
  NSString name_ ZEB_GUARDED_BY(lock_);

  NSOperationQueuePriority queuePriority_ = NSOperationQueuePriorityNormal;
  NSQualityOfService qualityOfService_ = NSQualityOfServiceDefault;

  NSOperationQueue* queue_ = nullptr;  ///< set once, before `enqueuedFlag`
  /// Links operations that became ready together, then the ready operations of the queue.
  NSOperation* nextReady_ = nullptr;
  // The queue's list of all operations, guarded by the queue's lock:
  NSOperation* nextInQueue_ = nullptr;
  NSOperation* previousInQueue_ = nullptr;
  /// Links the operations that a thread is about to release, each by its last reference.
  NSOperation* nextReleased_ = nullptr;
};

}  // namespace zeb
