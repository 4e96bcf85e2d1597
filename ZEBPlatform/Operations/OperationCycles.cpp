#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Operations/OperationCyclesPrivate.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace zeb {

void NSOperation::CycleSearch::raiseCycle(const std::vector<Ref<NSOperation>>& cycle) {
  std::string text = "operations wait for each other: ";
  for (const Ref<NSOperation>& operation : cycle) text += operation->description() + " -> ";
  raiseInvalidArgument(text + cycle.front()->description());
}

/// Descriptions of operations are the user's code, which must not be called with the lock held.
void NSOperation::CycleSearch::unlockAndRaiseCycle(const std::vector<Ref<NSOperation>>& cycle) {
  guard_.unlock();
  raiseCycle(cycle);
}

constinit detail::Lock NSOperation::CycleSearch::searchLock;

// Marking. ---

void NSOperation::requireNoCycle() {
  if (!markAcyclicIfDependenciesAre()) CycleSearch().requireNoneFrom(*this);
}

bool NSOperation::markAcyclicIfDependenciesAre() {
  if (flags() & acyclicFlag) return true;
  const detail::LockGuard guard(lock_);
  if (flags() & acyclicFlag) return true;
  Level level = 0;
  for (const Dependencies* block = &dependencies_; block; block = block->next) {
    for (const Dependency& dependency : *block) {
      if (!dependency.operation) continue;
      const State flags = dependency.operation->flags();
      if (!(flags & (acyclicFlag | finishedFlag))) return false;
      level = std::max(level, dependency.operation->level_.load(std::memory_order_relaxed));
    }
  }
  // If a dependency is raised meanwhile, `rise` waits for this lock and then finds the mark.
  level_.store(level, std::memory_order_relaxed);
  const State uncounted = uncounted_.load(std::memory_order_relaxed);
  state_.fetch_add(acyclicFlag + uncounted * oneDependency, std::memory_order_acq_rel);
  return true;
}

void NSOperation::CycleSearch::requireNoneFrom(NSOperation& root) {
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
    if (operation.markAcyclicIfDependenciesAre()) {
      operation.state_.fetch_and(~onPathFlag, std::memory_order_relaxed);
      leave(path);
      continue;
    }
    for (Ref<NSOperation>& dependency : operation.dependenciesWithout(settledFlags)) {
      path.push_back({std::move(dependency)});
    }
  }
}

void NSOperation::CycleSearch::leave(std::vector<Step>& path) {
  visited_.push_back(std::move(path.back().operation));
  path.pop_back();
}

/// The last operation of the path is on it twice.
void NSOperation::CycleSearch::reportEnd(const std::vector<Step>& path) {
  std::vector<Ref<NSOperation>> cycle;
  for (const Step& step : path) {
    if (!step.isEntered) continue;
    step.operation->state_.fetch_and(~onPathFlag, std::memory_order_relaxed);
    if (!cycle.empty() || step.operation == path.back().operation) {
      cycle.push_back(step.operation);
    }
  }
  unlockAndRaiseCycle(cycle);
}

// Dependencies of marked operations. ---

void NSOperation::CycleSearch::requireNoCycleThrough(NSOperation& dependent,
                                                     NSOperation& dependency) {
  requireNoneFrom(dependency);
  if (dependency.isFinished() || !mayWaitFor(dependency, dependent)) return;
  requireNoPath(dependency, dependent);  // finds none if an operation on it has just finished
}

/// Whether `from`, which is marked like `target`, waits for it. Makes sure that the level of
/// `target` is not the lower one.
bool NSOperation::CycleSearch::mayWaitFor(NSOperation& from, NSOperation& target) {
  const Level level = from.level_, targetLevel = target.level_;
  if (targetLevel > level) return false;
  below_.insert(&from);
  const bool isComplete = !target.hasDependents() || collectBelow(from);
  if (isComplete && targetLevel == level) return below_.contains(&target);
  return raise(target, isComplete ? level : level + 1);
}

std::size_t NSOperation::CycleSearch::maxStepsOfNextSearch() noexcept {
  constexpr std::size_t minSteps = 32;
  static std::size_t searches = 0;  // guarded by `searchLock`
  return std::max(minSteps, static_cast<std::size_t>(std::sqrt(static_cast<double>(++searches))));
}

/// Collects what `root` waits for on its level. False if the limit of steps was reached before all
/// was collected.
bool NSOperation::CycleSearch::collectBelow(NSOperation& root) {
  const Level level = root.level_;
  std::vector<Ref<NSOperation>> waiting{Ref(&root)};
  for (std::size_t stepsLeft = maxStepsOfNextSearch(); !waiting.empty();) {
    const Ref<NSOperation> operation = visited_.emplace_back(std::move(waiting.back()));
    waiting.pop_back();
    const detail::LockGuard guard(operation->lock_);
    for (const Dependencies* block = &operation->dependencies_; block; block = block->next) {
      for (const Dependency& dependency : *block) {
        if (stepsLeft-- == 0) return false;
        const Ref<NSOperation>& next = dependency.operation;
        if (!next || next->isFinished() || next->level_ != level) continue;
        if (below_.insert(next.get()).second) waiting.push_back(next);
      }
    }
  }
  return true;
}

/// Brings an operation and everything that waits for it to the level at least. Whether one of the
/// operations below was met, which means a cycle; the levels are in order in this case too.
bool NSOperation::CycleSearch::raise(NSOperation& root, Level level) {
  bool isCycle = false;
  std::vector<Ref<NSOperation>> rising{Ref(&root)};
  while (!rising.empty()) {
    const Ref<NSOperation> operation = visited_.emplace_back(std::move(rising.back()));
    rising.pop_back();
    isCycle |= below_.contains(operation.get());
    operation->rise(level, rising);
  }
  return isCycle;
}

/// Raises a marked operation that is on a lower level; then its dependents have to follow.
void NSOperation::rise(Level level, std::vector<Ref<NSOperation>>& dependents) {
  const detail::LockGuard guard(lock_);
  if (!(flags() & acyclicFlag) || level_ >= level) return;
  level_ = level;
  for (const Dependency* next = dependents_; next; next = next->nextDependent) {
    if (next->dependent->retainUnlessDying()) {
      dependents.push_back(Ref<NSOperation>::adopt(next->dependent));
    }
  }
}

bool NSOperation::hasDependents() const {
  const detail::LockGuard guard(lock_);
  return dependents_ != nullptr;
}

/// Throws if `from` waits for `target`.
void NSOperation::CycleSearch::requireNoPath(NSOperation& from, NSOperation& target) {
  std::vector<Ref<NSOperation>> waiting{Ref(&from)};
  reachedFrom_.emplace(&from, Ref(&target));
  while (!waiting.empty()) {
    const Ref<NSOperation> operation = visited_.emplace_back(std::move(waiting.back()));
    waiting.pop_back();
    for (Ref<NSOperation>& dependency : operation->dependenciesWithout(finishedFlag)) {
      if (!reachedFrom_.emplace(dependency.get(), operation).second) continue;
      if (dependency.get() == &target) reportPath(target);
      waiting.push_back(std::move(dependency));
    }
  }
}

void NSOperation::CycleSearch::reportPath(NSOperation& target) {
  std::vector<Ref<NSOperation>> cycle{Ref(&target)};
  Ref<NSOperation> operation = reachedFrom_.at(&target);
  for (; operation.get() != &target; operation = reachedFrom_.at(operation.get())) {
    cycle.push_back(operation);
  }
  std::reverse(cycle.begin() + 1, cycle.end());
  unlockAndRaiseCycle(cycle);
}

}  // namespace zeb
