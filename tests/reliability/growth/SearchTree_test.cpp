// What a search of the reference host's tree costs grows as its answer, and hardly with the number of boxes.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <functional>

#include "host/ZYNOptKer.h"
#include "tests/reliability/growth/Growth.h"

namespace {

/// A mesh of n^3 cells: coordinates of the cells' edges, the same in all directions.
using Edge = std::function<double(int)>;

/// Instructions of one search around each cell of a diagonal, `reach` cells to each side.
std::uint64_t CostOfSearches(int n, Edge const& edge, int reach, int first, int last) {
  CZYNOptKer tree;
  tree.SetADTreeRange(edge(n), edge(n), edge(n), edge(0), edge(0), edge(0), 1, 10000, 200000);
  auto const middle = [&edge](int i) { return 0.5 * (edge(i) + edge(i + 1)); };
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      for (int k = 0; k < n; ++k)
        tree.AddSurfaceToADTree((i * n + j) * n + k, middle(i), middle(j), middle(k), middle(i), middle(j),
                                middle(k));
  int count = 0;
  auto const search = [&](int i) {
    double const low = edge(i - reach), high = edge(i + reach + 1);
    tree.SearchNearBlockID(low, low, low, high, high, high, count, 0);
  };
  search(first);  // packs the boxes
  EXPECT_EQ((2 * reach + 1) * (2 * reach + 1) * (2 * reach + 1), count);
  return Measure([&] {
           for (int i = first; i < last; ++i) search(i);
         }).instructions /
         static_cast<std::uint64_t>(last - first);
}

double Even(int i) { return i; }

// 64 times as many boxes are two more levels; ten would be too many, and 64 the cost of looking at all boxes.
TEST(SearchTreeGrowth, CostsHardlyMoreAmongMoreBoxes) {
  std::uint64_t const few = CostOfSearches(16, Even, 1, 4, 12), many = CostOfSearches(64, Even, 1, 28, 36);
  ASSERT_GT(few, 0U);
  EXPECT_LT(static_cast<double>(many) / static_cast<double>(few), 1.6) << few << ", then " << many;
}

TEST(SearchTreeGrowth, CostsInProportionToTheAnswer) {
  std::uint64_t const few = CostOfSearches(40, Even, 3, 16, 24), many = CostOfSearches(40, Even, 6, 16, 24);
  ASSERT_GT(few, 0U);
  EXPECT_LT(static_cast<double>(many) / static_cast<double>(few), 2197.0 / 343) << few << ", then " << many;
}

// Edges at 1e-6 to 1: where a grid would have almost all cells in one place.
TEST(SearchTreeGrowth, CostsAsMuchOnAGradedMesh) {
  constexpr int n = 32;
  auto const graded = [](int i) { return std::pow(1e6, static_cast<double>(i) / n - 1); };
  std::uint64_t const even = CostOfSearches(n, Even, 1, 4, 28), uneven = CostOfSearches(n, graded, 1, 4, 28);
  ASSERT_GT(even, 0U);
  EXPECT_LT(static_cast<double>(uneven) / static_cast<double>(even), 2.0) << even << ", then " << uneven;
}

}  // namespace
