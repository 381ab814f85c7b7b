#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "rbf_ib/CZynIBRBFInternalObject.h"

// Distances that are not numbers compare with nothing: the passes go on around them, and each exchange takes the
// number and its distance together.

namespace zyn_test::sorting_without_order_test {
namespace {

struct List {
  std::vector<int> ids;
  std::vector<double> distances;
};

List Sorted(List list) {
  CZynIBRBFInternalObject().Dis_Sorting(list.ids.data(), list.distances.data(),
                                        static_cast<int>(list.ids.size()));
  return list;
}

// Pass 1 brings 9 behind 4 and up to the one that is none; pass 2 has nothing left in front of it.
TEST(PointSortingWithoutOrder, MovesNumbersAndDistancesTogether) {
  double const none = NAN;
  List const sorted = Sorted({{1, 2, 3, 4, 5}, {9.0, 4.0, 2.0, none, 1.0}});
  EXPECT_EQ((std::vector<int>{3, 2, 1, 4, 5}), sorted.ids);
  EXPECT_EQ((std::vector<double>{2.0, 4.0, 9.0}),
            std::vector<double>(sorted.distances.begin(), sorted.distances.begin() + 3));
  EXPECT_TRUE(std::isnan(sorted.distances[3]));
  EXPECT_EQ(1.0, sorted.distances[4]);
}

// One pass is left out: of four, two passes are made, and the first two stay as the second pass leaves them.
TEST(PointSortingWithoutOrder, LeavesTheLastPassOut) {
  double const none = NAN;
  List const sorted = Sorted({{1, 2, 3, 4}, {3.0, 2.0, 1.0, none}});
  EXPECT_EQ((std::vector<int>{3, 2, 1, 4}), sorted.ids);
  List const three = Sorted({{1, 2, 3}, {none, 2.0, 1.0}});
  EXPECT_EQ((std::vector<int>{1, 3, 2}), three.ids);
}

}  // namespace
}  // namespace zyn_test::sorting_without_order_test
