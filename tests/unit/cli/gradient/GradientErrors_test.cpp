#include "cli/gradient/GradientErrors.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "cli/base/UsageError.h"
#include "cli/field/Expression.h"
#include "foundation/FaceGroups.h"
#include "tests/unit/cli/BoxPartition.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

/// Interior cell of the partition with this number in the mesh.
int CellWithNumber(reference_host::HostPartition const& partition, std::int64_t number) {
  int c = 1;
  while (partition.globalCell()[static_cast<std::size_t>(c)] != number) ++c;
  return c;
}

/// 27 cubes with edges of 1/3: the middle one, number 14, has no boundary face.
class GradientErrorsOfCubes : public testing::Test {
 protected:
  GradientErrorsOfCubes()
      : partition_(BoxPartition("box:3,3,3")),
        field_(MakeTestField(TestRanks(), *partition_, Expression("2*x"))),
        computed_{field_.gx, field_.gy, field_.gz} {}

  GradientErrors Errors() {
    double const exactL2 = ExactGradientL2(TestRanks(), *partition_->mesh(), field_);
    return SummariseErrors(TestRanks(), *partition_, CellErrors(field_, computed_),
                           BoundaryCells(*partition_->mesh()), exactL2);
  }

  std::unique_ptr<reference_host::HostPartition> partition_;
  TestField field_;
  GradientArrays computed_;
};

TEST_F(GradientErrorsOfCubes, AreZeroForTheExactGradient) {
  GradientErrors const errors = Errors();
  EXPECT_EQ(1, errors.interior.nCells);
  EXPECT_EQ(26, errors.boundary.nCells);
  EXPECT_EQ(0.0, errors.interior.max);
  EXPECT_EQ(0.0, errors.boundary.l2);
}

TEST_F(GradientErrorsOfCubes, MeasureTheLengthOfTheDifferenceByVolume) {
  auto const corner = static_cast<std::size_t>(CellWithNumber(*partition_, 1));
  auto const middle = static_cast<std::size_t>(CellWithNumber(*partition_, 14));
  computed_.x[corner] += 3.0;
  computed_.y[corner] -= 4.0;
  computed_.z[middle] += 0.5;
  GradientErrors const errors = Errors();
  EXPECT_NEAR(errors.boundary.l1, 5.0 / 26.0, 1e-15);
  EXPECT_NEAR(errors.boundary.l2, 5.0 / std::sqrt(26.0), 1e-15);
  EXPECT_NEAR(errors.boundary.relativeL2, errors.boundary.l2 / 2.0, 1e-15);
  EXPECT_EQ(5.0, errors.boundary.max);
  EXPECT_EQ(1, errors.boundary.maxCell);
  EXPECT_NEAR(errors.boundary.maxPlace[0], 1.0 / 6.0, 1e-15);
  EXPECT_NEAR(0.5, errors.interior.l2, 1e-15);
  EXPECT_EQ(14, errors.interior.maxCell);
  EXPECT_NEAR(1.0, errors.interior.volume + errors.boundary.volume, 1e-15);
}

TEST_F(GradientErrorsOfCubes, NameTheLowestCellOfEqualErrors) {
  for (int const number : {9, 3, 21})
    computed_.x[static_cast<std::size_t>(CellWithNumber(*partition_, number))] += 1.0;
  EXPECT_EQ(3, Errors().boundary.maxCell);
}

TEST_F(GradientErrorsOfCubes, CountCellsThatAreNotFiniteAndKeepTheFiniteMaximum) {
  computed_.x[static_cast<std::size_t>(CellWithNumber(*partition_, 2))] =
      std::numeric_limits<double>::quiet_NaN();
  computed_.x[static_cast<std::size_t>(CellWithNumber(*partition_, 5))] += 1.0;
  ErrorNorms const norms = Errors().boundary;
  EXPECT_EQ(1, norms.nNotFinite);
  EXPECT_EQ(1.0, norms.max);
  EXPECT_EQ(5, norms.maxCell);
  EXPECT_TRUE(std::isnan(norms.l2));
}

TEST(GradientErrors, OfAnEmptySetAreNotNumbers) {
  auto const partition = BoxPartition("box:2,2,2");  // all cells at the boundary
  TestField const field = MakeTestField(TestRanks(), *partition, Expression("1"));
  GradientArrays const computed{field.gx, field.gy, field.gz};
  GradientErrors const errors =
      SummariseErrors(TestRanks(), *partition, CellErrors(field, computed), BoundaryCells(*partition->mesh()),
                      ExactGradientL2(TestRanks(), *partition->mesh(), field));
  EXPECT_EQ(0, errors.interior.nCells);
  EXPECT_TRUE(std::isnan(errors.interior.l1));
  EXPECT_TRUE(std::isnan(errors.interior.max));
  EXPECT_EQ(0, errors.interior.maxCell);
  EXPECT_TRUE(std::isnan(errors.boundary.relativeL2));  // a constant field: nothing to compare with
}

TEST(TestField, HoldsTheFormulaAtCellsAndBoundaryFaces) {
  auto const partition = BoxPartition("box:2,1,1");
  CZYN3DFiniteVolumeMesh const& mesh = *partition->mesh();
  TestField const field = MakeTestField(TestRanks(), *partition, Expression("x"));
  ASSERT_EQ(field.value.size(), static_cast<std::size_t>(mesh.NCell) + 1);
  auto const valueAt = [&field](int c) { return field.value[static_cast<std::size_t>(c)]; };
  FaceGroup const inlet = FacesOf(FaceKind::Inlet, mesh), outlet = FacesOf(FaceKind::Outlet, mesh);
  EXPECT_EQ(0.0, valueAt(inlet.other[1]));
  EXPECT_EQ(1.0, valueAt(outlet.other[1]));
  EXPECT_EQ(0.25, valueAt(inlet.cv[1]));
}

std::string ErrorOf(std::string const& formula) {
  try {
    MakeTestField(TestRanks(), *BoxPartition("box:2,1,1"), Expression(formula));
  } catch (UsageError const& error) {
    return error.what();
  }
  return "no error";
}

TEST(TestField, NamesThePlaceWhereTheFormulaIsNotFinite) {
  EXPECT_EQ("the field \"1/(x-0.25)\" is infinite at cell 1 at (0.25, 0.25, 0.25)", ErrorOf("1/(x-0.25)"));
  EXPECT_EQ("the field \"log(x)\" is infinite at a face of \"inlet\" at (0, 0.25, 0.25)", ErrorOf("log(x)"));
  EXPECT_EQ("the field", ErrorOf("sqrt(x-0.75)-sqrt(x-0.75)+sqrt(abs(x-0.75))").substr(0, 9));
  EXPECT_EQ("the exact gradient of \"cbrt(x-0.75)\" is infinite at cell 2 at (0.75, 0.25, 0.25)",
            ErrorOf("cbrt(x-0.75)"));
}

}  // namespace
}  // namespace zyngrad
