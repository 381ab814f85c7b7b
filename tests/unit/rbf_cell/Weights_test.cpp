#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/TableComparison.h"
#include "tests/support/watch/FlushedOutput.h"
#include "tests/support/watch/SettingsFolder.h"

// The weights of a cell: worked numbers, the two kernel forms, the printed maxima, and what stencils that are
// not fit for a system leave behind.

namespace zyn_test::weights_test {
namespace {

using Field = std::function<double(Point)>;

double Linear(Point p) { return 2.0 * p.x + 3.0 * p.y - p.z + 1.0; }

/// The gradient of a field at a cell from the operator's tables.
Triple GradientOf(CZynRBFInternalObject const& object, int cell, Field const& field) {
  Triple sum{};
  int const* const stencil = object.m_ppRBFCellConn[cell];
  for (int m = 1; m <= stencil[0]; ++m) {
    RBFnode const& point = object.m_pRBFnode[stencil[m]];
    RBFnode const& weight = object.m_ppRBFCellCoef[cell][m];
    double const value = field({point.x, point.y, point.z});
    sum[0] += value * weight.x;
    sum[1] += value * weight.y;
    sum[2] += value * weight.z;
  }
  return sum;
}

std::string MaximaLine(double span, double x, double y, double z) {
  char line[500];
  std::snprintf(line, sizeof line, "Span = %f, MAXResidual_X = %e, MAXResidual_Y = %e, MAXResidual_Z = %e\n",
                span, x, y, z);
  return line;
}

std::string const kDone = "Cell RBF flux Interpolation is done.\n";

/// A plain form that was set up and derived.
PlainCellOperator Derived(TestMesh const& mesh, double span, int shapeNormalize) {
  PlainCellOperator plain(mesh, span, shapeNormalize);
  plain.Collate();
  plain.DeriveAll();
  return plain;
}

Triple SumOfRow(PlainCellOperator const& plain, int cell) {
  Triple sum{};
  for (Triple const& row : plain.weights[static_cast<std::size_t>(cell)])
    for (std::size_t a = 0; a < 3; ++a) sum[a] += row[a];
  return sum;
}

// --------------------------------------------------------------------------------------------- worked numbers

// Half a unit of the last digit shown.
constexpr double kFiveDecimals = 0.5e-5, kTwoDecimals = 0.5e-2;

TEST(CellWeights, SevenPointsWithSpan500GiveALinearFieldTo2e5) {
  CellBed bed(SevenPoints(), Settings("500", "0"));
  bed.SetUpAndDerive();
  Triple const g = GradientOf(*bed.object, 1, Linear);
  EXPECT_NEAR(2.00012, g[0], kFiveDecimals);
  EXPECT_NEAR(3.00018, g[1], kFiveDecimals);
  EXPECT_NEAR(-1.00006, g[2], kFiveDecimals);
}

TEST(CellWeights, SevenPointsWithSpan5AreOffByThirtyPercent) {
  CellBed bed(SevenPoints(), Settings("5", "0"));
  bed.SetUpAndDerive();
  Triple const g = GradientOf(*bed.object, 1, Linear);
  EXPECT_NEAR(2.59499, g[0], kFiveDecimals);
  EXPECT_NEAR(3.89248, g[1], kFiveDecimals);
  EXPECT_NEAR(-1.29749, g[2], kFiveDecimals);
}

// The extents are 2, so this is Span * 2 = 1000 times the derivative: nothing divides the scale out.
TEST(CellWeights, ShapeNormalisedFormKeepsTheAxisScale) {
  CellBed bed(SevenPoints(), Settings("500", "1"));
  bed.SetUpAndDerive();
  Triple const g = GradientOf(*bed.object, 1, Linear);
  EXPECT_NEAR(2000.03, g[0], kTwoDecimals);
  EXPECT_NEAR(3000.04, g[1], kTwoDecimals);
  EXPECT_NEAR(-1000.01, g[2], kTwoDecimals);
}

TEST(CellWeights, ConstantFieldHasNoSlope) {
  for (char const* const shape : {"0", "1"}) {
    CellBed bed(SevenPoints(), Settings("500", shape));
    bed.SetUpAndDerive();
    double largest = 0.0;
    for (int m = 1; m <= 7; ++m) largest = std::fmax(largest, std::fabs(bed.object->m_ppRBFCellCoef[1][m].x));
    Triple const g = GradientOf(*bed.object, 1, [](Point) { return 1.0; });
    // The weights sum to zero as one row of a system solved with partial pivoting does: to the round-off of the
    // largest weight.
    for (double const slope : g) EXPECT_NEAR(0.0, slope, 1e-12 * largest) << shape;
  }
}

// ------------------------------------------------------------------------------------ equal to the plain form

AssertionResult SameAsPlainForm(TestMesh const& mesh, double span, int shapeNormalize) {
  CellBed bed(mesh, Settings(std::to_string(span), std::to_string(shapeNormalize)));
  bed.SetUpAndDerive();
  PlainCellOperator const plain = Derived(mesh, span, shapeNormalize);
  AssertionResult const weights = SameWeights(plain, *bed.object);
  return weights ? SameResiduals(plain, *bed.object) : weights;
}

TEST(CellWeights, OfSevenPointsEqualThePlainForm) {
  for (double const span : {500.0, 5.0, 0.5})
    for (int const shape : {0, 1}) EXPECT_TRUE(SameAsPlainForm(SevenPoints(0.3, {1, 2, 3}), span, shape));
}

TEST(CellWeights, OtherShapeSettingsAreThePlainForm) {
  TestMesh mesh = SevenPoints();
  CellBed two(mesh, Settings("500", "2"));
  two.SetUpAndDerive();
  EXPECT_TRUE(SameWeights(Derived(mesh, 500.0, 0), *two.object));
}

// A kernel value that a support test would cut to zero is not: at Span 0.5 the members are at s = 2 and more.
TEST(CellWeights, NothingIsCutOffBeyondTheSupport) {
  TestMesh const mesh = SevenPoints();
  PlainCellOperator plain(mesh, 0.5, 0);
  plain.Collate();
  EXPECT_EQ(179.0, plain.SystemOf(1).matrix[1]) << "between the cell and its first neighbour";
  EXPECT_TRUE(SameAsPlainForm(mesh, 0.5, 0));
}

double InSinglePrecision(double value) {
  float const volatile stored = static_cast<float>(value);  // volatile as in the plain form
  return stored;
}

// The right-hand sides pass through single precision, the matrix does not. A stencil that LAPACK gives up shows
// them unsolved: three times the same member, beside others at odd distances.
TEST(CellWeights, RightHandSidesSeenInAnUnsolvedSystemAreFloats) {
  TestMesh mesh = OneStencil({}, {{0.7, 0.1, 0.2}, {-0.9, 0.3, 0.1}, {0.2, 1.1, -0.3}, {0.1, -0.2, -0.8}});
  mesh.Neighbours(1).insert(mesh.Neighbours(1).end(), {2, 2});
  for (char const* const shape : {"0", "1"}) {
    CellBed bed(mesh, Settings("50", shape));
    bed.SetUpAndDerive();
    ASSERT_NE(0.0, bed.object->m_ppRBFCellCoef[1][3].x);
    for (int k = 1; k <= 8; ++k) {
      RBFnode const& w = bed.object->m_ppRBFCellCoef[1][k];
      for (double const value : {w.x, w.y, w.z}) EXPECT_EQ(InSinglePrecision(value), value) << k;
    }
  }
}

// The right-hand sides pass through single precision, the matrix does not.
TEST(CellWeights, RightHandSidesAreRoundedToFloat) {
  TestMesh const mesh =
      OneStencil({}, {{0.7, 0.1, 0.2}, {-0.9, 0.3, 0.1}, {0.2, 1.1, -0.3}, {0.1, -0.2, -0.8}});
  PlainCellOperator plain = Derived(mesh, 50.0, 0);
  DenseSystem system = plain.SystemOf(1);
  for (double const value : system.rightHandSides) EXPECT_EQ(value, InSinglePrecision(value));
  CellBed bed(mesh, Settings("50", "0"));
  bed.SetUpAndDerive();
  EXPECT_TRUE(SameWeights(plain, *bed.object));

  // By hand, without the rounding: the slope at the first neighbour is another number.
  double const r = std::sqrt(0.1 * 0.1 + 0.7 * 0.7 + 0.2 * 0.2);
  double const c = 50.0 * plain.supportLengths[1];
  double const slope = 0.7 * 56.0 * (5.0 * r + c) * std::pow(c - r, 5) / std::pow(c, 8);
  EXPECT_NE(slope, system.rightHandSides[3]);
  EXPECT_NEAR(slope, system.rightHandSides[3], 1e-7 * slope);
}

// The system by hand: kernel values in the matrix, the slope at the cell's centre on the right-hand side, ones
// at the border. Two points on the x axis, Span 1, so that h = 1 is the support radius.
TEST(CellWeights, OfTwoPointsSolveTheSystemWrittenByHand) {
  CellBed bed(OneStencil({}, {{1.0, 0.0, 0.0}}), Settings("1", "0"));
  bed.SetUpAndDerive();
  // kernel(0) = 3, kernel(1) = 0; the slope at the neighbour is 56 * (5 + 1) * 0^5 = 0. With w1 + w2 = 0 all is 0.
  RBFnode const* const row = bed.object->m_ppRBFCellCoef[1];
  for (int k = 1; k <= 3; ++k) EXPECT_EQ(0.0, row[k].x);

  CellBed wider(OneStencil({}, {{1.0, 0.0, 0.0}}), Settings("2", "0"));
  wider.SetUpAndDerive();
  // s = 1/2: kernel = 0.32421875, slope = 56 * 1 * (5 + 2) * 1^5 / 2^8 = 1.53125.
  //   3 w1 + 0.32421875 w2 + m = 0,  0.32421875 w1 + 3 w2 + m = 1.53125,  w1 + w2 = 0
  // so that w2 = 1.53125 / (2 * (3 - 0.32421875)) and m = 1.53125 / 2.
  double const w2 = 1.53125 / (2.0 * (3.0 - 0.32421875));
  RBFnode const* const weights = wider.object->m_ppRBFCellCoef[1];
  EXPECT_NEAR(-w2, weights[1].x, 1e-15);
  EXPECT_NEAR(w2, weights[2].x, 1e-15);
  EXPECT_NEAR(-0.5 * (3.0 + 0.32421875) * 0.0 + 0.765625, weights[3].x, 1e-15);
  for (int k = 1; k <= 3; ++k) {
    EXPECT_EQ(0.0, weights[k].y);
    EXPECT_EQ(0.0, weights[k].z);
    EXPECT_EQ(1, weights[k].id);
  }
}

// The squares of y and x change places without a change of bits, since they are added first: an operator that
// added in another order would not pass.
TEST(CellWeights, ExchangeOfXAndYExchangesTheWeightsBitForBit) {
  std::vector<Point> const members = {{0.7, 0.1, 0.2}, {-0.9, 0.3, 0.1}, {0.2, 1.1, -0.3}, {0.1, -0.2, -0.8}};
  std::vector<Point> exchanged;
  for (Point const& p : members) exchanged.push_back({p.y, p.x, p.z});
  for (char const* const shape : {"0", "1"}) {
    CellBed bed(OneStencil({}, members), Settings("20", shape));
    CellBed other(OneStencil({}, exchanged), Settings("20", shape));
    bed.SetUpAndDerive();
    other.SetUpAndDerive();
    for (int k = 1; k <= 6; ++k) {
      RBFnode const &a = bed.object->m_ppRBFCellCoef[1][k], &b = other.object->m_ppRBFCellCoef[1][k];
      EXPECT_TRUE(SameRecord("weight", {a.y, a.x, a.z}, 1, b));
    }
  }
}

TEST(CellWeights, FollowTheOrderOfTheStencil) {
  std::vector<Point> const members = {{0.7, 0.1, 0.2}, {-0.9, 0.3, 0.1}, {0.2, 1.1, -0.3}, {0.1, -0.2, -0.8}};
  std::vector<Point> const reversed(members.rbegin(), members.rend());
  CellBed bed(OneStencil({}, members), Settings("20", "0"));
  CellBed other(OneStencil({}, reversed), Settings("20", "0"));
  bed.SetUpAndDerive();
  other.SetUpAndDerive();
  for (int k = 0; k < 4; ++k) {
    double const a = bed.object->m_ppRBFCellCoef[1][2 + k].x, b = other.object->m_ppRBFCellCoef[1][5 - k].x;
    EXPECT_NEAR(a, b, 1e-5 * std::fabs(a))
        << "the same weight up to the system's condition, at its member's place";
  }
}

TEST(CellWeights, OfOneCellAreRewrittenAlone) {
  LatticeOptions options;
  TestMesh const mesh = LatticeMesh(options);
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  PlainCellOperator const plain = Derived(mesh, 500.0, 0);
  for (int c = 1; c <= mesh.nInnerCells; ++c) bed.object->m_ppRBFCellCoef[c][1].x = -1.0;
  EXPECT_EQ(1, bed.object->DeriveCellCoefficentBysolveDQfullMatrix(5));
  for (int c = 1; c <= mesh.nInnerCells; ++c) {
    double const expected = c == 5 ? plain.weights[5][0][0] : -1.0;
    EXPECT_TRUE(SameValue("first weight", expected, bed.object->m_ppRBFCellCoef[c][1].x)) << c;
  }
}

TEST(CellWeights, LeaveRowElementZeroAndTheMembersAlone) {
  CellBed bed(SevenPoints());
  bed.SetUpAndDerive();
  EXPECT_TRUE(SameRecord("element 0", Triple{}, 0, bed.object->m_ppRBFCellCoef[1][0]));
  int const stencil[] = {7, 1, 2, 3, 4, 5, 6, 7, 0};
  EXPECT_TRUE(std::equal(std::begin(stencil), std::end(stencil), bed.object->m_ppRBFCellConn[1]));
}

// ------------------------------------------------------------------------------------------------ the maxima

TEST(CellResiduals, ArePrintedInTheseWords) {
  LatticeOptions options;
  options.cells = Cells::Tetrahedra;
  TestMesh const mesh = LatticeMesh(options);
  CellBed bed(mesh, Settings("37.25", "0"));
  std::string const printed = bed.SetUpAndDerive();
  Residuals const r = Derived(mesh, 37.25, 0).residuals;
  EXPECT_EQ(kDone + MaximaLine(37.25, r.x, r.y, r.z), printed);
}

TEST(CellResiduals, AreFlushedWhenPrinted) {
  CellBed bed(SevenPoints());
  bed.SetUp();
  std::string arrived;
  {
    FlushedOutput const output;
    bed.object->DeriveRBFweighting();
    arrived = output.Arrived();
  }
  EXPECT_EQ(0U, arrived.find(kDone + "Span = 500.000000, MAXResidual_X = "));
  ASSERT_FALSE(arrived.empty());
  EXPECT_EQ('\n', arrived.back());
}

TEST(CellResiduals, OneCellDerivedAlonePrintsNothing) {
  CellBed bed(SevenPoints());
  bed.SetUp();
  EXPECT_EQ("", Printed([&] { bed.object->DeriveCellCoefficentBysolveDQfullMatrix(1); }));
}

/// One-cell meshes at random, until one has sums that `wanted` accepts.
TestMesh StencilWithSums(std::function<bool(Triple const&)> const& wanted) {
  Random random(7);
  std::uniform_real_distribution<double> coordinate(-1.0, 1.0);
  for (;;) {
    std::vector<Point> members(5);
    for (Point& p : members) p = {coordinate(random), coordinate(random), coordinate(random)};
    TestMesh const mesh = OneStencil({}, members);
    PlainCellOperator plain(mesh, 5.0, 0);
    plain.Collate();
    plain.DeriveAll();
    if (wanted(SumOfRow(plain, 1))) return mesh;
  }
}

TEST(CellResiduals, OfNegativeSumsAreZero) {
  TestMesh const mesh =
      StencilWithSums([](Triple const& s) { return s[0] < -0.1 && s[1] < -0.1 && s[2] < -0.1; });
  CellBed bed(mesh, Settings("5", "0"));
  EXPECT_EQ(kDone + MaximaLine(5.0, 0.0, 0.0, 0.0), bed.SetUpAndDerive());
  EXPECT_NE(std::string::npos, MaximaLine(5.0, 0.0, 0.0, 0.0).find("MAXResidual_X = 0.000000e+00"));
  EXPECT_EQ(0, bed.object->m_iWorstElement);
  EXPECT_FALSE(std::signbit(bed.object->MAXResidual_X));
}

TEST(CellResiduals, AreTheSumsOfWeightsAndMultiplierWithTheirSign) {
  TestMesh const mesh =
      StencilWithSums([](Triple const& s) { return s[0] > 0.1 && s[1] < -0.1 && s[2] > 0.1; });
  CellBed bed(mesh, Settings("5", "0"));
  bed.SetUpAndDerive();
  Triple const sum = SumOfRow(Derived(mesh, 5.0, 0), 1);
  EXPECT_EQ(sum[0], bed.object->MAXResidual_X);
  EXPECT_EQ(0.0, bed.object->MAXResidual_Y);
  EXPECT_EQ(sum[2], bed.object->MAXResidual_Z);
  double const multiplier = bed.object->m_ppRBFCellCoef[1][bed.object->m_ppRBFCellConn[1][0] + 1].x;
  EXPECT_NEAR(multiplier, sum[0], 1e-6) << "the weights alone sum to zero";
  EXPECT_EQ(1, bed.object->m_iWorstElement);
}

/// Two cells far apart, each with its own halo cells.
TestMesh TwoStencils(std::vector<Point> const& first, std::vector<Point> const& second) {
  TestMesh mesh;
  mesh.AddInteriorCell({});
  mesh.AddInteriorCell({});
  for (Point const& p : first) mesh.AddSide(kPartition, 1, p, p);
  for (Point const& p : second) mesh.AddSide(kPartition, 2, p, p);
  return mesh;
}

std::vector<Point> Members(TestMesh const& mesh, double sx, double sy, double sz) {
  std::vector<Point> result;
  for (Face const& face : mesh.partition)
    result.push_back({sx * face.centre.x, sy * face.centre.y, sz * face.centre.z});
  return result;
}

// Cell 1 has the largest x sum. Cell 2 is cell 1 mirrored in x and y: a negative x sum, and the first y sum
// above zero, however small beside the x sum.
TEST(CellResiduals, WorstElementIsTheLastCellAtWhichAnyMaximumRose) {
  TestMesh const one = StencilWithSums(
      [](Triple const& s) { return s[0] > 0.3 && s[1] < -1e-3 && s[1] > -0.1 && s[2] > 0.1; });
  TestMesh const mesh = TwoStencils(Members(one, 1, 1, 1), Members(one, -1, -1, 1));
  CellBed bed(mesh, Settings("5", "0"));
  bed.SetUpAndDerive();
  Triple const sum = SumOfRow(Derived(one, 5.0, 0), 1);
  EXPECT_EQ(sum[0], bed.object->MAXResidual_X);
  EXPECT_EQ(-sum[1], bed.object->MAXResidual_Y) << "mirroring only changes signs";
  EXPECT_EQ(2, bed.object->m_iWorstElement);
}

TEST(CellResiduals, EqualSumIsNoRise) {
  TestMesh const one =
      StencilWithSums([](Triple const& s) { return s[0] > 0.1 && s[1] > 0.1 && s[2] > 0.1; });
  TestMesh const mesh = TwoStencils(Members(one, 1, 1, 1), Members(one, 1, 1, 1));
  CellBed bed(mesh, Settings("5", "0"));
  bed.SetUpAndDerive();
  EXPECT_EQ(1, bed.object->m_iWorstElement);
}

TEST(CellResiduals, MaximaBeginAtZeroInEveryRunAndTheWorstElementDoesNot) {
  TestMesh const mesh =
      StencilWithSums([](Triple const& s) { return s[0] < -0.1 && s[1] < -0.1 && s[2] < -0.1; });
  CellBed bed(mesh, Settings("5", "0"));
  bed.SetUp();
  CZynRBFInternalObject& object = *bed.object;
  object.MAXResidual_X = object.MAXResidual_Y = object.MAXResidual_Z = object.MAX_Weithting_Residual_Normal =
      1e30;
  object.m_iWorstElement = 77;
  Printed([&] { object.DeriveRBFweighting(); });
  EXPECT_EQ(0.0, object.MAXResidual_X);
  EXPECT_EQ(0.0, object.MAXResidual_Y);
  EXPECT_EQ(0.0, object.MAXResidual_Z);
  EXPECT_EQ(1e30, object.MAX_Weithting_Residual_Normal) << "belongs to the inner faces";
  EXPECT_EQ(77, object.m_iWorstElement);
}

TEST(CellResiduals, OneCellDerivedAloneComparesWithTheMaximaAsTheyStand) {
  TestMesh const mesh =
      StencilWithSums([](Triple const& s) { return s[0] > 0.1 && s[1] > 0.1 && s[2] > 0.1; });
  CellBed bed(mesh, Settings("5", "0"));
  bed.SetUp();
  CZynRBFInternalObject& object = *bed.object;
  object.MAXResidual_X = object.MAXResidual_Z = 1e30;
  object.MAXResidual_Y = 0.0;
  object.m_iWorstElement = 77;
  object.DeriveCellCoefficentBysolveDQfullMatrix(1);
  EXPECT_EQ(1e30, object.MAXResidual_X);
  EXPECT_EQ(SumOfRow(Derived(mesh, 5.0, 0), 1)[1], object.MAXResidual_Y);
  EXPECT_EQ(1, object.m_iWorstElement);
}

// ------------------------------------------------------------------------------- stencils unfit for a system

TEST(CellWeights, ADoubledMemberLeavesAZeroRowAndColumn) {
  TestMesh mesh = SevenPoints();
  mesh.Neighbours(1).push_back(2);  // the first neighbour again: positions 2 and 8
  PlainCellOperator plain(mesh, 500.0, 0);
  plain.Collate();
  DenseSystem const system = plain.SystemOf(1);
  ASSERT_EQ(9, system.order);
  for (std::size_t j = 0; j < 8; ++j) {
    EXPECT_EQ(0.0, system.matrix[1 * 9 + j]);
    EXPECT_EQ(0.0, system.matrix[j * 9 + 1]);
  }
  EXPECT_EQ(1.0, system.matrix[1 * 9 + 8]);
  for (std::size_t a = 0; a < 3; ++a) EXPECT_EQ(0.0, system.rightHandSides[1 * 3 + a]);
  EXPECT_TRUE(SameAsPlainForm(mesh, 500.0, 0));
  EXPECT_TRUE(SameAsPlainForm(mesh, 500.0, 1));
}

// Two zero rows but for the border make the matrix singular. Nothing tells: LAPACK gives up before it solves, and
// the right-hand sides are taken for weights, which then do not even sum to zero.
TEST(CellWeights, TwoDoubledMembersLeaveTheRightHandSidesForWeights) {
  TestMesh mesh = SevenPoints();
  mesh.Neighbours(1).insert(mesh.Neighbours(1).end(), {2, 2});
  PlainCellOperator plain(mesh, 500.0, 0);
  plain.Collate();
  DenseSystem const system = plain.SystemOf(1);
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  for (int k = 1; k <= 10; ++k) {
    double const* const rhs = &system.rightHandSides[static_cast<std::size_t>(3 * (k - 1))];
    EXPECT_TRUE(SameRecord("weight", {rhs[0], rhs[1], rhs[2]}, 1, bed.object->m_ppRBFCellCoef[1][k])) << k;
  }
  EXPECT_TRUE(SameAsPlainForm(mesh, 500.0, 0));
}

// Both side cells stand at the origin: two equal rows, a singular matrix, and again the right-hand sides.
TEST(CellWeights, TwoSymmetryFacesOfACellLeaveTheRightHandSidesForWeights) {
  TestMesh mesh;
  mesh.AddInteriorCell({5.0, 5.0, 5.0});
  mesh.AddSide(kSymmetry, 1, {5.5, 5.0, 5.0}, {6.0, 5.0, 5.0});
  mesh.AddSide(kSymmetry, 1, {5.0, 5.5, 5.0}, {5.0, 6.0, 5.0});
  mesh.AddSide(kWall, 1, {4.5, 5.0, 5.0}, {4.0, 5.0, 5.0});
  PlainCellOperator plain(mesh, 5.0, 0);
  plain.Collate();
  DenseSystem const system = plain.SystemOf(1);
  CellBed bed(mesh, Settings("5", "0"));
  bed.SetUpAndDerive();
  for (int k = 1; k <= 5; ++k) {
    double const* const rhs = &system.rightHandSides[static_cast<std::size_t>(3 * (k - 1))];
    EXPECT_TRUE(SameRecord("weight", {rhs[0], rhs[1], rhs[2]}, 1, bed.object->m_ppRBFCellCoef[1][k])) << k;
  }
}

TEST(CellWeights, OfStencilsWithDoublesEqualThePlainForm) {
  std::vector<std::vector<int>> const rows = {{2, 2},       {1},          {1, 1},
                                              {2, 3, 2, 3}, {4, 1, 4, 5}, {7, 6, 5, 7, 6, 5, 7}};
  for (std::vector<int> const& row : rows) {
    TestMesh mesh = SevenPoints(0.7, {1, 2, 3});
    mesh.Neighbours(1) = row;
    for (int const shape : {0, 1})
      EXPECT_TRUE(SameAsPlainForm(mesh, 500.0, shape)) << ::testing::PrintToString(row);
  }
}

TEST(CellWeights, OfTwoMembersAtOnePointEqualThePlainForm) {
  TestMesh const mesh = OneStencil({}, {{1.0, 0.0, 0.5}, {1.0, 0.0, 0.5}, {0.0, 1.0, 0.0}, {0.0, 0.0, 0.0}});
  for (int const shape : {0, 1}) EXPECT_TRUE(SameAsPlainForm(mesh, 500.0, shape));
}

TEST(CellWeights, OfACellWithoutNeighboursAreNotANumber) {
  TestMesh const mesh = OneStencil({1.0, 2.0, 3.0}, {});
  CellBed bed(mesh);
  std::string const printed = bed.SetUpAndDerive();
  RBFnode const& weight = bed.object->m_ppRBFCellCoef[1][1];
  EXPECT_TRUE(std::isnan(weight.x) && std::isnan(weight.y) && std::isnan(weight.z));
  EXPECT_EQ(kDone + MaximaLine(500.0, 0.0, 0.0, 0.0), printed) << "a NaN is never above a maximum";
  EXPECT_EQ(0, bed.object->m_iWorstElement);
  EXPECT_TRUE(SameAsPlainForm(mesh, 500.0, 0));
  EXPECT_TRUE(SameAsPlainForm(mesh, 500.0, 1));
}

TEST(CellWeights, OfAFlatStencilInTheShapeNormalisedFormAreNotANumber) {
  TestMesh const mesh = OneStencil({}, {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}});
  CellBed bed(mesh, Settings("500", "1"));
  std::string const printed = bed.SetUpAndDerive();
  for (int k = 1; k <= 5; ++k) {
    RBFnode const& weight = bed.object->m_ppRBFCellCoef[1][k];
    EXPECT_TRUE(std::isnan(weight.x) && std::isnan(weight.y) && std::isnan(weight.z)) << k;
  }
  EXPECT_EQ("Cell RBF flux Interpolation is done.\n" + MaximaLine(500.0, 0.0, 0.0, 0.0), printed);
  EXPECT_TRUE(SameAsPlainForm(mesh, 500.0, 1));
}

TEST(CellWeights, OfAFlatStencilInThePlainFormHaveNoSlopeAcross) {
  TestMesh const mesh = OneStencil({}, {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0}});
  CellBed bed(mesh);
  bed.SetUpAndDerive();
  for (int k = 1; k <= 6; ++k) EXPECT_EQ(0.0, bed.object->m_ppRBFCellCoef[1][k].z);
  EXPECT_NEAR(2.0, GradientOf(*bed.object, 1, Linear)[0], 1e-3);
}

TEST(CellWeights, WithSpan0AreNotANumberAndEqualThePlainForm) {
  for (int const shape : {0, 1}) {
    EXPECT_TRUE(SameAsPlainForm(SevenPoints(), 0.0, shape));
    CellBed bed(SevenPoints(), Settings("0", std::to_string(shape)));
    bed.SetUpAndDerive();
    EXPECT_TRUE(std::isnan(bed.object->m_ppRBFCellCoef[1][1].x)) << shape;
  }
}

}  // namespace
}  // namespace zyn_test::weights_test
