#pragma once

#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Operations/NSOperation.h>

#include <concepts>
#include <utility>
#include <vector>

namespace zeb {

/// Declares that operations run after others, and then makes them depend on each other in one call:
///
///     dependingOn(upload, compress, login).dependingOn(read).establishDependencies();
///
/// lets `upload` wait for `compress` and `login`, and these for `read`. A value that is cheap to copy; the
/// operations are kept alive. Nil operations are allowed and skipped. One thread at a time.
class OperationDependencyGraph {
 public:
  using Operations = std::vector<Ref<NSOperation>>;
  using Graphs = std::vector<OperationDependencyGraph>;

  /// The operations of the dependent graphs wait for these.
  OperationDependencyGraph(Operations operations, Graphs dependentOperations);
  explicit OperationDependencyGraph(Ref<NSOperation> operation);

  const Operations& operations() const noexcept;
  const Graphs& dependentOperations() const noexcept;

  /// A graph in which everything of this one runs after the given operations.
  [[nodiscard]] OperationDependencyGraph dependingOn(Operations operations) const;
  template <class... Operation>
    requires(std::convertible_to<Operation, Ref<NSOperation>> && ...)
  [[nodiscard]] OperationDependencyGraph dependingOn(Operation&&... operations) const {
    return dependingOn(Operations{std::forward<Operation>(operations)...});
  }

  /// Adds the dependencies (`NSOperation::addDependency`); starts and enqueues nothing. Dependents with equal
  /// operations count as one. Where that closes a circle of operations on queues, NSException is thrown, and
  /// those added before remain.
  void establishDependencies() const;

 private:
  /// Shared by all copies of a graph and never changed, so that a chain of any length is quickly made.
  struct Node final : NSObject {
    Node(Operations itsOperations, Graphs itsDependents);
    ~Node() override;

    const Operations operations;
    mutable Graphs dependents;  ///< taken out by the destructor
  };
  Ref<const Node> node_;
};

/// The operation as a graph, after the given ones.
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
