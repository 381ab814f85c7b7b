#include "foundation/DQMatrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "foundation/DQKernel.h"

// The kernel matrix entry by entry against the kernel itself, for every size around the two at a time.

namespace zyn_test::dq_matrix_test {
namespace {

std::vector<DQVector> SomePoints(int n) {
  std::vector<DQVector> points;
  for (int k = 0; k < n; ++k) points.push_back({0.1 * k, 0.3 * k * k, 0.7 - 0.2 * k});
  return points;
}

template <typename Kernel>
void ExpectEntriesOf(Kernel const& kernel, int n, int stride) {
  constexpr double kUntouched = -7.5;
  std::vector<DQVector> const points = SomePoints(n);
  std::vector<double> a(static_cast<std::size_t>(n * stride), kUntouched);
  FillKernelMatrix(kernel, points.data(), n, a.data(), stride);
  for (int k = 0; k < n; ++k) {
    for (int j = 0; j < stride; ++j) {
      double const entry = a[static_cast<std::size_t>(k * stride + j)];
      double const expected =
          j < n ? kernel.Value(Length(kernel.Scaled(OffsetBetween(points[j], points[k])))) : kUntouched;
      EXPECT_EQ(expected, entry) << k << ", " << j << " of " << n;
    }
  }
}

TEST(DQMatrix, HasTheKernelOfEveryPair) {
  for (int n = 0; n <= 7; ++n) {
    ExpectEntriesOf(PlainDQKernel(3.0, 0.5), n, n);
    ExpectEntriesOf(PlainDQKernel(3.0, 0.5), n, n + 1);
    ExpectEntriesOf(ShapeNormalisedDQKernel(3.0, DQVector{1.0, 2.0, 4.0}), n, n + 2);
  }
}

// A point that is infinite in one coordinate has no distance from itself.
TEST(DQMatrix, HasNoNumberOnTheDiagonalOfAnInfinitePoint) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (DQVector const& odd :
       {DQVector{kInfinity, 0.0, 0.0}, DQVector{0.0, kInfinity, 0.0}, DQVector{0.0, 0.0, kInfinity}}) {
    DQVector const points[] = {{1.0, 2.0, 3.0}, odd};
    double a[4] = {};
    FillKernelMatrix(PlainDQKernel(1.0, 1.0), points, 2, a, 2);
    EXPECT_EQ(3.0, a[0]);
    EXPECT_TRUE(std::isnan(a[3]));
  }
}

TEST(DQMatrix, GetsALastRowAndColumnOfOnes) {
  std::vector<double> a(9, -7.5);
  AddConstantTerm(a.data(), 2);
  EXPECT_EQ((std::vector<double>{-7.5, -7.5, 1.0, -7.5, -7.5, 1.0, 1.0, 1.0, 0.0}), a);
}

}  // namespace
}  // namespace zyn_test::dq_matrix_test
