#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Operations/NSOperation.h>

#include <cstddef>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace zeb {

/// Looks for cycles of operations that wait for each other; one thread at a time.
///
/// Before an operation is enqueued, it and everything that it waits for is marked as acyclic.
/// Usually all its dependencies are marked already, and a look at their marks is enough. Otherwise
/// everything that is not marked is searched, once.
///
/// If a marked operation gets a dependency later, a search is necessary each time. To keep it from
/// visiting the whole graph, marked operations have levels: no operation is on a lower level than
/// an unfinished operation that it waits for. So no operation waits for one of a higher level,
/// which answers most questions at once. When a dependency on an operation of the same or a higher
/// level is added, the search follows the dependencies of that operation within its level for a
/// limited number of steps. If the limit is reached, or the dependency's level is the higher one,
/// the waiting operation and everything that waits for it is raised: to one level above the search
/// that reached its limit, else to the dependency's level. As few operations are on high levels,
/// the work for n such dependencies is bounded by n to the power of 1.5 (after Bender, Fineman,
/// Gilbert, Tarjan: A New Approach to Incremental Cycle Detection and Related Problems, 2016).
class NSOperation::CycleSearch {
 public:
  CycleSearch() : guard_(searchLock) {}

  /// Marks the operation and whatever it waits for, or throws.
  void requireNoneFrom(NSOperation& root);
  /// Throws if the marked operation `dependent` would be in a cycle if it waited for `dependency`;
  /// otherwise adjusts the levels, so that the dependency can be added while this object lives.
  void requireNoCycleThrough(NSOperation& dependent, NSOperation& dependency);

  /// Each operation waits for the next one, the last one for the first one.
  [[noreturn]] static void raiseCycle(const std::vector<Ref<NSOperation>>& cycle);

 private:
  /// Dependencies of such an operation need no search.
  static constexpr State settledFlags = acyclicFlag | finishedFlag;

  /// Each entered operation waits for the next entered one; the others have not been visited yet.
  struct Step {
    Ref<NSOperation> operation;
    bool isEntered = false;
  };

  static std::size_t maxStepsOfNextSearch() noexcept;

  void leave(std::vector<Step>& path);
  bool mayWaitFor(NSOperation& from, NSOperation& target);
  bool collectBelow(NSOperation& root);
  bool raise(NSOperation& root, Level level);
  void requireNoPath(NSOperation& from, NSOperation& target);
  [[noreturn]] void reportEnd(const std::vector<Step>& path);
  [[noreturn]] void reportPath(NSOperation& target);

  // The analysis does not know that the guard, being a member, holds the lock since construction.
  [[noreturn]] void unlockAndRaiseCycle(const std::vector<Ref<NSOperation>>& cycle)
      ZEB_UNCHECKED_LOCKING;

  /// Held by the search in progress.
  static constinit detail::Lock searchLock;

  // Released after the lock, because the last reference to an operation may be one of these.
  std::vector<Ref<NSOperation>> visited_;
  std::unordered_map<NSOperation*, Ref<NSOperation>> reachedFrom_;
  /// The future dependency and what it is known to wait for.
  std::unordered_set<const NSOperation*> below_;
  detail::LockGuard<detail::Lock> guard_;
};

}  // namespace zeb
