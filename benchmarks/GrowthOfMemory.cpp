#include <algorithm>
#include <numeric>
#include <random>

#include "Bench.h"
#include "Growth.h"

namespace zeb::bench {

namespace {

/// As large as a line of a cache.
struct alignas(64) Cell {
  std::size_t next = 0;
};

/// Each cell has the index of the next one, in random order.
std::vector<Cell> makeRing(std::size_t count) {
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  std::vector<Cell> cells(count);
  for (std::size_t place = 0; place < count; ++place) {
    cells[order[place]].next = order[(place + 1) % count];
  }
  return cells;
}

void visitAll(const std::vector<Cell>& cells) {
  std::size_t place = 0;
  for (std::size_t left = cells.size(); left > 0; --left) place = cells[place].next;
  consume(place);
}

const GrowthCase memory(GrowthPlot::collections, "memory", makeRing, visitAll);

}  // namespace

}  // namespace zeb::bench
