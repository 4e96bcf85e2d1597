#pragma once

#include <ZEBPlatform/Operations/NSOperation.h>

#include <cstddef>
#include <mutex>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace zeb {

/// Looks for circles of operations that wait for each other; one thread at a time.
///
/// Before an operation is enqueued, it and everything that it waits for is marked as free of circles. Mostly all
/// that it depends on is marked already, and a look at the marks is enough. Otherwise everything that is not
/// marked is searched, once.
///
/// What is marked and gets a dependency later has to be searched each time. So that this does not look through
/// the whole graph, marked operations have levels: none is on a lower level than an unfinished one that it waits
/// for. Nothing waits for an operation of a higher level, which answers most questions at once. To add a
/// dependency on an operation of the same level or a higher one, the search goes down from there within its
/// level for a limited number of steps. If there is more, or the level is the higher one, the waiting operation
/// and all that wait for it rise: one step above where the search had no end, else to that level. As few
/// operations are on high levels, the work for n such dependencies is bounded by n to the power of 1.5 (after
/// Bender, Fineman, Gilbert, Tarjan: A New Approach to Incremental Cycle Detection and Related Problems, 2016).
class NSOperation::CircleSearch {
 public:
  CircleSearch() : lock_(mutex()) {}

  /// Marks the operation and whatever it waits for, or throws.
  void requireNoneFrom(NSOperation& root);
  /// Throws if the marked operation `dependent` would be in a circle if it waited for `dependency`; otherwise
  /// sees to the levels, so that the dependency can be added while this lives.
  void requireNoCircleThrough(NSOperation& dependent, NSOperation& dependency);

  /// Each one waits for the next one, the last one for the first one.
  [[noreturn]] static void raiseCircle(const std::vector<Ref<NSOperation>>& circle);

 private:
  /// Nothing below such an operation needs a look.
  static constexpr State settledFlags = circleFreeFlag | finishedFlag;

  /// Those that are entered wait each for the next one; the others still have to be looked at.
  struct Step {
    Ref<NSOperation> operation;
    bool isEntered = false;
  };

  static std::mutex& mutex();
  static std::size_t stepsForNextSearch() noexcept;

  void leave(std::vector<Step>& path);
  bool mayWaitFor(NSOperation& from, NSOperation& target);
  bool collectBelow(NSOperation& root);
  bool raise(NSOperation& root, Level level);
  void requireNoPath(NSOperation& from, NSOperation& target);
  [[noreturn]] void reportEnd(const std::vector<Step>& path);
  [[noreturn]] void reportPath(NSOperation& target);

  // Released after the lock: the last reference to an operation may be one of these.
  std::vector<Ref<NSOperation>> visited_;
  std::unordered_map<NSOperation*, Ref<NSOperation>> reachedFrom_;
  std::unordered_set<const NSOperation*>
      below_;  ///< what the future dependency is known to wait for, and itself
  std::unique_lock<std::mutex> lock_;
};

}  // namespace zeb
