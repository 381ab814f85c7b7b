#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "tests/support/rbf_ib/PlainPointOperator.h"

// The sort that leaves out the last pass of a bubble sort: the first two stay in the order in which the passes
// before left them, and the two-seed rule rests on that.

namespace zyn_test::sorting_test {
namespace {

/// Two parallel arrays with an element before and behind that must not be touched.
struct Pairs {
  explicit Pairs(std::vector<double> d) : ids(d.size()), distances(std::move(d)) {
    std::iota(ids.begin(), ids.end(), 1);
  }
  bool operator==(Pairs const& other) const { return ids == other.ids && distances == other.distances; }

  std::vector<int> ids;
  std::vector<double> distances;
};

Pairs Sorted(Pairs const& pairs) {
  constexpr int kGuard = -99;
  std::vector<int> ids(1, kGuard);
  std::vector<double> distances(1, kGuard);
  ids.insert(ids.end(), pairs.ids.begin(), pairs.ids.end());
  distances.insert(distances.end(), pairs.distances.begin(), pairs.distances.end());
  ids.push_back(kGuard);
  distances.push_back(kGuard);
  CZynIBRBFInternalObject().Dis_Sorting(&ids[1], &distances[1], static_cast<int>(pairs.ids.size()));
  EXPECT_TRUE(ids.front() == kGuard && ids.back() == kGuard);
  EXPECT_TRUE(distances.front() == kGuard && distances.back() == kGuard);
  Pairs result({});
  result.ids.assign(ids.begin() + 1, ids.end() - 1);
  result.distances.assign(distances.begin() + 1, distances.end() - 1);
  return result;
}

void ExpectSorted(std::vector<double> const& given, std::vector<double> const& distances,
                  std::vector<int> const& ids) {
  Pairs const result = Sorted(Pairs(given));
  EXPECT_EQ(distances, result.distances);
  EXPECT_EQ(ids, result.ids);
}

TEST(PointSorting, LeavesUpToTwoElementsAsTheyStand) {
  CZynIBRBFInternalObject().Dis_Sorting(nullptr, nullptr, 0);
  ExpectSorted({5}, {5}, {1});
  ExpectSorted({5, 4}, {5, 4}, {1, 2});
  ExpectSorted({4, 5}, {4, 5}, {1, 2});
}

TEST(PointSorting, OfThreeWithTheSmallestLastPutsTheSecondInFront) {
  ExpectSorted({2, 3, 1}, {2, 1, 3}, {1, 3, 2});
  ExpectSorted({3, 2, 1}, {2, 1, 3}, {2, 3, 1});
}

TEST(PointSorting, OfThreeWithTheSmallestElsewhereIsComplete) {
  ExpectSorted({1, 2, 3}, {1, 2, 3}, {1, 2, 3});
  ExpectSorted({1, 3, 2}, {1, 2, 3}, {1, 3, 2});
  ExpectSorted({2, 1, 3}, {1, 2, 3}, {2, 1, 3});
  ExpectSorted({3, 1, 2}, {1, 2, 3}, {2, 3, 1});
}

TEST(PointSorting, KeepsEqualDistancesInTheirOrder) {
  ExpectSorted({2, 1, 2, 1, 2}, {1, 1, 2, 2, 2}, {2, 4, 1, 3, 5});
  ExpectSorted({1, 1, 1, 1}, {1, 1, 1, 1}, {1, 2, 3, 4});
}

// One pass is missing, so the second smallest comes first only if the smallest stood at the very end.
TEST(PointSorting, OfManyLeavesAtMostTheFirstTwoExchanged) {
  ExpectSorted({5, 4, 3, 2, 1}, {2, 1, 3, 4, 5}, {4, 5, 3, 2, 1});
  ExpectSorted({5, 4, 3, 1, 2}, {1, 2, 3, 4, 5}, {4, 5, 3, 2, 1});
}

TEST(PointSorting, OfAllPermutationsOfUpToSevenEqualsThePlainLoop) {
  for (int n = 0; n <= 7; ++n) {
    std::vector<double> distances(static_cast<std::size_t>(n));
    std::iota(distances.begin(), distances.end(), 1.0);
    do {
      Pairs plain(distances);
      PlainPointOperator::SortAllButTheFirstTwo(plain.ids, plain.distances);
      ASSERT_EQ(plain, Sorted(Pairs(distances))) << ::testing::PrintToString(distances);
    } while (std::next_permutation(distances.begin(), distances.end()));
  }
}

TEST(PointSorting, OfAllArraysOfFiveWithTiesEqualsThePlainLoop) {
  for (int code = 0; code < 4 * 4 * 4 * 4 * 4; ++code) {
    std::vector<double> distances;
    for (int rest = code, k = 0; k < 5; ++k, rest /= 4) distances.push_back(rest % 4);
    Pairs plain(distances);
    PlainPointOperator::SortAllButTheFirstTwo(plain.ids, plain.distances);
    ASSERT_EQ(plain, Sorted(Pairs(distances))) << ::testing::PrintToString(distances);
  }
}

TEST(PointSorting, OfRandomArraysWithTiesEqualsThePlainLoop) {
  std::mt19937_64 random(5);
  int exchanged = 0;
  for (int round = 0; round < 20000; ++round) {
    std::size_t const n = random() % 70, values = 1 + random() % 80;
    std::vector<double> distances;
    for (std::size_t k = 0; k < n; ++k) distances.push_back(0.125 * static_cast<double>(random() % values));
    Pairs plain(distances);
    PlainPointOperator::SortAllButTheFirstTwo(plain.ids, plain.distances);
    if (n > 1 && plain.distances[0] > plain.distances[1]) ++exchanged;
    ASSERT_EQ(plain, Sorted(Pairs(distances))) << ::testing::PrintToString(distances);
  }
  EXPECT_GT(exchanged, 200) << "the missing pass was hardly seen";
}

TEST(PointSorting, OfDescendingAndAscendingArraysEqualsThePlainLoop) {
  for (std::size_t const n : {8U, 100U, 1000U}) {
    std::vector<double> distances(n);
    std::iota(distances.begin(), distances.end(), 0.0);
    for (bool const descending : {false, true}) {
      if (descending) std::reverse(distances.begin(), distances.end());
      Pairs plain(distances);
      PlainPointOperator::SortAllButTheFirstTwo(plain.ids, plain.distances);
      EXPECT_EQ(plain, Sorted(Pairs(distances))) << n;
    }
  }
}

TEST(PointSorting, TakesInfiniteDistances) {
  double const inf = std::numeric_limits<double>::infinity();
  ExpectSorted({inf, 2, inf, 1, 3}, {1, 2, 3, inf, inf}, {4, 2, 5, 1, 3});
}

// A point that is not a number has such a distance from everything.
TEST(PointSorting, LeavesDistancesThatAreNoNumbersInTheirOrder) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6}), Sorted(Pairs({nan, nan, nan, nan, nan, nan})).ids);
}

}  // namespace
}  // namespace zyn_test::sorting_test
