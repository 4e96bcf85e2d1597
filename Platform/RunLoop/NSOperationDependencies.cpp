#include <Foundation/NSException.h>
#include <RunLoop/NSOperation.h>
#include <RunLoop/NSOperationQueue.h>
#include <RunLoop/OperationDependencyPrivate.h>

#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace zeb {

namespace {

[[noreturn]] void raiseCircle(const std::vector<Ref<NSOperation>>& circle) {
  std::string text = "operations wait for each other: ";
  for (const Ref<NSOperation>& operation : circle) text += operation->description() + " -> ";
  raiseInvalidArgument(text + circle.front()->description());
}

}  // namespace

// Circles. -----------------------------------------------------------------------------------------
//
// Before an operation is enqueued, it and everything that it waits for is marked as free of circles. Mostly
// all that it depends on is marked already, and a look at the marks is enough. Otherwise one thread at a
// time searches.

class NSOperation::CircleSearch {
 public:
  CircleSearch() : lock_(mutex()) {}

  /// Marks the operation and whatever it waits for, or throws.
  void requireNoneFrom(NSOperation& root) {
    std::vector<Step> path{{Ref(&root)}};
    while (!path.empty()) {
      Step& step = path.back();
      NSOperation& operation = *step.operation;
      if (!step.isEntered) {
        if (operation.flags() & settledFlags) {
          leave(path);
          continue;
        }
        if (operation.flags() & onPathFlag) reportEnd(path);
        operation.state_.fetch_or(onPathFlag, std::memory_order_relaxed);
        step.isEntered = true;
      }
      if (operation.markCircleFreeIfDependenciesAre()) {
        operation.state_.fetch_and(~onPathFlag, std::memory_order_relaxed);
        leave(path);
        continue;
      }
      for (Ref<NSOperation>& dependency : operation.dependenciesWithout(settledFlags)) {
        path.push_back({std::move(dependency)});
      }
    }
  }

  /// Throws if `from` waits for `target`.
  void requireNoPath(NSOperation& from, NSOperation& target) {
    std::vector<Ref<NSOperation>> waiting{Ref(&from)};
    auto& reachedFrom = reachedFrom_;
    reachedFrom.emplace(&from, Ref(&target));
    while (!waiting.empty()) {
      const Ref<NSOperation> operation = visited_.emplace_back(std::move(waiting.back()));
      waiting.pop_back();
      for (Ref<NSOperation>& dependency : operation->dependenciesWithout(finishedFlag)) {
        if (!reachedFrom.emplace(dependency.get(), operation).second) continue;
        if (dependency.get() == &target) reportPath(reachedFrom, target);
        waiting.push_back(std::move(dependency));
      }
    }
  }

 private:
  /// Nothing below such an operation needs a look.
  static constexpr State settledFlags = circleFreeFlag | finishedFlag;

  /// Those that are entered wait each for the next one; the others still have to be looked at.
  struct Step {
    Ref<NSOperation> operation;
    bool isEntered = false;
  };

  void leave(std::vector<Step>& path) {
    visited_.push_back(std::move(path.back().operation));
    path.pop_back();
  }

  static std::mutex& mutex() {
    static auto* mutex = new std::mutex;
    return *mutex;
  }

  /// The path's last operation was met on it before.
  [[noreturn]] void reportEnd(const std::vector<Step>& path) {
    std::vector<Ref<NSOperation>> circle;
    for (const Step& step : path) {
      if (!step.isEntered) continue;
      step.operation->state_.fetch_and(~onPathFlag, std::memory_order_relaxed);
      if (!circle.empty() || step.operation == path.back().operation) {
        circle.push_back(step.operation);
      }
    }
    lock_.unlock();
    raiseCircle(circle);
  }

  [[noreturn]] void reportPath(
      const std::unordered_map<NSOperation*, Ref<NSOperation>>& reachedFrom, NSOperation& target) {
    std::vector<Ref<NSOperation>> circle{Ref(&target)};
    Ref<NSOperation> operation = reachedFrom.at(&target);
    for (; operation.get() != &target; operation = reachedFrom.at(operation.get())) {
      circle.insert(circle.begin() + 1, operation);
    }
    lock_.unlock();
    raiseCircle(circle);
  }

  // Released after the lock: the last reference to an operation may be one of these.
  std::vector<Ref<NSOperation>> visited_;
  std::unordered_map<NSOperation*, Ref<NSOperation>> reachedFrom_;
  std::unique_lock<std::mutex> lock_;
};

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

bool NSOperation::markCircleFreeIfDependenciesAre() {
  std::lock_guard guard(mutex_);
  for (Dependencies* block = dependencies_; block; block = block->next) {
    for (const Dependency& dependency : *block) {
      if (!dependency.operation) continue;
      if (!(dependency.operation->flags() & (circleFreeFlag | finishedFlag))) return false;
    }
  }
  state_.fetch_or(circleFreeFlag, std::memory_order_release);
  return true;
}

void NSOperation::requireNoCircle() {
  if (!markCircleFreeIfDependenciesAre()) CircleSearch().requireNoneFrom(*this);
}

// Dependencies. The mutexes of both sides guard one that is in both lists. ---------------------------

void NSOperation::addDependency(const Ref<NSOperation>& operation) {
  if (!operation || isFinished()) return;
  if (operation.get() == this) raiseCircle({Ref(this)});
  if (insertDependency(operation, circleFreeFlag)) return;
  // What waits for this one may be running already, so nobody would look for circles later.
  CircleSearch search;
  search.requireNoneFrom(*operation);
  if (!operation->isFinished()) search.requireNoPath(*operation, *this);
  insertDependency(operation, 0);
}

/// False, and nothing is done, when the operation has one of the flags.
bool NSOperation::insertDependency(const Ref<NSOperation>& operation, State flagsAgainst) {
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
