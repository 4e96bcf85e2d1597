#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Operations/OperationCirclesPrivate.h>
#include <ZEBPlatform/Operations/OperationDependencyPrivate.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace zeb {

void NSOperation::CircleSearch::raiseCircle(const std::vector<Ref<NSOperation>>& circle) {
  std::string text = "operations wait for each other: ";
  for (const Ref<NSOperation>& operation : circle) text += operation->description() + " -> ";
  raiseInvalidArgument(text + circle.front()->description());
}

std::mutex& NSOperation::CircleSearch::mutex() {
  static auto* mutex = new std::mutex;
  return *mutex;
}

// Marking. -----------------------------------------------------------------------------------------

void NSOperation::requireNoCircle() {
  if (!markCircleFreeIfDependenciesAre()) CircleSearch().requireNoneFrom(*this);
}

bool NSOperation::markCircleFreeIfDependenciesAre() {
  if (flags() & circleFreeFlag) return true;
  std::lock_guard guard(mutex_);
  Level level = 0;
  for (Dependencies* block = dependencies_; block; block = block->next) {
    for (const Dependency& dependency : *block) {
      if (!dependency.operation) continue;
      const State flags = dependency.operation->flags();
      if (!(flags & (circleFreeFlag | finishedFlag))) return false;
      level = std::max(level, dependency.operation->level_.load(std::memory_order_relaxed));
    }
  }
  // If a dependency rises meanwhile, then `rise` waits for this mutex, and finds the mark.
  level_.store(level, std::memory_order_relaxed);
  state_.fetch_or(circleFreeFlag, std::memory_order_release);
  return true;
}

void NSOperation::CircleSearch::requireNoneFrom(NSOperation& root) {
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

void NSOperation::CircleSearch::leave(std::vector<Step>& path) {
  visited_.push_back(std::move(path.back().operation));
  path.pop_back();
}

/// The path's last operation was met on it before.
void NSOperation::CircleSearch::reportEnd(const std::vector<Step>& path) {
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

// Dependencies of what is marked. ------------------------------------------------------------------

void NSOperation::CircleSearch::requireNoCircleThrough(NSOperation& dependent,
                                                       NSOperation& dependency) {
  requireNoneFrom(dependency);
  if (dependency.isFinished() || !mayWaitFor(dependency, dependent)) return;
  requireNoPath(dependency,
                dependent);  // and if one of its operations has just finished, there is none
}

/// Whether `from` waits for `target`, both being marked. Afterwards `target` is on no lower level.
bool NSOperation::CircleSearch::mayWaitFor(NSOperation& from, NSOperation& target) {
  const Level level = from.level_, targetLevel = target.level_;
  if (targetLevel > level) return false;
  below_.insert(&from);
  const bool isComplete = !target.hasDependents() || collectBelow(from);
  if (isComplete && targetLevel == level) return below_.contains(&target);
  return raise(target, isComplete ? level : level + 1);
}

std::size_t NSOperation::CircleSearch::stepsForNextSearch() noexcept {
  constexpr std::size_t minSteps = 32;
  static std::size_t searches = 0;  // under the mutex
  return std::max(minSteps, static_cast<std::size_t>(std::sqrt(static_cast<double>(++searches))));
}

/// Collects what `root` waits for on its level. False if that is too much, and not all was collected.
bool NSOperation::CircleSearch::collectBelow(NSOperation& root) {
  const Level level = root.level_;
  std::vector<Ref<NSOperation>> waiting{Ref(&root)};
  for (std::size_t stepsLeft = stepsForNextSearch(); !waiting.empty();) {
    const Ref<NSOperation> operation = visited_.emplace_back(std::move(waiting.back()));
    waiting.pop_back();
    std::lock_guard guard(operation->mutex_);
    for (Dependencies* block = operation->dependencies_; block; block = block->next) {
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

/// Brings an operation and all that wait for it to the level at least. Whether one of those below was met, so
/// that there is a circle; the levels are in order all the same.
bool NSOperation::CircleSearch::raise(NSOperation& root, Level level) {
  bool isCircle = false;
  std::vector<Ref<NSOperation>> rising{Ref(&root)};
  while (!rising.empty()) {
    const Ref<NSOperation> operation = visited_.emplace_back(std::move(rising.back()));
    rising.pop_back();
    isCircle |= below_.contains(operation.get());
    operation->rise(level, rising);
  }
  return isCircle;
}

/// Only what is marked has a level, and only one below this one rises; then its dependents have to follow.
void NSOperation::rise(Level level, std::vector<Ref<NSOperation>>& dependents) {
  std::lock_guard guard(mutex_);
  if (!(flags() & circleFreeFlag) || level_ >= level) return;
  level_ = level;
  for (const Dependency* next = dependents_; next; next = next->nextDependent) {
    if (next->dependent->retainUnlessDying()) {
      dependents.push_back(Ref<NSOperation>::adopt(next->dependent));
    }
  }
}

bool NSOperation::hasDependents() const {
  std::lock_guard guard(mutex_);
  return dependents_ != nullptr;
}

/// Throws if `from` waits for `target`.
void NSOperation::CircleSearch::requireNoPath(NSOperation& from, NSOperation& target) {
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

void NSOperation::CircleSearch::reportPath(NSOperation& target) {
  std::vector<Ref<NSOperation>> circle{Ref(&target)};
  Ref<NSOperation> operation = reachedFrom_.at(&target);
  for (; operation.get() != &target; operation = reachedFrom_.at(operation.get())) {
    circle.push_back(operation);
  }
  std::reverse(circle.begin() + 1, circle.end());
  lock_.unlock();
  raiseCircle(circle);
}

}  // namespace zeb
