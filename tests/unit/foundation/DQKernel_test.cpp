#include "foundation/DQKernel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "tests/support/exact/ExactPower.h"

// The kernel by its worked values, its two forms, its slope against differences, and its powers.

namespace zyn_test::dq_kernel_test {
namespace {

TEST(DQKernel, TakesTheWorkedValues) {
  PlainDQKernel const plain(1.0, 1.0);
  ShapeNormalisedDQKernel const scaled(1.0, DQVector{1.0, 1.0, 1.0});
  EXPECT_EQ(3.0, plain.Value(0.0));
  EXPECT_EQ(0.32421875, plain.Value(0.5));
  EXPECT_EQ(0.0, plain.Value(1.0));
  EXPECT_EQ(3.0, scaled.Value(0.0));
  EXPECT_EQ(0.32421875, scaled.Value(0.5));
  EXPECT_EQ(0.0, scaled.Value(1.0));
}

TEST(DQKernel, IsNotCutOffBeyondItsSupport) {
  EXPECT_EQ(179.0, PlainDQKernel(1.0, 1.0).Value(2.0));
  EXPECT_EQ(179.0, ShapeNormalisedDQKernel(1.0, DQVector{1.0, 1.0, 1.0}).Value(2.0));
}

TEST(DQKernel, PlainFormScalesLengthsBySpanTimesH) {
  PlainDQKernel const kernel(8.0, 0.25);  // c = 2
  EXPECT_EQ(0.32421875, kernel.Value(1.0));
  EXPECT_EQ(0.0, kernel.Value(2.0));
}

TEST(DQKernel, PlainFormLeavesOffsetsInLengthUnits) {
  DQVector const scaled = PlainDQKernel(8.0, 0.25).Scaled(DQVector{1.0, -2.0, 3.0});
  EXPECT_EQ(1.0, scaled.x);
  EXPECT_EQ(-2.0, scaled.y);
  EXPECT_EQ(3.0, scaled.z);
}

TEST(DQKernel, ShapeNormalisedFormDividesEachComponentByItsScale) {
  DQVector const scaled =
      ShapeNormalisedDQKernel(2.0, DQVector{1.0, 2.0, 4.0}).Scaled(DQVector{1.0, 1.0, 1.0});
  EXPECT_EQ(0.5, scaled.x);
  EXPECT_EQ(0.25, scaled.y);
  EXPECT_EQ(0.125, scaled.z);
}

TEST(DQKernel, LengthSumsTheSquaresInTheOrderYXZ) {
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> coordinate(-1.0, 1.0);
  int telling = 0;
  for (int i = 0; i < 1000; ++i) {
    DQVector const d{coordinate(random), coordinate(random), coordinate(random)};
    double const expected = std::sqrt(d.y * d.y + d.x * d.x + d.z * d.z);
    if (expected != std::sqrt(d.x * d.x + d.z * d.z + d.y * d.y)) ++telling;
    EXPECT_EQ(expected, Length(d));
  }
  EXPECT_GT(telling, 10);
}

// Slope along each axis against central differences of the value; the step of 1e-5 c leaves an error of 1e-10.
template <typename Kernel>
void ExpectSlopeOfTheValue(Kernel const& kernel, double c) {
  std::mt19937_64 random(4);
  std::uniform_real_distribution<double> coordinate(-1.2 * c, 1.2 * c);
  auto const value = [&kernel](DQVector d) { return kernel.Value(Length(d)); };
  for (int i = 0; i < 200; ++i) {
    DQVector const d{coordinate(random), coordinate(random), coordinate(random)};
    double const step = 1e-5 * c, scale = value(d) / c + 56.0 / c;
    DQVector const g = kernel.Gradient(d);
    double const dx = value({d.x + step, d.y, d.z}) - value({d.x - step, d.y, d.z});
    double const dy = value({d.x, d.y + step, d.z}) - value({d.x, d.y - step, d.z});
    double const dz = value({d.x, d.y, d.z + step}) - value({d.x, d.y, d.z - step});
    EXPECT_NEAR(dx / (2.0 * step), g.x, 1e-8 * scale);
    EXPECT_NEAR(dy / (2.0 * step), g.y, 1e-8 * scale);
    EXPECT_NEAR(dz / (2.0 * step), g.z, 1e-8 * scale);
  }
}

TEST(DQKernel, GradientIsTheSlopeOfTheValueInThePlainForm) {
  ExpectSlopeOfTheValue(PlainDQKernel(8.0, 0.25), 2.0);
  ExpectSlopeOfTheValue(PlainDQKernel(500.0, 1e-3), 0.5);
}

// With respect to the scaled coordinates: no factor 1 / (span * extent).
TEST(DQKernel, GradientIsTheSlopeInScaledCoordinatesInTheShapeNormalisedForm) {
  ExpectSlopeOfTheValue(ShapeNormalisedDQKernel(500.0, DQVector{1.0, 2.0, 3.0}), 1.0);
}

TEST(DQKernel, GradientAtNoDistanceIsZeroWithAMinusSign) {
  for (DQVector const& g :
       {PlainDQKernel(2.0, 1.0).Gradient(DQVector{0.0, 0.0, 0.0}),
        ShapeNormalisedDQKernel(2.0, DQVector{1.0, 1.0, 1.0}).Gradient(DQVector{0.0, 0.0, 0.0})}) {
    for (double const component : {g.x, g.y, g.z}) {
      EXPECT_EQ(0.0, component);
      EXPECT_TRUE(std::signbit(component));
    }
  }
}

TEST(DQKernel, WithoutASupportIsNotANumber) {
  EXPECT_TRUE(std::isnan(PlainDQKernel(500.0, 0.0).Value(0.0)));
  EXPECT_TRUE(std::isnan(PlainDQKernel(500.0, 0.0).Gradient(DQVector{0.0, 0.0, 0.0}).x));
  EXPECT_TRUE(std::isnan(ShapeNormalisedDQKernel(500.0, DQVector{1.0, 0.0, 1.0}).Scaled(DQVector{}).y));
}

// Bit for bit; products of rounded numbers would be told apart.
TEST(DQKernel, TakesPowersThatAreRoundedOnce) {
  double const span = 500.0, h = 0.37, c = span * h, c2 = c * span * h, c8 = ExactPower(c, 8);
  PlainDQKernel const plain(span, h);
  ShapeNormalisedDQKernel const scaled(span, DQVector{1.0, 1.0, 1.0});
  std::mt19937_64 random(5);
  std::uniform_real_distribution<double> coordinate(0.0, 0.5);
  int telling = 0;
  for (int i = 0; i < 1000; ++i) {
    DQVector const d{coordinate(random), -coordinate(random), coordinate(random)};
    double const r = Length(d), base = 1.0 - r / c;
    EXPECT_EQ(ExactPower(base, 6) * (r * 35.0 * r / c2 + r * 18.0 / c + 3.0), plain.Value(r));
    EXPECT_EQ(ExactPower(1.0 - r, 6) * (35.0 * r * r + 18.0 * r + 3.0), scaled.Value(r));
    DQVector const g = plain.Gradient(d), gScaled = scaled.Gradient(d);
    double const power = ExactPower(c - r, 5), powerScaled = ExactPower(1.0 - r, 5);
    EXPECT_EQ(-(d.x * 56.0 * (r * 5.0 + c) * power / c8), g.x);
    EXPECT_EQ(-(d.y * 56.0 * (r * 5.0 + c) * power / c8), g.y);
    EXPECT_EQ(-(d.z * 56.0 * (r * 5.0 + c) * power / c8), g.z);
    EXPECT_EQ(-(d.x * 56.0 * (r * 5.0 + 1.0) * powerScaled), gScaled.x);
    EXPECT_EQ(-(d.y * 56.0 * (r * 5.0 + 1.0) * powerScaled), gScaled.y);
    EXPECT_EQ(-(d.z * 56.0 * (r * 5.0 + 1.0) * powerScaled), gScaled.z);
    double const cube = base * base * base;
    if (ExactPower(base, 6) != cube * cube) ++telling;
  }
  EXPECT_GT(telling, 100);
}

}  // namespace
}  // namespace zyn_test::dq_kernel_test
