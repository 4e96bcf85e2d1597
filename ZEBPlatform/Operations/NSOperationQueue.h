#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Operations/NSOperation.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <vector>

namespace zeb {

/// No limit but that of the thread pool.
inline constexpr std::int64_t NSOperationQueueDefaultMaxConcurrentOperationCount = -1;

/// Runs operations on the process's thread pool, each as soon as it is ready and the limit of
/// concurrent operations allows it. Of several ready operations the one with the highest priority
/// runs first, then the one that became ready first.
///
/// The queue keeps its operations alive until they have finished, and they keep the queue alive, so
/// that no operation is lost when the queue is released. (A suspended queue with operations must be
/// resumed or cancelled before it is released.) All functions may be called from any thread.
class NSOperationQueue : public NSObject {
 public:
  NSOperationQueue();

  /// The queue of the main thread: one operation at a time, run by the main run loop. Calls that
  /// would change its limit, suspension or underlying queue do nothing.
  static const Ref<NSOperationQueue>& mainQueue();
  /// The queue of the operation that is calling; on the main thread outside of any operation, the
  /// main queue; else nil.
  static Ref<NSOperationQueue> currentQueue();

  /// An operation that is on a queue, executes or has finished, or that waits in a cycle, throws
  /// NSException (NSInvalidArgumentException) and is not added. Nil is ignored.
  void addOperation(const Ref<NSOperation>& operation);
  /// Adds all of them, in this order; after an exception, none. With `waitUntilFinished` this
  /// returns when they have finished. If they never could, it throws as
  /// `NSOperation::waitUntilFinished` does; the operations are on the queue then and run as soon as
  /// they can.
  void addOperations(std::span<const Ref<NSOperation>> operations, bool waitUntilFinished);
  void addOperations(std::initializer_list<Ref<NSOperation>> operations, bool waitUntilFinished) {
    addOperations(std::span(operations.begin(), operations.size()), waitUntilFinished);
  }
  /// Nil is ignored.
  void addOperationWithBlock(Block<void()> block);
  /// Runs the block alone: after everything that is on the queue now, before everything that is
  /// added later. A cancelled barrier does not run, but keeps its place in the order. Nil is
  /// ignored.
  void addBarrierBlock(Block<void()> block);

  /// The operations that have not finished, in the order in which they were added.
  std::vector<Ref<NSOperation>> operations() const;
  std::size_t operationCount() const;
  void cancelAllOperations();
  /// Returns when the queue is empty; completion blocks may still run. Throws NSException
  /// (NSGenericException) instead of waiting for ever if `waitUntilFinished` of one of the queue's
  /// operations would.
  void waitUntilAllOperationsAreFinished();

  /// With 0 no operation starts. Running operations are not affected. Less than -1 throws
  /// NSException (NSInvalidArgumentException).
  void setMaxConcurrentOperationCount(std::int64_t count);
  std::int64_t maxConcurrentOperationCount() const;

  /// Keeps operations from starting; running ones are not affected.
  void setSuspended(bool suspended);
  bool isSuspended() const;

  NSQualityOfService qualityOfService() const;
  void setQualityOfService(NSQualityOfService service);

  /// The dispatch queue that runs the operations; with nil, the global queue of the quality of
  /// service. Throws NSException (NSInvalidArgumentException) while there are operations, and for
  /// the main dispatch queue.
  void setUnderlyingQueue(const dispatch_queue_t& queue);
  dispatch_queue_t underlyingQueue() const;

  NSString name() const;
  void setName(const NSString& name);
  std::string description() const override;

 private:
  friend class NSOperation;

  /// Ready operations of one priority, first in first out.
  struct ReadyList {
    NSOperation* first = nullptr;
    NSOperation** end = &first;
  };
  static constexpr std::size_t priorities = 5;

  class Tickets;

  enum OfMainThread { ofMainThread };
  explicit NSOperationQueue(OfMainThread);

  static void submit(NSOperation* readyOperations);
  bool append(std::span<const Ref<NSOperation>> operations, Ref<NSOperation>& awaitedBarrier);
  void useTicket();
  NSOperation* run(NSOperation& operation, int& left);
  NSOperation* advance(Ref<NSOperation>& finished, NSOperation* readyOperations, int& left);
  void runWhatMayRun() ZEB_EXCLUDES(lock_);
  Ref<NSOperation> latestBarrier() const ZEB_EXCLUDES(lock_);

  void append(NSOperation& operation) noexcept ZEB_REQUIRES(lock_);
  void pushReady(NSOperation& operation) noexcept ZEB_REQUIRES(lock_);
  NSOperation* pushReadyOfOwn(NSOperation* readyOperations) noexcept ZEB_REQUIRES(lock_);
  NSOperation* firstReady() const noexcept ZEB_REQUIRES(lock_);
  void unlink(NSOperation& operation) noexcept ZEB_REQUIRES(lock_);
  NSOperation* takeNext(int& left) noexcept ZEB_REQUIRES(lock_);
  NSOperation* takeReady() noexcept ZEB_REQUIRES(lock_);
  bool hasRoomForTicket() const noexcept ZEB_REQUIRES(lock_);
  Ref<NSOperationQueue> referenceIfIdle() noexcept ZEB_REQUIRES(lock_);

  const bool isMain_ = false;
  mutable detail::Lock lock_;
  /// All operations, oldest first; each is retained.
  NSOperation* first_ ZEB_GUARDED_BY(lock_) = nullptr;
  NSOperation* last_ ZEB_GUARDED_BY(lock_) = nullptr;
  std::size_t count_ ZEB_GUARDED_BY(lock_) = 0;
  ReadyList ready_[priorities] ZEB_GUARDED_BY(lock_);
  std::int64_t readyCount_ ZEB_GUARDED_BY(lock_) = 0;
  /// Given to the thread pool and not begun yet.
  std::int64_t ticketCount_ ZEB_GUARDED_BY(lock_) = 0;
  std::int64_t executingCount_ ZEB_GUARDED_BY(lock_) = 0;
  std::int64_t limit_ ZEB_GUARDED_BY(lock_) = NSOperationQueueDefaultMaxConcurrentOperationCount;
  bool isSuspended_ ZEB_GUARDED_BY(lock_) = false;
  /// The latest barrier, until it has finished.
  Ref<NSOperation> barrier_ ZEB_GUARDED_BY(lock_);
  /// Set while there are operations or tickets.
  Ref<NSOperationQueue> self_ ZEB_GUARDED_BY(lock_);
  std::vector<dispatch_semaphore_t> waiters_ ZEB_GUARDED_BY(lock_);
  NSQualityOfService qualityOfService_ ZEB_GUARDED_BY(lock_) = NSQualityOfServiceDefault;
  /// The queue of that quality, used unless there is an underlying one.
  dispatch_queue_t globalQueue_ ZEB_GUARDED_BY(lock_);
  dispatch_queue_t underlyingQueue_ ZEB_GUARDED_BY(lock_);  ///< nil unless it was set
  NSString name_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb
