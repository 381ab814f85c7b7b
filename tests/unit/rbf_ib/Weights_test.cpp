#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "foundation/DQKernel.h"
#include "tests/support/mesh/Hexahedra.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_ib/PointBed.h"
#include "tests/support/rbf_ib/PointTables.h"

// The coefficients: small cases in closed form, the two levels of method 3, and what the systems do not promise.

namespace zyn_test::weights_test {
namespace {

using List = std::vector<int>;
constexpr double kEpsilon = std::numeric_limits<double>::epsilon();

/// The kernel written down a second time, by its scaled distance.
double Kernel(double s) { return std::pow(1.0 - s, 6.0) * (35.0 * s * s + 18.0 * s + 3.0); }

double Distance(Point a, Point b) {
  return std::sqrt((a.y - b.y) * (a.y - b.y) + (a.x - b.x) * (a.x - b.x) + (a.z - b.z) * (a.z - b.z));
}

std::vector<double> ValueCoefficients(PointBed const& bed, int i) {
  double const* const row = bed.object.m_ppIBValueCoef[i];
  return std::vector<double>(row + 1, row + 1 + bed.object.m_ppIBConn[i][0]);
}

// ------------------------------------------------------------------------------------------ one system a point

// phi(r) w = phi(r), so that w = phi / 3; with the support measured by the member itself, phi is that of 1 / Span.
TEST(PointWeights, OfASingleMemberAreItsKernelOver3) {
  for (double const span : {500.0, 5.0, 1.0}) {
    PointBed bed(LooseCells({{1, 2, 3}, {9, 9, 9}}), PointSettings{span, 2, 1});
    Point const p{1.5, 1.75, 3.25};
    bed.SetUp(AllUsable(2), {p});
    ASSERT_EQ((List{1}), bed.Stencil(1));
    EXPECT_NEAR(Kernel(1.0 / span) / 3.0, bed.object.m_ppIBValueCoef[1][1], 8 * kEpsilon);
    double const r = Distance(p, {1, 2, 3}), c = span * r;
    double const slope = -56.0 * (5.0 * r + c) * std::pow(c - r, 5.0) / std::pow(c, 8.0) / 3.0;
    IBCnode const& w = bed.object.m_ppIBCoef[1][1];
    EXPECT_NEAR(0.5 * slope, w.x, 1e-13 * std::fabs(slope));
    EXPECT_NEAR(-0.25 * slope, w.y, 1e-13 * std::fabs(slope));
    EXPECT_NEAR(0.25 * slope, w.z, 1e-13 * std::fabs(slope));
    EXPECT_EQ(bed.object.m_dFiMaxRBF, bed.object.m_ppIBValueCoef[1][1]);
  }
}

// The slope of the kernel against differences of the value: (w(p + h) - w(p - h)) / 2h with the same support.
TEST(PointWeights, OfTheDerivativesAreTheSlopesOfThoseOfTheValue) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  Point const p{1.3, 1.1, 1.7};
  PointBed bed(mesh, PointSettings{5.0, 1, 9});
  bed.SetUp(InteriorUsable(mesh), {p});
  int const n = bed.object.m_ppIBConn[1][0];
  double const h = 1e-5;
  auto const shifted = [&](double dx, double dy, double dz) {
    PointArrays at({{p.x + dx, p.y + dy, p.z + dz}});
    bed.object.DeriveIBCoefficentBysolveDQfullMatrix(1, at.x.Data(), at.y.Data(), at.z.Data());
    return ValueCoefficients(bed, 1);
  };
  std::vector<IBCnode> slopes(bed.object.m_ppIBCoef[1] + 1, bed.object.m_ppIBCoef[1] + 1 + n);
  auto const check = [&](double IBCnode::*component, Point d) {
    std::vector<double> const plus = shifted(d.x, d.y, d.z), minus = shifted(-d.x, -d.y, -d.z);
    for (std::size_t k = 0; k < slopes.size(); ++k)
      EXPECT_NEAR((plus[k] - minus[k]) / (2 * h), slopes[k].*component, 1e-5) << k;
  };
  check(&IBCnode::x, {h, 0, 0});
  check(&IBCnode::y, {0, h, 0});
  check(&IBCnode::z, {0, 0, h});
}

// To the condition of the system times round-off; these supports are narrow.
TEST(PointWeights, AtAMemberAreOneForItAndZeroForTheOthers) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  for (int const method : {1, 2}) {
    for (double const span : {5.0, 1.0}) {
      PointBed bed(mesh, PointSettings{span, method, 9});
      bed.SetUp(InteriorUsable(mesh), {mesh.Centre(14), mesh.Centre(1)});
      for (int const i : {1, 2}) {
        List const stencil = bed.Stencil(i);
        int const cell = i == 1 ? 14 : 1;
        ASSERT_NE(stencil.end(), std::find(stencil.begin(), stencil.end(), cell));
        for (std::size_t k = 0; k < stencil.size(); ++k)
          EXPECT_NEAR(stencil[k] == cell ? 1.0 : 0.0, ValueCoefficients(bed, i)[k], 1e-10)
              << "method " << method << " span " << span;
      }
    }
  }
}

// r = 0 takes the member's term out of the three right-hand sides.
TEST(PointWeights, OfTheOnlyMemberAtThePointHaveNoSlope) {
  PointBed bed(LooseCells({{1, 2, 3}, {9, 9, 9}}));
  Array marks = AllUsable(2);
  PointArrays points({{1, 2, 3}});
  bed.SetUpToTree(marks, 1);
  bed.object.SearchIBADTress(points.x.Data(), points.y.Data(), points.z.Data(), 2, 0.0, 1);
  bed.object.m_pIBSupportLength[1] = 1.0;
  EXPECT_EQ(1, bed.object.DeriveIBCoefficentBysolveDQfullMatrix(1, points.x.Data(), points.y.Data(),
                                                                points.z.Data()));
  IBCnode const& w = bed.object.m_ppIBCoef[1][1];
  EXPECT_TRUE(w.x == 0.0 && w.y == 0.0 && w.z == 0.0);
  EXPECT_NEAR(1.0, bed.object.m_ppIBValueCoef[1][1], 2 * kEpsilon);
}

TEST(PointWeights, CarryThePointsNumberAsTag) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  for (int const method : {1, 2}) {
    PointBed bed(mesh, PointSettings{500.0, method, 9});
    bed.SetUp(AllUsable(mesh.NCell()), {{1.3, 1.1, 1.7}, {0.2, 0.1, 0.7}});
    for (int const i : {1, 2}) {
      EXPECT_EQ(0, bed.object.m_ppIBCoef[i][0].tag);
      for (int k = 1; k <= bed.object.m_ppIBConn[i][0]; ++k) EXPECT_EQ(i, bed.object.m_ppIBCoef[i][k].tag);
    }
  }
}

// Without a constant term the sums come close and do not arrive; a narrow support shows it well.
TEST(PointWeights, ReproduceAConstantNearlyButNotExactly) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  for (int const method : {1, 2, 3}) {
    for (double const span : {500.0, 20.0}) {
      PointBed bed(mesh, PointSettings{span, method, 9});
      bed.SetUp(InteriorUsable(mesh), {{1.3, 1.1, 1.7}, {0.7, 1.9, 2.2}});
      double const tolerance = span == 500.0 ? 1e-3 : 0.1;
      EXPECT_NEAR(1.0, bed.object.m_dFiMaxRBF, tolerance) << "method " << method;
      EXPECT_NE(1.0, bed.object.m_dFiMaxRBF);
      for (double const slope :
           {bed.object.m_dDfdxMaxError, bed.object.m_dDfdyMaxError, bed.object.m_dDfdzMaxError}) {
        EXPECT_LT(slope, 3 * tolerance) << "method " << method;
        EXPECT_LT(0.0, slope) << "method " << method;
      }
    }
  }
}

TEST(PointWeights, OfAZeroSupportAreNoNumbersAndTheReportShowsIt) {
  PointBed bed(LooseCells({{1, 2, 3}, {9, 9, 9}}), PointSettings{500.0, 2, 1});
  bed.SetUp(AllUsable(2), {{1, 2, 3}, {1.5, 2, 3}});
  EXPECT_EQ(0.0, bed.object.m_pIBSupportLength[1]);
  EXPECT_TRUE(std::isnan(bed.object.m_ppIBValueCoef[1][1]));
  EXPECT_TRUE(std::isnan(bed.object.m_dFiSumSq));
  EXPECT_EQ(2, bed.object.m_iFiMaxPoint) << "what is not a number is not the largest";
}

// Equal rows: the factorisation stops at the zero pivot, and the right-hand sides stay what they were.
TEST(PointWeights, OfTwoMembersInOnePlaceAreTheRightHandSides) {
  TestMesh mesh = LooseCells({{0, 0, 0}, {1, 0, 0}});
  mesh.AddSide(kPartition, 1, {0, 0, 0}, {0, 0, 0});
  Array marks = AllUsable(3);
  marks[2] = kUnusable;
  PointBed bed(mesh, PointSettings{5.0, 2, 2});
  bed.SetUp(marks, {{0.5, 0, 0}});
  ASSERT_EQ(2U, bed.Stencil(1).size());
  PlainDQKernel const kernel(5.0, 0.5);
  for (int const k : {1, 2}) {
    EXPECT_EQ(kernel.Value(0.5), bed.object.m_ppIBValueCoef[1][k]);
    EXPECT_EQ(kernel.Gradient({0.5, 0, 0}).x, bed.object.m_ppIBCoef[1][k].x);
  }
}

TEST(PointWeights, AreDerivedAnewBySingleCalls) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{500.0, 2, 9});
  PointArrays points({{1.3, 1.1, 1.7}, {0.2, 0.1, 0.7}});
  Array marks = AllUsable(mesh.NCell());
  bed.SetUp(marks, points);
  std::vector<double> const before = ValueCoefficients(bed, 2);
  bed.object.m_ppIBValueCoef[2][3] = 77.0;
  bed.object.DeriveIBCoefficentBysolveDQfullMatrix(2, points.x.Data(), points.y.Data(), points.z.Data());
  EXPECT_EQ(before, ValueCoefficients(bed, 2));
  EXPECT_EQ(3, bed.object.m_iNDerived) << "each derivation counts";
}

// --------------------------------------------------------------------------------------------- cells of a node

/// Weights of a node's cells with guards around them.
std::vector<double> NodeWeights(PointBed& bed, int node) {
  int const n = bed.object.ppRBFiNodeConn[node][0];
  Array w(n, -7.5);
  EXPECT_EQ(1, bed.object.DeriveIBfiBysolveDQfullMatrix_03(node, w.Data()));
  EXPECT_TRUE(w.GuardsIntact());
  return std::vector<double>(w.Data() + 1, w.Data() + 1 + n);
}

TEST(PointNodeWeights, OfASingleCellAreItsKernelOver3) {
  for (double const span : {500.0, 5.0}) {
    TestMesh mesh = LooseCells({{0, 0, 0}, {1, 0, 0}});
    int const node = mesh.AddNode({0.25, 0.5, 0.75});
    mesh.NodeCells(node) = {2};
    PointBed bed(mesh, PointSettings{span, 3, 20});
    Array marks = AllUsable(2);
    bed.SetUpToTree(marks, 1);
    std::vector<double> const w = NodeWeights(bed, node);
    ASSERT_EQ(1U, w.size());
    EXPECT_NEAR(Kernel(1.0 / span) / 3.0, w[0], 8 * kEpsilon);
    if (span == 500.0) {
      EXPECT_NEAR(1.0, w[0], 1e-4);
    }
  }
}

TEST(PointNodeWeights, OfANodeWithoutCellsAreNone) {
  TestMesh mesh = LooseCells({{0, 0, 0}, {1, 0, 0}});
  mesh.AddNode({0.25, 0.5, 0.75});
  PointBed bed(mesh);
  Array marks = AllUsable(2);
  bed.SetUpToTree(marks, 1);
  EXPECT_TRUE(NodeWeights(bed, 1).empty());
}

// The eight cells stand at the corners of a cube around the node, so all weights are one w, and every row of the
// system says the same: (k(0) + 3 k(edge) + 3 k(diagonal of a side) + k(diagonal)) w = k(half a diagonal).
TEST(PointNodeWeights, OfEightCellsAllAroundAreEqual) {
  HexahedraOptions options;
  options.nx = options.ny = options.nz = 2;
  options.jitter = 0.0;
  TestMesh const mesh = Hexahedra(options);
  int const middle = 14;
  ASSERT_EQ(0.0, Distance({1, 1, 1}, mesh.nodes[middle]));
  PointBed bed(mesh, PointSettings{5.0, 3, 20});
  Array marks = InteriorUsable(mesh);
  bed.SetUpToTree(marks, 1);
  std::vector<double> const w = NodeWeights(bed, middle);
  ASSERT_EQ(8U, w.size());
  double const support = 5.0 * std::sqrt(0.75);
  auto const k = [support](double distance) { return Kernel(distance / support); };
  double const sum = k(0.0) + 3.0 * k(1.0) + 3.0 * k(std::sqrt(2.0)) + k(std::sqrt(3.0));
  for (double const weight : w) EXPECT_NEAR(k(std::sqrt(0.75)) / sum, weight, 1e-12);
}

TEST(PointNodeWeights, SolveTheNodesSystemToRoundOff) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{500.0, 3, 20});
  Array marks = InteriorUsable(mesh);
  bed.SetUpToTree(marks, 1);
  PlainPointOperator plain(bed.host.mesh, bed.host.partitionFaces);
  plain.Collate();
  plain.CollectNodeCells(marks.Data());
  for (int n = 1; n <= mesh.NNode(); ++n) {
    System const system = plain.NodeSystem(n);
    ASSERT_GT(system.order, 0);
    EXPECT_LT(BackwardError(system, 0, NodeWeights(bed, n)), 1e-12) << "node " << n;
  }
}

// Nothing of the point enters: the support of a node is measured on the node's own cells.
TEST(PointNodeWeights, DependOnTheNodeAlone) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{500.0, 3, 20});
  bed.SetUp(AllUsable(mesh.NCell()), {{1.3, 1.1, 1.7}});
  std::vector<double> const before = NodeWeights(bed, 20);
  bed.object.m_pIBSupportLength[1] = 1e-3;
  bed.SetUp(AllUsable(mesh.NCell()), {{-5.0, 8.0, 2.0}, {0.1, 0.2, 0.3}});
  EXPECT_EQ(before, NodeWeights(bed, 20));
}

// ------------------------------------------------------------------------------------------------- two levels

/// One usable cell at the origin with a single node beside it. Everything is in closed form: the system of the
/// point stands on the cell and the node, and the node's share goes to the cell as well.
struct CellAndNode : TestMesh {
  static constexpr double kNodeX = 1.0;
  explicit CellAndNode(List const& cellsOfNode) {
    AddNode({kNodeX, 0, 0});
    AddCell({0, 0, 0}, {1});
    AddInteriorCell({50, 0, 0});
    JoinInterior(1, 2);
    NodeCells(1) = cellsOfNode;
  }
};

/// Weights of cell and node for the value at x in (0, 1) on the line between them, with support c.
struct TwoPointSolution {
  TwoPointSolution(double x, double c) {
    double const a = 3.0, b = Kernel(1.0 / c), p = Kernel(x / c), q = Kernel((1.0 - x) / c);
    cell = (a * p - b * q) / (a * a - b * b);
    node = (a * q - b * p) / (a * a - b * b);
  }
  double cell, node;
};

TEST(PointTwoLevels, PassTheShareOfANodeDownToItsCells) {
  constexpr double kSpan = 4.0, kX = 0.25;
  Array marks(2, kUnusable);
  marks[1] = kUsable;
  PointBed bed(CellAndNode({1}), PointSettings{kSpan, 3, 20});
  bed.SetUp(marks, {{kX, 0, 0}});
  ASSERT_EQ((List{1}), bed.Stencil(1));
  TwoPointSolution const w(kX, kSpan * kX);
  double const shareInNode = Kernel(1.0 / kSpan) / 3.0;
  EXPECT_NEAR(w.cell + w.node * shareInNode, bed.object.m_ppIBValueCoef[1][1], 1e-13);
}

TEST(PointTwoLevels, DropTheShareOfANodeWithoutUsableCells) {
  constexpr double kSpan = 4.0, kX = 0.25;
  Array marks(2, kUnusable);
  marks[1] = kUsable;
  PointBed bed(CellAndNode({2}), PointSettings{kSpan, 3, 20});
  bed.SetUp(marks, {{kX, 0, 0}});
  ASSERT_EQ((List{1}), bed.Stencil(1));
  EXPECT_NEAR(TwoPointSolution(kX, kSpan * kX).cell, bed.object.m_ppIBValueCoef[1][1], 1e-13);
}

TEST(PointTwoLevels, GiveASeedBothItsDirectShareAndThatOfItsNodes) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{500.0, 3, 20});
  Point const p{1.3, 1.1, 1.7};
  bed.SetUp(InteriorUsable(mesh), {p});
  PlainPointOperator plain(bed.host.mesh, bed.host.partitionFaces);
  plain.SetUp(InteriorUsable(mesh).Data(), {p});
  System system = plain.NodeAndSeedSystem(1, p);
  Solve(system);
  int const nSeed = bed.object.m_pIBTwoSeeds[1] + 1;
  ASSERT_EQ(bed.object.m_ppIBNodeConn[1][0] + nSeed, system.order);
  for (int seed = 1; seed <= nSeed; ++seed) {
    double fromNodes = 0.0;
    int nodes = 0;
    for (int j = 1; j <= bed.object.m_ppIBNodeConn[1][0]; ++j) {
      int const node = bed.object.m_ppIBNodeConn[1][j];
      std::vector<double> const w = NodeWeights(bed, node);
      for (int k = 1; k <= static_cast<int>(w.size()); ++k) {
        if (bed.object.m_pIBNodeCellTable[1].GetValue(j, k) != seed) continue;
        fromNodes += w[static_cast<std::size_t>(k - 1)] * system.Solution(nSeed + j - 1, 3);
        ++nodes;
      }
    }
    EXPECT_EQ(8, nodes) << "each node of a hexahedron brings a share";
    EXPECT_EQ(fromNodes + system.Solution(seed - 1, 3), bed.object.m_ppIBValueCoef[1][seed]);
  }
}

TEST(PointTwoLevels, LeaveTheTagsAtZero) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{500.0, 3, 20});
  bed.SetUp(AllUsable(mesh.NCell()), {{1.3, 1.1, 1.7}, {0.2, 0.1, 0.7}});
  for (int const i : {1, 2})
    for (int k = 0; k <= bed.object.m_ppIBConn[i][0]; ++k) EXPECT_EQ(0, bed.object.m_ppIBCoef[i][k].tag);
}

// SetDataVector accumulates, so a second derivation of the same point doubles what the first stored.
TEST(PointTwoLevels, AddToWhatIsThere) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  PointBed bed(mesh, PointSettings{500.0, 3, 20});
  PointArrays points({{1.3, 1.1, 1.7}});
  Array marks = InteriorUsable(mesh);
  bed.SetUp(marks, points);
  std::vector<double> const once = ValueCoefficients(bed, 1);
  EXPECT_EQ(1, bed.object.DeriveIBCoefficentBysolveDQfullMatrix_30_03(1, points.x.Data(), points.y.Data(),
                                                                      points.z.Data()));
  std::vector<double> const twice = ValueCoefficients(bed, 1);
  for (std::size_t k = 0; k < once.size(); ++k)
    EXPECT_NEAR(2.0 * once[k], twice[k], 1e-9 * (1 + std::fabs(once[k])));
}

// Nodes are shared by the points, and what is kept of one must not reach another.
TEST(PointTwoLevels, OfAPointDoNotDependOnThePointsBefore) {
  TestMesh const mesh = Hexahedra(HexahedraOptions());
  std::vector<Point> const points = {{1.3, 1.1, 1.7}, {1.4, 1.2, 1.6}, {0.2, 0.1, 0.7}, {2.9, 0.3, 1.5}};
  PointBed all(mesh, PointSettings{500.0, 3, 20});
  all.SetUp(AllUsable(mesh.NCell()), points);
  for (int i = 1; i <= 4; ++i) {
    PointBed one(mesh, PointSettings{500.0, 3, 20});
    one.SetUp(AllUsable(mesh.NCell()), {points[static_cast<std::size_t>(i - 1)]});
    EXPECT_EQ(one.Stencil(1), all.Stencil(i));
    EXPECT_EQ(ValueCoefficients(one, 1), ValueCoefficients(all, i));
  }
}

// ------------------------------------------------------------------------------------------- the whole, by bits

TEST(PointWeights, OfAllMethodsEqualThePlainFormBitForBit) {
  HexahedraOptions options;
  TestMesh const mesh = Hexahedra(options);
  std::vector<Point> points;
  for (int i = 0; i < 25; ++i) points.push_back({0.12 * i, 1.5 + std::sin(i), 1.5 + 1.6 * std::cos(3.0 * i)});
  points.push_back(mesh.Centre(14));
  points.push_back(points[3]);
  for (int const method : {1, 2, 3}) {
    for (double const span : {500.0, 3.0}) {
      PointSettings const settings{span, method, 12};
      Array marks = InteriorUsable(mesh);
      PointBed bed(mesh, settings);
      bed.SetUp(marks, points);
      PlainPointOperator plain(bed.host.mesh, bed.host.partitionFaces, settings);
      plain.SetUp(marks.Data(), points);
      EXPECT_TRUE(SameTables(plain, bed.object)) << "method " << method << " span " << span;
    }
  }
}

}  // namespace
}  // namespace zyn_test::weights_test
