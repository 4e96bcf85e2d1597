#pragma once

#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Operations/NSOperation.h>

#include <concepts>
#include <utility>
#include <vector>

namespace zeb {

/// Declares which operations run after which others, and then adds all dependencies in one call:
///
///     dependingOn(upload, compress, login).dependingOn(read).establishDependencies();
///
/// makes `upload` wait for `compress` and `login`, and these for `read`. Cheap to copy. Keeps the
/// operations alive. Nil operations are allowed and skipped. May be used by one thread at a time.
class OperationDependencyGraph {
 public:
  using Operations = std::vector<Ref<NSOperation>>;
  using Graphs = std::vector<OperationDependencyGraph>;

  /// A graph whose dependent graphs wait for these operations.
  OperationDependencyGraph(Operations operations, Graphs dependentOperations);
  explicit OperationDependencyGraph(Ref<NSOperation> operation);

  const Operations& operations() const noexcept;
  const Graphs& dependentOperations() const noexcept;

  /// A graph in which all operations of this one run after the given operations.
  [[nodiscard]] OperationDependencyGraph dependingOn(Operations operations) const;
  template <class... Operation>
    requires(std::convertible_to<Operation, Ref<NSOperation>> && ...)
  [[nodiscard]] OperationDependencyGraph dependingOn(Operation&&... operations) const {
    return dependingOn(Operations{std::forward<Operation>(operations)...});
  }

  /// Adds the dependencies (`NSOperation::addDependency`). Does not start or enqueue operations.
  /// Dependents with equal operations count as one. Throws NSException if a dependency closes a
  /// cycle of operations on queues, or if an operation would depend on itself, on a queue or not;
  /// dependencies added before remain.
  void establishDependencies() const;

 private:
  /// Shared by all copies of a graph and never changed, so that long chains are built quickly.
  struct Node final : NSObject {
    Node(Operations itsOperations, Graphs itsDependents);
    ~Node() override;

    const Operations operations;
    mutable Graphs dependents;  ///< emptied by the destructor
  };
  Ref<const Node> node_;
};

/// A graph in which the operation runs after the given ones.
[[nodiscard]] inline OperationDependencyGraph dependingOn(
    const Ref<NSOperation>& operation, OperationDependencyGraph::Operations operations) {
  return OperationDependencyGraph(operation).dependingOn(std::move(operations));
}
template <class... Operation>
  requires(std::convertible_to<Operation, Ref<NSOperation>> && ...)
[[nodiscard]] OperationDependencyGraph dependingOn(const Ref<NSOperation>& operation,
                                                   Operation&&... operations) {
  return OperationDependencyGraph(operation).dependingOn(std::forward<Operation>(operations)...);
}

}  // namespace zeb
