#include <ZEBPlatform/Operations/NSBlockOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_TBB
#include <oneapi/tbb/flow_graph.h>
#endif

namespace zeb::bench {

namespace {

#if ZEB_BENCH_HAVE_TBB

constexpr std::size_t nodeCount = 10'000;
constexpr std::size_t edgesEach = 3;
constexpr std::size_t roots = edgesEach;

/// For each node but the roots, the earlier nodes that it waits for.
using Edges = std::vector<std::array<std::size_t, edgesEach>>;

Edges makeEdges() {
  std::mt19937 random(1);
  Edges edges(nodeCount);
  for (std::size_t node = roots; node < nodeCount; ++node) {
    auto& [first, second, third] = edges[node];
    do {
      for (std::size_t& earlier : edges[node]) earlier = random() % node;
    } while (first == second || second == third || first == third);
  }
  return edges;
}

template <class Node>
void runFlowGraph(const Edges& edges, std::atomic<std::uint64_t>& runs) {
  using namespace oneapi::tbb::flow;
  oneapi::tbb::flow::graph flow;
  std::vector<std::unique_ptr<Node>> nodes;
  nodes.reserve(nodeCount);
  for (std::size_t node = 0; node < nodeCount; ++node) {
    nodes.push_back(std::make_unique<Node>(flow, [&](const continue_msg&) noexcept { ++runs; }));
    if (node < roots) continue;
    for (const std::size_t earlier : edges[node]) make_edge(*nodes[earlier], *nodes.back());
  }
  for (std::size_t root = 0; root < roots; ++root) nodes[root]->try_put(continue_msg());
  flow.wait_for_all();
}

const Case graph("operations.graph", [](Report& report) {
  const auto edges = makeEdges();
  std::atomic<std::uint64_t> runs{0};
  const auto ours = [&] {
    const auto queue = makeRef<NSOperationQueue>();
    std::vector<Ref<NSOperation>> operations;
    operations.reserve(nodeCount);
    for (std::size_t node = 0; node < nodeCount; ++node) {
      operations.push_back(makeRef<NSBlockOperation>([&] { ++runs; }));
      if (node < roots) continue;
      for (const std::size_t earlier : edges[node]) {
        operations.back()->addDependency(operations[earlier]);
      }
    }
    queue->addOperations(operations, true);
  };
  ours();
  require(runs == nodeCount, "not every operation has run");
  const auto compare = [&](const char* peer, const std::function<void()>& theirs) {
    runs = 0;
    theirs();
    require(runs == nodeCount, "not every node has run");
    report.add(nanosecondsEach("NSOperationQueue, wire and run", peer, measureInTurns(ours, theirs),
                               nodeCount));
  };
  using namespace oneapi::tbb::flow;
  compare("oneTBB flow graph", [&] { runFlowGraph<continue_node<continue_msg>>(edges, runs); });
  // What oneTBB recommends for bodies as small as this one: the thread that completes a node's last
  // input calls the body directly, so the nodes do not run concurrently.
  compare("oneTBB flow graph, lightweight",
          [&] { runFlowGraph<continue_node<continue_msg, lightweight>>(edges, runs); });
});

#else

const Case graph("operations.graph", [](Report& report) { report.skip("oneTBB"); });

#endif

}  // namespace

}  // namespace zeb::bench
