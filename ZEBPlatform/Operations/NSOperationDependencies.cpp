#include <ZEBPlatform/Operations/NSOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/Operations/OperationCyclesPrivate.h>

#include <functional>
#include <unordered_set>
#include <utility>

namespace zeb {

// A dependency that is in both lists is guarded by the locks of both operations.

namespace {

/// Holds the locks of two operations. Locks them by address, so that two threads cannot deadlock.
class ZEB_SCOPED_CAPABILITY LockPairGuard {
 public:
  // The analysis cannot follow which of the two is which.
  LockPairGuard(detail::BriefLock& one, detail::BriefLock& other) noexcept
      ZEB_ACQUIRES(one, other) ZEB_UNCHECKED_LOCKING : one_(one),
                                                       other_(other) {
    const bool isOneFirst = std::less<>()(&one, &other);
    (isOneFirst ? one : other).lock();
    (isOneFirst ? other : one).lock();
  }
  LockPairGuard(const LockPairGuard&) = delete;
  LockPairGuard& operator=(const LockPairGuard&) = delete;
  ~LockPairGuard() ZEB_RELEASES() ZEB_UNCHECKED_LOCKING {
    one_.unlock();
    other_.unlock();
  }

 private:
  detail::BriefLock& one_;
  detail::BriefLock& other_;
};

}  // namespace

void NSOperation::addDependency(const Ref<NSOperation>& operation) {
  if (!operation || isFinished()) return;
  if (insertDependency(operation, acyclicFlag)) return;
  // Operations that wait for this one may be enqueued already, so no later step would find a cycle.
  CycleSearch search;
  search.requireNoCycleThrough(*this, *operation);
  insertDependency(operation, 0);
}

/// Does nothing and returns false when this operation has one of the flags.
bool NSOperation::insertDependency(const Ref<NSOperation>& operation, State flagsAgainst) {
  if (operation.get() == this) CycleSearch::raiseCycle({operation});
  const LockPairGuard guard(lock_, operation->lock_);
  if (flags() & flagsAgainst) return false;
  if (lastDependencies_->isFull()) {
    lastDependencies_ = lastDependencies_->next = new Dependencies;
  }
  Dependency& dependency = lastDependencies_->entries[lastDependencies_->used++];
  dependency.operation = operation;
  dependency.dependent = this;
  if (!operation->isFinished()) {
    dependency.nextDependent = std::exchange(operation->dependents_, &dependency);
    if (flags() & countingFlags) {
      state_.fetch_add(oneDependency, std::memory_order_acq_rel);
    } else {
      uncounted_.store(uncounted_.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
  }
  return true;
}

void NSOperation::removeDependency(const Ref<NSOperation>& operation) {
  if (!operation || operation.get() == this) return;
  bool mustBeSubmitted = false;
  {
    const LockPairGuard guard(lock_, operation->lock_);
    for (Dependencies* block = &dependencies_; block; block = block->next) {
      for (Dependency& dependency : *block) {
        if (dependency.operation != operation) continue;
        dependency.operation = nullptr;  // not the last reference: the caller has one
        if (operation->isFinished()) continue;
        operation->removeDependent(dependency);
        mustBeSubmitted |= mustBeSubmittedAfter(0, 1);
      }
    }
  }
  if (mustBeSubmitted) NSOperationQueue::submit(this);
}

std::vector<Ref<NSOperation>> NSOperation::dependenciesWithout(State unwantedFlags) const {
  std::vector<Ref<NSOperation>> operations;
  const detail::LockGuard guard(lock_);
  for (const Dependencies* block = &dependencies_; block; block = block->next) {
    for (const Dependency& dependency : *block) {
      if (!dependency.operation || (dependency.operation->flags() & unwantedFlags)) continue;
      operations.push_back(dependency.operation);
    }
  }
  return operations;
}

std::vector<Ref<NSOperation>> NSOperation::dependencies() const {
  std::unordered_set<const NSOperation*> seen;
  auto operations = dependenciesWithout(0);
  std::erase_if(operations, [&](const Ref<NSOperation>& operation) {
    return !seen.insert(operation.get()).second;
  });
  return operations;
}

/// Unlinks the edge of a dependent; this operation has not finished.
void NSOperation::removeDependent(Dependency& dependency) noexcept {
  // Edges that were added since the last removal do not lead back yet.
  for (Dependency *edge = dependents_, *next = nullptr; (next = edge->nextDependent); edge = next) {
    if (next->previousDependent == edge) break;
    next->previousDependent = edge;
  }
  Dependency *const previous = dependency.previousDependent, *const next = dependency.nextDependent;
  (previous ? previous->nextDependent : dependents_) = next;
  if (next) next->previousDependent = previous;
}

/// As the operation finishes: unlinks its dependents and returns those that wait for nothing else.
NSOperation* NSOperation::unlinkDependents() noexcept {
  NSOperation* readyOperations = nullptr;
  for (Dependency* next = std::exchange(dependents_, nullptr); next;) {
    // Read before the count goes down, after which the dependent may finish and go.
    NSOperation& dependent = *std::exchange(next, next->nextDependent)->dependent;
    // If this thread has to submit it, it exists until then. Otherwise it may be gone.
    if (!dependent.mustBeSubmittedAfter(0, 1)) continue;
    dependent.nextReady_ = readyOperations;
    readyOperations = &dependent;
  }
  return readyOperations;
}

void NSOperation::forgetDependencies() {
  Dependencies forgotten;
  {
    const detail::LockGuard guard(lock_);
    std::swap(forgotten, dependencies_);
    lastDependencies_ = &dependencies_;
  }
  letGo(forgotten);
}

/// Takes the operation out of all lists and releases what it depended on. Operations that are
/// destroyed by that are released one after the other, not recursively, because chains may be long.
void NSOperation::letGo(Dependencies& dependencies) noexcept {
  static constinit thread_local NSOperation** lastReferences = nullptr;
  // An operation that ran without being cancelled was unlinked by everything that it waited for.
  const State state = countedState();
  const bool isInNoList =
      (state & finishedFlag) && !(state & cancelledFlag) && state < oneDependency;
  NSOperation* ownLastReferences = nullptr;
  const bool isOutermost = !lastReferences;
  if (isOutermost) lastReferences = &ownLastReferences;
  for (Dependencies* block = &dependencies; block; block = block->next) {
    for (Dependency& dependency : *block) {
      NSOperation* operation = dependency.operation.leak();
      if (!operation) continue;
      if (!isInNoList) {
        const detail::LockGuard guard(operation->lock_);
        if (!operation->isFinished()) operation->removeDependent(dependency);
      }
      if (operation->releaseUnlessLast()) continue;
      operation->nextReleased_ = std::exchange(*lastReferences, operation);
    }
  }
  while (dependencies.next) {
    delete std::exchange(dependencies.next, dependencies.next->next);
  }
  if (!isOutermost) return;
  while (ownLastReferences) {
    std::exchange(ownLastReferences, ownLastReferences->nextReleased_)->release();
  }
  lastReferences = nullptr;
}

}  // namespace zeb
