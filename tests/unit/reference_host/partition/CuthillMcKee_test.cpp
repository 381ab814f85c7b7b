#include "reference_host/partition/CuthillMcKee.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <random>
#include <utility>

namespace reference_host {
namespace {

struct Graph {
  std::vector<std::size_t> rowStart;
  std::vector<int> columns;
};

Graph GraphOf(int n, std::vector<std::pair<int, int>> const& edges) {
  std::vector<std::vector<int>> rows(n);
  for (auto const& [a, b] : edges) {
    rows[a].push_back(b);
    rows[b].push_back(a);
  }
  Graph graph;
  graph.rowStart.push_back(0);
  for (auto const& row : rows) {
    graph.columns.insert(graph.columns.end(), row.begin(), row.end());
    graph.rowStart.push_back(graph.columns.size());
  }
  return graph;
}

std::vector<int> OrderOf(Graph const& graph) { return CuthillMcKee(graph.rowStart, graph.columns); }

int Bandwidth(Graph const& graph, std::vector<int> const& order) {
  std::vector<int> place(order.size());
  for (std::size_t i = 0; i < order.size(); ++i) place[order[i]] = static_cast<int>(i);
  int width = 0;
  for (std::size_t v = 0; v < order.size(); ++v) {
    for (std::size_t i = graph.rowStart[v]; i < graph.rowStart[v + 1]; ++i) {
      width = std::max(width, std::abs(place[v] - place[graph.columns[i]]));
    }
  }
  return width;
}

/// A square lattice whose vertices have random numbers.
Graph ShuffledLattice(int n, unsigned seed) {
  std::vector<int> number(n * n);
  std::iota(number.begin(), number.end(), 0);
  std::shuffle(number.begin(), number.end(), std::mt19937(seed));
  std::vector<std::pair<int, int>> edges;
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      if (i + 1 < n) edges.emplace_back(number[j * n + i], number[j * n + i + 1]);
      if (j + 1 < n) edges.emplace_back(number[j * n + i], number[(j + 1) * n + i]);
    }
  }
  return GraphOf(n * n, edges);
}

TEST(CuthillMcKee, WalksAPathFromEndToEnd) {
  // 3 - 0 - 4 - 1 - 2. The end farthest from vertex 0 is 2.
  std::vector<int> const order = OrderOf(GraphOf(5, {{3, 0}, {0, 4}, {4, 1}, {1, 2}}));
  EXPECT_EQ((std::vector<int>{2, 1, 4, 0, 3}), order);
}

TEST(CuthillMcKee, TakesNeighboursByDegreeThenByNumber) {
  //   5   6
  //   |   |
  //   1 - 4 - 2      From the rim vertex 0: its neighbour 3, then of 3's neighbours (4: degree 4, 7: degree
  //   1) 7 first.
  //       |
  //   0 - 3 - 7
  std::vector<int> const order =
      OrderOf(GraphOf(8, {{0, 3}, {3, 7}, {3, 4}, {4, 1}, {4, 2}, {4, 6}, {1, 5}}));
  EXPECT_EQ((std::vector<int>{0, 3, 7, 4, 2, 6, 1, 5}), order);
}

TEST(CuthillMcKee, PlacesComponentsOneAfterTheOtherAndSingleVertices) {
  std::vector<int> const order = OrderOf(GraphOf(7, {{1, 5}, {2, 6}, {6, 4}}));
  EXPECT_EQ((std::vector<int>{0, 1, 5, 2, 6, 4, 3}), order);
}

TEST(CuthillMcKee, EmptyGraphHasEmptyOrder) { EXPECT_TRUE(OrderOf(GraphOf(0, {})).empty()); }

TEST(CuthillMcKee, BearsLoopsAndRepeatedEdges) {
  EXPECT_EQ((std::vector<int>{0, 1, 2}), OrderOf(GraphOf(3, {{0, 0}, {0, 1}, {0, 1}, {1, 2}})));
}

TEST(CuthillMcKee, ShuffledLatticeGetsBackItsBandwidth) {
  int const n = 20;
  Graph const graph = ShuffledLattice(n, 3);
  std::vector<int> before(n * n);
  std::iota(before.begin(), before.end(), 0);
  std::vector<int> const order = OrderOf(graph);
  std::vector<int> sorted = order;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(sorted, before);  // a permutation
  EXPECT_GT(Bandwidth(graph, before), 300);
  EXPECT_LE(Bandwidth(graph, order), n + 1);  // level sets of a square lattice are its diagonals
}

TEST(CuthillMcKee, SameGraphGivesTheSameOrder) {
  EXPECT_EQ(OrderOf(ShuffledLattice(15, 5)), OrderOf(ShuffledLattice(15, 5)));
}

}  // namespace
}  // namespace reference_host
