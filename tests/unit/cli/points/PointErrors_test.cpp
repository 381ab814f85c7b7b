#include "cli/points/PointErrors.h"

#include <gtest/gtest.h>

#include <cmath>

#include "cli/base/UsageError.h"
#include "tests/unit/cli/NotFinite.h"

namespace zyngrad {
namespace {

PointSet AlongX(std::vector<double> const& x) {
  PointSet points;
  points.x = x;
  points.y.assign(x.size(), 0.5);
  points.z.assign(x.size(), 0.0);
  return points;
}

TEST(PointErrors, CompareValueAndGradientWithTheFormula) {
  PointSet const points = AlongX({1.0, 2.0, 3.0, 4.0});
  ExactAtPoints const exact = ExactValuesAt(points, Expression("2*x + y"));
  EXPECT_EQ((std::vector<double>{2.5, 4.5, 6.5, 8.5}), exact.value);
  EXPECT_EQ(exact.gx, (std::vector<double>(4, 2.0)));
  EXPECT_EQ(exact.gy, (std::vector<double>(4, 1.0)));

  PointValues found = {exact.value, exact.gx, exact.gy, exact.gz, {}, {}};
  found.value[1] -= 0.25;
  found.value[3] += 0.25;
  found.gx[2] += 3.0;
  found.gz[2] -= 4.0;
  ErrorsAtPoints const errors = ErrorsAt(found, exact);
  EXPECT_EQ((std::vector<double>{0.0, -0.25, 0.0, 0.25}), errors.value);
  EXPECT_EQ((std::vector<double>{0.0, 0.0, 5.0, 0.0}), errors.gradient);

  PointNorms const value = ValueNorms(errors, exact), gradient = GradientNorms(errors, exact);
  EXPECT_EQ(0.125, value.l1);
  EXPECT_NEAR(value.l2, 0.25 / std::sqrt(2.0), 1e-16);
  EXPECT_EQ(0.25, value.max);
  EXPECT_EQ(2, value.maxPoint);  // the first of equal ones
  EXPECT_EQ(1.25, gradient.l1);
  EXPECT_EQ(2.5, gradient.l2);
  EXPECT_NEAR(gradient.relativeL2, 2.5 / std::sqrt(5.0), 1e-15);
  EXPECT_EQ(3, gradient.maxPoint);
}

TEST(PointErrors, CountWhatIsNotFiniteAndAreNoNumbersWithoutPoints) {
  PointNorms const norms = ValueNorms({{1.0, kInfinity, -2.0}, {}}, {{1.0, 1.0, 1.0}, {}, {}, {}});
  EXPECT_EQ(1, norms.nNotFinite);
  EXPECT_EQ(kInfinity, norms.l1);
  EXPECT_EQ(2.0, norms.max);
  EXPECT_EQ(3, norms.maxPoint);
  PointNorms const none = ValueNorms({}, {});
  EXPECT_TRUE(std::isnan(none.l1));
  EXPECT_TRUE(std::isnan(none.max));
  EXPECT_EQ(0, none.maxPoint);
}

TEST(PointErrors, NameThePointWhereTheFormulaHasNoValue) {
  try {
    ExactValuesAt(AlongX({1.0, 2.0, 0.0}), Expression("sqrt(x)"));
    FAIL() << "the slope is infinite at 0";
  } catch (UsageError const& error) {
    EXPECT_STREQ("the field \"sqrt(x)\" or its gradient is not finite at point 3 at (0, 0.5, 0)",
                 error.what());
  }
}

TEST(PointErrors, FlagPointsThatAreFarHaveFewCellsOrNoFiniteWeights) {
  PointValues const found = {std::vector<double>(4, 0.0), {}, {}, {}, {4, 3, 20, 0}, {1, 1, 0, 1}};
  std::vector<PointOwner> const owners = {{0.2, 0}, {0.1, 0}, {0.1, 1}, {0.21, 1}};
  EXPECT_EQ((std::vector<std::int32_t>{0, kHasFewCells, kIsNotFinite, kIsFar + kHasFewCells}),
            FlagPoints(found, owners, 0.1));
  EXPECT_EQ(kHasFewCells, FlagPoints(found, owners, kInfinity)[3]);  // a mesh of one cell has no distance
}

TEST(PointErrors, ShowTheWorstFiveOfEachFlag) {
  PointValues found = {std::vector<double>(7, 0.0), {}, {}, {}, {3, 1, 2, 1, 9, 9, 9}, {0, 1, 1, 1, 0, 1, 0}};
  std::vector<PointOwner> owners;
  for (double const distance : {5.0, 1.0, 7.0, 5.0, 6.0, 9.0, 8.0}) owners.push_back({distance, 0});
  auto const flags = FlagPoints(found, owners, 1.0);
  auto const counted = CountFlags(flags, found, owners);
  EXPECT_EQ(kIsFar, counted[0].flag);
  EXPECT_EQ(6, counted[0].count);
  EXPECT_EQ((std::vector<std::size_t>{5, 6, 2, 4, 0}), counted[0].worst);
  EXPECT_EQ(kHasFewCells, counted[1].flag);
  EXPECT_EQ((std::vector<std::size_t>{1, 3, 2, 0}), counted[1].worst);
  EXPECT_EQ(3, counted[2].count);
  EXPECT_EQ((std::vector<std::size_t>{0, 4, 6}), counted[2].worst);
}

}  // namespace
}  // namespace zyngrad
