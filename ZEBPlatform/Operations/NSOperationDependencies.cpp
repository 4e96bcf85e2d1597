#include <ZEBPlatform/Operations/NSOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
#include <ZEBPlatform/Operations/OperationCirclesPrivate.h>
#include <ZEBPlatform/Operations/OperationDependencyPrivate.h>

#include <unordered_set>
#include <utility>

namespace zeb {

// The mutexes of both sides guard a dependency that is in both lists.

void NSOperation::addDependency(const Ref<NSOperation>& operation) {
  if (!operation || isFinished()) return;
  if (insertDependency(operation, circleFreeFlag)) return;
  // What waits for this one may be running already, so nobody would look for circles later.
  CircleSearch search;
  search.requireNoCircleThrough(*this, *operation);
  insertDependency(operation, 0);
}

/// False, and nothing is done, when this operation has one of the flags.
bool NSOperation::insertDependency(const Ref<NSOperation>& operation, State flagsAgainst) {
  if (operation.get() == this) CircleSearch::raiseCircle({operation});
  std::scoped_lock guard(mutex_, operation->mutex_);
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
  State state = 0;
  {
    std::scoped_lock guard(mutex_, operation->mutex_);
    for (Dependencies* block = dependencies_; block; block = block->next) {
      for (Dependency& dependency : *block) {
        if (dependency.operation != operation) continue;
        dependency.operation = nullptr;  // not the last reference: the caller has one
        if (!dependency.link) continue;
        removeDependent(dependency);
        state = state_.fetch_sub(oneDependency, std::memory_order_acq_rel) - oneDependency;
      }
    }
  }
  if (shallSubmit(state)) NSOperationQueue::submit(this);
}

std::vector<Ref<NSOperation>> NSOperation::dependenciesWithout(State unwantedFlags) const {
  std::vector<Ref<NSOperation>> operations;
  std::lock_guard guard(mutex_);
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

/// Under the mutex, as the operation finishes: those that have nothing left to wait for, oldest first.
NSOperation* NSOperation::unlinkDependents() noexcept {
  NSOperation* readyOperations = nullptr;
  for (Dependency* next = std::exchange(dependents_, nullptr); next;) {
    // Read before the count goes down, after which the dependent may finish and go.
    Dependency& dependency = *std::exchange(next, next->nextDependent);
    dependency.link = nullptr;
    NSOperation& dependent = *dependency.dependent;
    const State before = dependent.state_.fetch_sub(oneDependency, std::memory_order_acq_rel);
    // Unless it is ours to submit: then it waits for that, or, when somebody cancels it meanwhile, for our mutex.
    if (!isToBeSubmittedIn(before - oneDependency)) continue;
    if (!dependent.shallSubmit(before - oneDependency)) continue;
    dependent.nextReady_ = readyOperations;
    readyOperations = &dependent;
  }
  return readyOperations;
}

void NSOperation::forgetDependencies() {
  Dependencies* forgotten = nullptr;
  {
    std::lock_guard guard(mutex_);
    forgotten = std::exchange(dependencies_, nullptr);
    lastDependencies_ = nullptr;
  }
  letGo(forgotten);
}

/// Takes the operation out of all lists, and lets go of what it depended on. Operations that die of it are
/// released one after the other and not from within each other: chains may be long.
void NSOperation::letGo(Dependencies* dependencies) noexcept {
  static constinit thread_local Dependencies** released = nullptr;
  if (!dependencies) return;
  // One that ran in the ordinary way has been left by all that it waited for.
  const State state = state_.load(std::memory_order_acquire);
  const bool isInNoList =
      (state & finishedFlag) && !(state & cancelledFlag) && state < oneDependency;
  Dependencies* last = dependencies;
  for (Dependencies* block = dependencies; block; block = block->next) {
    last = block;
    if (isInNoList) continue;
    for (Dependency& dependency : *block) {
      if (!dependency.operation) continue;
      std::lock_guard guard(dependency.operation->mutex_);
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
