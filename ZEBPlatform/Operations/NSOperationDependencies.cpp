#include <ZEBPlatform/Operations/NSOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/Operations/OperationCyclesPrivate.h>
#include <ZEBPlatform/Operations/OperationDependencyPrivate.h>

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
  if (!lastDependencies_ || lastDependencies_->isFull()) {
    auto* block = new Dependencies;
    (lastDependencies_ ? lastDependencies_->next : dependencies_) = block;
    lastDependencies_ = block;
  }
  Dependency& dependency = lastDependencies_->entries[lastDependencies_->used++];
  dependency.operation = operation;
  dependency.dependent = this;
  if (!operation->isFinished()) {
    operation->addDependent(dependency);
    state_.fetch_add(oneDependency, std::memory_order_acq_rel);
  }
  return true;
}

void NSOperation::removeDependency(const Ref<NSOperation>& operation) {
  if (!operation || operation.get() == this) return;
  bool mustBeSubmitted = false;
  {
    const LockPairGuard guard(lock_, operation->lock_);
    for (Dependencies* block = dependencies_; block; block = block->next) {
      for (Dependency& dependency : *block) {
        if (dependency.operation != operation) continue;
        dependency.operation = nullptr;  // not the last reference: the caller has one
        if (!dependency.link) continue;
        removeDependent(dependency);
        mustBeSubmitted |= mustBeSubmittedAfter(0, 1);
      }
    }
  }
  if (mustBeSubmitted) NSOperationQueue::submit(this);
}

std::vector<Ref<NSOperation>> NSOperation::dependenciesWithout(State unwantedFlags) const {
  std::vector<Ref<NSOperation>> operations;
  const detail::LockGuard guard(lock_);
  for (Dependencies* block = dependencies_; block; block = block->next) {
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

void NSOperation::addDependent(Dependency& dependency) noexcept {
  dependency.nextDependent = dependents_;
  if (dependents_) dependents_->link = &dependency.nextDependent;
  dependency.link = &dependents_;
  dependents_ = &dependency;
}

void NSOperation::removeDependent(Dependency& dependency) noexcept {
  *dependency.link = dependency.nextDependent;
  if (dependency.nextDependent) dependency.nextDependent->link = dependency.link;
  dependency.link = nullptr;
}

/// As the operation finishes: unlinks its dependents and returns those that wait for nothing else.
NSOperation* NSOperation::unlinkDependents() noexcept {
  NSOperation* readyOperations = nullptr;
  for (Dependency* next = std::exchange(dependents_, nullptr); next;) {
    // Read before the count goes down, after which the dependent may finish and go.
    Dependency& dependency = *std::exchange(next, next->nextDependent);
    dependency.link = nullptr;
    NSOperation& dependent = *dependency.dependent;
    // If this thread has to submit it, it exists until then. Otherwise it may be gone.
    if (!dependent.mustBeSubmittedAfter(0, 1)) continue;
    dependent.nextReady_ = readyOperations;
    readyOperations = &dependent;
  }
  return readyOperations;
}

void NSOperation::forgetDependencies() {
  Dependencies* forgotten = nullptr;
  {
    const detail::LockGuard guard(lock_);
    forgotten = std::exchange(dependencies_, nullptr);
    lastDependencies_ = nullptr;
  }
  letGo(forgotten);
}

/// Takes the operation out of all lists and releases what it depended on. Operations that are
/// destroyed by that are released one after the other, not recursively, because chains may be long.
void NSOperation::letGo(Dependencies* dependencies) noexcept {
  static constinit thread_local Dependencies** released = nullptr;
  if (!dependencies) return;
  // An operation that ran without being cancelled was unlinked by everything that it waited for.
  const State state = state_.load(std::memory_order_acquire);
  const bool isInNoList =
      (state & finishedFlag) && !(state & cancelledFlag) && state < oneDependency;
  Dependencies* last = dependencies;
  for (Dependencies* block = dependencies; block; block = block->next) {
    last = block;
    if (isInNoList) continue;
    for (Dependency& dependency : *block) {
      if (!dependency.operation) continue;
      const detail::LockGuard guard(dependency.operation->lock_);
      if (dependency.link) removeDependent(dependency);
    }
  }
  if (released) {
    last->next = std::exchange(*released, dependencies);
    return;
  }
  released = &dependencies;
  while (dependencies) delete std::exchange(dependencies, dependencies->next);
  released = nullptr;
}

}  // namespace zeb
