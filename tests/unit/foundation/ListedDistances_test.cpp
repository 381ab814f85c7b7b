#include "foundation/ListedDistances.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

// Two distances at a time against one after the other, bit for bit.

namespace zyn_test::listed_distances_test {
namespace {

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST(ListedDistances, EqualThoseOfOnePointAfterTheOther) {
  std::mt19937_64 random(2);
  std::uniform_real_distribution<double> coordinate(-3.0, 3.0);
  std::vector<DQVector> points(40);
  for (DQVector& point : points) point = {coordinate(random), coordinate(random), coordinate(random)};
  points[3] = points[7];
  points[5].x = std::numeric_limits<double>::infinity();
  points[11].y = 1e200;
  points[13].z = 1e-300;
  for (int n = 0; n <= 33; ++n) {
    std::vector<int> ids;
    for (int k = 0; k < n; ++k) ids.push_back(static_cast<int>(random() % points.size()));
    DQVector const from = n % 3 == 0 ? points[7] : DQVector{coordinate(random), coordinate(random), 0.5};
    std::vector<double> distances(ids.size() + 1, -7.0), squares(ids.size() + 1, -7.0);
    MeasureListed(points.data(), ids.data(), n, from, distances.data());
    MeasureSquaresListed(points.data(), ids.data(), n, from, squares.data());
    for (std::size_t k = 0; k < ids.size(); ++k) {
      DQVector const offset = OffsetBetween(from, points[static_cast<std::size_t>(ids[k])]);
      EXPECT_TRUE(SameBits(Length(offset), distances[k])) << k << " of " << n;
      EXPECT_TRUE(SameBits(SquaredLength(offset), squares[k])) << k << " of " << n;
    }
    EXPECT_EQ(-7.0, distances.back());
    EXPECT_EQ(-7.0, squares.back());
  }
}

TEST(ListedDistances, OfAPointThatIsNoNumberAreNoNumbers) {
  std::vector<DQVector> const points = {{std::nan(""), 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 0.0, std::nan("")}};
  int const ids[] = {0, 1, 2};
  double distances[3];
  MeasureListed(points.data(), ids, 3, {0.0, 0.0, 0.0}, distances);
  EXPECT_TRUE(std::isnan(distances[0]));
  EXPECT_EQ(1.0, distances[1]);
  EXPECT_TRUE(std::isnan(distances[2]));
}

}  // namespace
}  // namespace zyn_test::listed_distances_test
