#include <ZEBUtilities/Tasks/OperationDependencyGraph.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <unordered_map>

namespace zeb {

namespace {

using Operations = OperationDependencyGraph::Operations;
using Graphs = OperationDependencyGraph::Graphs;

bool areEqual(const Operations& left, const Operations& right) {
  return std::ranges::equal(left, right, [](const auto& one, const auto& other) {
    return one == other || (one && other && one->isEqual(*other));
  });
}

/// Compare and hash lists of operations as keys, by the equality of the operations.
struct EqualLists {
  bool operator()(const Operations* left, const Operations* right) const {
    return areEqual(*left, *right);
  }
};
struct HashOfList {
  std::size_t operator()(const Operations* operations) const noexcept {
    std::size_t hash = operations->size();
    for (const auto& operation : *operations)
      hash = 31 * hash + (operation ? operation->hash() : 0);
    return hash;
  }
};

/// The dependents of one step. Those with equal operations are merged into the first of them.
std::vector<std::pair<const Operations*, Graphs>> merged(const Graphs& graphs) {
  std::vector<std::pair<const Operations*, Graphs>> entries;
  std::unordered_map<const Operations*, std::size_t, HashOfList, EqualLists> places;
  for (const OperationDependencyGraph& graph : graphs) {
    const auto [place, isNew] = places.try_emplace(&graph.operations(), entries.size());
    const Graphs& dependents = graph.dependentOperations();
    if (isNew) {
      entries.emplace_back(&graph.operations(), dependents);
    } else {
      Graphs& merged = entries[place->second].second;
      merged.insert(merged.end(), dependents.begin(), dependents.end());
    }
  }
  return entries;
}

void addDependencies(const Operations& operations, const Operations& dependents) {
  for (const Ref<NSOperation>& operation : operations) {
    for (const Ref<NSOperation>& dependent : dependents) {
      if (dependent) dependent->addDependency(operation);
    }
  }
}

}  // namespace

OperationDependencyGraph::Node::Node(Operations itsOperations, Graphs itsDependents)
    : operations(std::move(itsOperations)), dependents(std::move(itsDependents)) {}

/// Destroys the graphs that only this one owns in a loop, because nested destructors of a long
/// chain would overflow the stack.
OperationDependencyGraph::Node::~Node() {
  Graphs dying = std::move(dependents);
  while (!dying.empty()) {
    const OperationDependencyGraph graph = std::move(dying.back());
    dying.pop_back();
    if (!graph.node_->isUniquelyReferenced()) continue;
    std::ranges::move(graph.node_->dependents, std::back_inserter(dying));
    graph.node_->dependents.clear();
  }
}

OperationDependencyGraph::OperationDependencyGraph(Operations operations,
                                                   Graphs dependentOperations)
    : node_(makeRef<const Node>(std::move(operations), std::move(dependentOperations))) {}

OperationDependencyGraph::OperationDependencyGraph(Ref<NSOperation> operation)
    : OperationDependencyGraph(Operations{std::move(operation)}, {}) {}

const Operations& OperationDependencyGraph::operations() const noexcept {
  return node_->operations;
}

const Graphs& OperationDependencyGraph::dependentOperations() const noexcept {
  return node_->dependents;
}

OperationDependencyGraph OperationDependencyGraph::dependingOn(Operations operations) const {
  return OperationDependencyGraph(std::move(operations), {*this});
}

void OperationDependencyGraph::establishDependencies() const {
  struct Step {
    const Operations* operations;
    const Operations* dependents;
    Graphs theirDependents;
  };
  std::vector<Step> steps;
  const auto pushSteps = [&steps](const Operations& operations, const Graphs& dependents) {
    auto entries = merged(dependents);
    for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
      steps.push_back({&operations, entry->first, std::move(entry->second)});
    }
  };
  pushSteps(operations(), dependentOperations());
  while (!steps.empty()) {
    const Step step = std::move(steps.back());
    steps.pop_back();
    addDependencies(*step.operations, *step.dependents);
    pushSteps(*step.dependents, step.theirDependents);
  }
}

}  // namespace zeb
