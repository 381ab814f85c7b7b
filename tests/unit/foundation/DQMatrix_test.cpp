#include "foundation/DQMatrix.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "foundation/DQKernel.h"
#include "foundation/Processor.h"
#include "rbf_face/FaceC2Kernel.h"

// Kernel matrices and right-hand sides number by number against the kernel itself, for sizes around what is computed at
// once.

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
      ASSERT_EQ(expected, entry) << k << ", " << j << " of " << n;
    }
  }
}

template <typename Kernel>
void ExpectEntriesOf(Kernel const& kernel) {
  // Up to a few, an odd and an even number that take several blocks, and more than a block in one row.
  for (int const n : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 26, 27, 140}) {
    ExpectEntriesOf(kernel, n, n);
    ExpectEntriesOf(kernel, n, n + 2);
    processor::TakenForPlain const plain;
    ExpectEntriesOf(kernel, n, n);
    ExpectEntriesOf(kernel, n, n + 2);
  }
}

TEST(DQMatrix, HasTheKernelOfEveryPair) {
  ExpectEntriesOf(PlainDQKernel(3.0, 0.5));
  ExpectEntriesOf(PlainDQKernel(500.0, 40.0));
  ExpectEntriesOf(ShapeNormalisedDQKernel(3.0, DQVector{1.0, 2.0, 4.0}));
  ExpectEntriesOf(FaceC2Kernel(3.0, 0.5));
}

template <typename Kernel>
void ExpectColumnsOf(Kernel const& kernel, int n) {
  DQVector const at{0.35, -0.2, 0.1};
  std::vector<DQVector> const points = SomePoints(n);
  auto const room = static_cast<std::size_t>(n);
  std::vector<double> value(room), gradient(3 * room), both(4 * room);
  FillValueColumn(kernel, points.data(), n, at, value.data());
  FillGradientColumns(kernel, points.data(), n, at, gradient.data());
  FillGradientAndValueColumns(kernel, points.data(), n, at, both.data());
  for (std::size_t k = 0; k < room; ++k) {
    DQVector const offset = kernel.Scaled(OffsetBetween(points[k], at)), g = kernel.Gradient(offset);
    double const v = kernel.Value(Length(offset));
    ASSERT_EQ(v, value[k]) << k << " of " << n;
    ASSERT_EQ((std::vector<double>{g.x, g.y, g.z}),
              std::vector<double>(gradient.data() + 3 * k, gradient.data() + 3 * k + 3))
        << k << " of " << n;
    ASSERT_EQ((std::vector<double>{g.x, g.y, g.z, v}),
              std::vector<double>(both.data() + 4 * k, both.data() + 4 * k + 4))
        << k << " of " << n;
  }
}

TEST(DQMatrix, HasTheKernelsOfAllPointsAtOnePlaceAsRightHandSides) {
  for (int const n : {0, 1, 2, 3, 4, 5, 7, 63, 64, 65, 130}) {
    ExpectColumnsOf(PlainDQKernel(500.0, 40.0), n);
    ExpectColumnsOf(ShapeNormalisedDQKernel(3.0, DQVector{1.0, 2.0, 4.0}), n);
    processor::TakenForPlain const plain;
    ExpectColumnsOf(PlainDQKernel(500.0, 40.0), n);
    ExpectColumnsOf(ShapeNormalisedDQKernel(3.0, DQVector{1.0, 2.0, 4.0}), n);
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
