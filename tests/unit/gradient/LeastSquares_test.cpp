#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <iostream>
#include <limits>
#include <string>

#include "gradient/COperatorGradientImpl.h"
#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/gradient/SummationOrder.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/watch/FlushRecord.h"

// The least-squares gradient: moments at Initialize, right-hand sides and one 3 by 3 solve per cell at each
// call.

namespace zyn_test::least_squares_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::string const kSingularLines = "aa[ii][j]=0.\n4\n";

/// A host with an initialized least-squares operator.
struct Fit {
  explicit Fit(TestMesh const& mesh, Exchange const& exchange = NoExchange(), bool lendEmptyArrays = false)
      : host(mesh, exchange, lendEmptyArrays),
        op(host, 1),
        g(mesh.NCell()),
        result(op.gradient.Initialize()) {}

  COperatorGradientImpl const& State() const { return *op.gradient.m_pImpl; }

  /// Runs the gradient. @return what it printed
  std::string Run(Field const& phi, int n = 1) {
    GuardedArray<double> guardedPhi = Guarded(phi);
    testing::internal::CaptureStdout();
    op.gradient.GradMethod(guardedPhi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), n);
    return testing::internal::GetCapturedStdout();
  }

  GradientHost host;
  ConnectedOperator op;
  GuardedGradient g;
  int result;
};

::testing::AssertionResult SameMoments(Moments const& expected, COperatorGradientImpl const& state,
                                       int nCell) {
  Field const* const fields[] = {&expected.xx, &expected.yy, &expected.zz,
                                 &expected.xy, &expected.xz, &expected.yz};
  double const* const arrays[] = {state.m_pSxx, state.m_pSyy, state.m_pSzz,
                                  state.m_pSxy, state.m_pSxz, state.m_pSyz};
  char const* const names[] = {"Sxx", "Syy", "Szz", "Sxy", "Sxz", "Syz"};
  for (int n = 0; n < 6; ++n) {
    ::testing::AssertionResult const same = SameBits(nCell, fields[n]->data(), arrays[n]);
    if (!same) return ::testing::AssertionFailure() << names[n] << ": " << same.message();
  }
  return ::testing::AssertionSuccess();
}

::testing::AssertionResult SameRightHandSides(Gradient const& expected, COperatorGradientImpl const& state,
                                              int nCell) {
  ::testing::AssertionResult const x = SameBits(nCell, expected.x.data(), state.m_pBx);
  if (!x) return x;
  ::testing::AssertionResult const y = SameBits(nCell, expected.y.data(), state.m_pBy);
  if (!y) return y;
  return SameBits(nCell, expected.z.data(), state.m_pBz);
}

/// A box whose cell centres are shifted at random, ghost cells included: least squares sees only them.
/// Without symmetry faces: those of the box become walls.
TestMesh ShiftedBoxWithoutSymmetry(std::uint64_t seed) {
  TestMesh mesh = ClosedBox({0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, 2, 3});
  mesh.wall.insert(mesh.wall.end(), mesh.symmetry.begin(), mesh.symmetry.end());
  mesh.symmetry.clear();
  Random random(seed);
  for (Vector3& centre : mesh.centres) {
    centre.x += Uniform(random, -0.2, 0.2);
    centre.y += Uniform(random, -0.2, 0.2);
    centre.z += Uniform(random, -0.2, 0.2);
  }
  return mesh;
}

Field LinearField(TestMesh const& mesh) {
  Field phi(mesh.centres.size());
  for (std::size_t c = 1; c < phi.size(); ++c)
    phi[c] = 4.0 + 2.0 * mesh.centres[c].x - 3.0 * mesh.centres[c].y + 0.5 * mesh.centres[c].z;
  return phi;
}

std::vector<Vector3> const kAllAxes = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
std::vector<Vector3> const kNoX = {{0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
std::vector<Vector3> const kNoY = {{1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}};
std::vector<Vector3> const kNoZ = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};

// --------------------------------------------------------------------------------------------------- moments

TEST(LeastSquares, MomentsRightHandSidesAndGradientEqualTheirPlainFormsOnRandomMeshes) {
  int solved = 0;
  for (std::uint64_t seed = 1; seed <= 40; ++seed) {
    Random random(seed);
    TestMesh const mesh = RandomMesh(random);
    Field const phi = TameField(random, mesh);
    Fit fit(mesh, ExchangeWithItself(mesh));
    std::string const printed = fit.Run(phi);
    Moments const moments = LeastSquaresMoments(mesh);
    LeastSquaresResult const expected = LeastSquares(mesh, moments, phi, ExchangeWithItself(mesh));
    EXPECT_TRUE(SameMoments(moments, fit.State(), mesh.NCell())) << seed;
    EXPECT_TRUE(SameRightHandSides(expected.rightHandSide, fit.State(), mesh.NCell())) << seed;
    EXPECT_TRUE(SameBits(expected.g, fit.g)) << seed;
    EXPECT_EQ(expected.zeroPivot ? kSingularLines : "", printed) << seed;
    if (!expected.zeroPivot && mesh.nInnerCells > 0) ++solved;
  }
  EXPECT_LT(10, solved);
}

TEST(LeastSquares, HandComputedMomentsOfOneOffset) {
  TestMesh mesh;
  mesh.AddInteriorCell({1.0, 1.0, 1.0}, 1.0);
  mesh.AddInteriorCell({3.0, 4.0, 6.0}, 1.0);  // offset (2, 3, 5)
  mesh.inner.push_back({1, 2, {}, {}, 0.5, 0});
  Fit fit(mesh);
  for (int const c : {1, 2}) {
    EXPECT_EQ(4.0, fit.State().m_pSxx[c]);
    EXPECT_EQ(9.0, fit.State().m_pSyy[c]);
    EXPECT_EQ(25.0, fit.State().m_pSzz[c]);
    EXPECT_EQ(6.0, fit.State().m_pSxy[c]);
    EXPECT_EQ(10.0, fit.State().m_pSxz[c]);
    EXPECT_EQ(15.0, fit.State().m_pSyz[c]);
  }
}

/// Cell 1 and one face of the given group to cell 2 at the offset (2, 3, 5).
TestMesh OneFace(std::vector<Face> TestMesh::*group) {
  TestMesh mesh;
  mesh.AddInteriorCell({}, 1.0);
  int const other = mesh.AddOuterCell({2.0, 3.0, 5.0});
  (mesh.*group).push_back({1, other, {}, {}, 0.5, 1});
  return mesh;
}

TEST(LeastSquares, PartitionFacesEnterTheMomentsOfBothCells) {
  Fit fit(OneFace(&TestMesh::partition));
  EXPECT_EQ(4.0, fit.State().m_pSxx[1]);
  EXPECT_EQ(4.0, fit.State().m_pSxx[2]);
  EXPECT_EQ(15.0, fit.State().m_pSyz[2]);
}

TEST(LeastSquares, BoundaryFacesOfAllGroupsEnterTheMomentsOfTheirCvCellOnly) {
  for (std::vector<Face> TestMesh::*group :
       {&TestMesh::inlet, &TestMesh::outlet, &TestMesh::wall, &TestMesh::symmetry}) {
    Fit fit(OneFace(group));
    EXPECT_EQ(4.0, fit.State().m_pSxx[1]);
    EXPECT_EQ(15.0, fit.State().m_pSyz[1]);
    EXPECT_EQ(0.0, fit.State().m_pSxx[2]);
    EXPECT_EQ(0.0, fit.State().m_pSyz[2]);
  }
}

TEST(LeastSquares, MomentsAddInnerPartitionInletOutletWallAndSymmetryFacesInThatOrder) {
  // Cell 1 stands at the origin, so that the offsets' squares are the terms of Sxx.
  Random random(41);
  std::vector<std::vector<double>> terms;
  std::vector<double> found;
  for (int n = 0; n < kSumsForAnOrder; ++n) {
    TestMesh mesh;
    std::vector<double> squares;
    mesh.AddInteriorCell({}, 1.0);
    for (int c = 2; c <= 8; ++c) {
      double const x = Uniform(random, 0.5, 4.0);
      squares.push_back(x * x);
      if (c <= 3)
        mesh.AddInteriorCell({x, 0.0, 0.0}, 1.0);
      else
        mesh.AddOuterCell({x, 0.0, 0.0});
    }
    auto const face = [](int other) { return Face{1, other, {}, {}, 0.5, 0}; };
    mesh.inner = {face(2), face(3)};
    mesh.partition = {face(4)};
    mesh.inlet = {face(5)};
    mesh.outlet = {face(6)};
    mesh.wall = {face(7)};
    mesh.symmetry = {face(8)};
    terms.push_back(squares);
    Fit fit(mesh);
    found.push_back(fit.State().m_pSxx[1]);
  }
  SummationOrder const order(terms);
  ASSERT_TRUE(order.TellsAllOtherOrdersApart());
  EXPECT_EQ(order.Sums(), found);
}

TEST(LeastSquares, MomentsAreNotRenewedWhenTheMeshMoves) {
  TestMesh mesh = ShiftedBoxWithoutSymmetry(1);
  Fit fit(mesh);
  Moments const before = LeastSquaresMoments(mesh);
  for (int c = 1; c <= mesh.NCell(); ++c) {
    fit.host.centres.x[c] *= 2.0;
    mesh.centres[static_cast<std::size_t>(c)].x *= 2.0;
  }
  Field const phi = LinearField(mesh);
  fit.Run(phi);
  EXPECT_TRUE(SameMoments(before, fit.State(), mesh.NCell()));
  EXPECT_TRUE(SameBits(LeastSquares(mesh, before, phi, NoExchange()).g, fit.g));
}

TEST(LeastSquares, InitializeExchangesNothing) {
  Fit fit(ShiftedBoxWithoutSymmetry(1));
  EXPECT_EQ(1, fit.result);
  EXPECT_TRUE(fit.host.communication.Calls().empty());
}

// ------------------------------------------------------------------------------------------ right-hand sides

TEST(LeastSquares, InnerFacesEnterTheRightHandSidesOfBothCellsAlike) {
  TestMesh mesh;
  mesh.AddInteriorCell({1.0, 1.0, 1.0}, 1.0);
  mesh.AddInteriorCell({3.0, 4.0, 6.0}, 1.0);
  mesh.inner.push_back({1, 2, {}, {}, 0.5, 1});  // one-sided: plays no part here
  Fit fit(mesh);
  fit.Run({0.0, 10.0, 12.0});
  for (int const c : {1, 2}) {
    EXPECT_EQ(4.0, fit.State().m_pBx[c]);
    EXPECT_EQ(6.0, fit.State().m_pBy[c]);
    EXPECT_EQ(10.0, fit.State().m_pBz[c]);
  }
}

TEST(LeastSquares, PartitionFacesEnterTheRightHandSideOfTheCvCellOnly) {
  Fit fit(OneFace(&TestMesh::partition));
  fit.Run({0.0, 10.0, 12.0});
  EXPECT_EQ(4.0, fit.State().m_pBx[1]);
  EXPECT_TRUE(SameBits(0.0, fit.State().m_pBx[2]));
}

TEST(LeastSquares, InletOutletAndWallFacesEnterTheRightHandSideOfTheCvCellOnly) {
  for (std::vector<Face> TestMesh::*group : {&TestMesh::inlet, &TestMesh::outlet, &TestMesh::wall}) {
    Fit fit(OneFace(group));
    fit.Run({0.0, 10.0, 12.0});
    EXPECT_EQ(4.0, fit.State().m_pBx[1]);
    EXPECT_EQ(6.0, fit.State().m_pBy[1]);
    EXPECT_EQ(10.0, fit.State().m_pBz[1]);
    EXPECT_TRUE(SameBits(0.0, fit.State().m_pBx[2]));
  }
}

TEST(LeastSquares, SymmetryFacesStayOutOfTheRightHandSide) {
  Fit fit(OneFace(&TestMesh::symmetry));
  fit.Run({0.0, 10.0, 12.0});
  for (int const c : {1, 2}) {
    EXPECT_TRUE(SameBits(0.0, fit.State().m_pBx[c]));
    EXPECT_TRUE(SameBits(0.0, fit.State().m_pBy[c]));
    EXPECT_TRUE(SameBits(0.0, fit.State().m_pBz[c]));
  }
}

TEST(LeastSquares, RightHandSidesAddInnerPartitionInletOutletAndWallFacesInThatOrder) {
  // All offsets are (1, 0, 0) and phi is 0 in cell 1, so that the terms of Bx are the neighbours' values.
  Random random(42);
  std::vector<std::vector<double>> terms;
  std::vector<double> found;
  for (int n = 0; n < kSumsForAnOrder; ++n) {
    TestMesh mesh;
    Field phi = {0.0, 0.0};
    mesh.AddInteriorCell({}, 1.0);
    for (int c = 2; c <= 7; ++c) {
      phi.push_back(RoughTerm(random));
      if (c <= 3)
        mesh.AddInteriorCell({1.0, 0.0, 0.0}, 1.0);
      else
        mesh.AddOuterCell({1.0, 0.0, 0.0});
    }
    auto const face = [](int other) { return Face{1, other, {}, {}, 0.5, 0}; };
    mesh.inner = {face(2), face(3)};
    mesh.partition = {face(4)};
    mesh.inlet = {face(5)};
    mesh.outlet = {face(6)};
    mesh.wall = {face(7)};
    terms.emplace_back(phi.begin() + 2, phi.end());
    Fit fit(mesh);
    fit.Run(phi);
    found.push_back(fit.State().m_pBx[1]);
  }
  SummationOrder const order(terms);
  ASSERT_TRUE(order.TellsAllOtherOrdersApart());
  EXPECT_EQ(order.Sums(), found);
}

TEST(LeastSquares, RightHandSidesCarryNothingFromOneCallToTheNext) {
  TestMesh const mesh = ShiftedBoxWithoutSymmetry(2);
  Random random(43);
  Field const first = TameField(random, mesh), second = TameField(random, mesh);
  Fit fit(mesh);
  fit.Run(Field(mesh.centres.size(), kNaN));
  fit.Run(first);
  fit.Run(second);
  EXPECT_TRUE(SameBits(LeastSquares(mesh, LeastSquaresMoments(mesh), second, NoExchange()).g, fit.g));
}

// ---------------------------------------------------------------------------------------------- the gradient

TEST(LeastSquares, LinearFieldHasItsExactGradientOnAnyMesh) {
  for (std::uint64_t seed = 1; seed <= 5; ++seed) {
    TestMesh mesh = ShiftedBoxWithoutSymmetry(seed);
    for (int f = 0; f < 6; ++f)
      mesh.partition.push_back({1 + 4 * f, mesh.AddOuterCell({-1.0, 0.3 * f, 0.1 * f * f}), {}, {}, 0.5, 0});
    Fit fit(mesh);
    EXPECT_EQ("", fit.Run(LinearField(mesh)));
    for (int c = 1; c <= mesh.nInnerCells; ++c) {
      // Unit cells and slopes of size 1 with well-conditioned systems.
      EXPECT_NEAR(2.0, fit.g.x[c], 1e-12);
      EXPECT_NEAR(-3.0, fit.g.y[c], 1e-12);
      EXPECT_NEAR(0.5, fit.g.z[c], 1e-12);
    }
  }
}

TEST(LeastSquares, SymmetryFaceBiasesTheGradientOfItsCellOnly) {
  // One unit neighbour in each direction; cell 1 has one more in z, a symmetry ghost that enters the matrix
  // alone.
  TestMesh mesh = CellsWithWallNeighbours({kAllAxes, kAllAxes});
  mesh.symmetry.push_back({1, mesh.AddOuterCell({0.0, 0.0, -1.0}), {}, {}, 0.5, 0});
  Fit fit(mesh);
  fit.Run(LinearField(mesh));
  EXPECT_EQ(2.0, fit.g.x[1]);
  EXPECT_EQ(-3.0, fit.g.y[1]);
  EXPECT_EQ(0.25, fit.g.z[1]) << "0.5 shared by two moments";
  EXPECT_EQ(0.5, fit.g.z[2]);
}

TEST(LeastSquares, ConstantFieldHasAGradientOfZeroInAllCells) {
  for (TestMesh const& mesh : {ShiftedBoxWithoutSymmetry(3), ClosedBox({0, 1, 2}, {0, 1, 3}, {0, 1, 2})}) {
    Fit fit(mesh);
    fit.Run(Field(mesh.centres.size(), 7.7));
    for (int c = 1; c <= mesh.NCell(); ++c) {
      EXPECT_EQ(0.0, fit.g.x[c]);
      EXPECT_EQ(0.0, fit.g.y[c]);
      EXPECT_EQ(0.0, fit.g.z[c]);
    }
  }
}

TEST(LeastSquares, ReadsOnlyCentresAndField) {
  TestMesh const mesh = ShiftedBoxWithoutSymmetry(4);
  GradientHost host(mesh);
  CZYN3DFiniteVolumeMesh& r = host.mesh;
  r.Lamda = r.Volume = r.ijSx = r.ijSy = r.ijSz = r.ijxc = r.ijyc = r.ijzc = nullptr;
  r.ijWallSx = r.ijWallSy = r.ijWallSz = r.ijInletSx = r.ijInletSy = r.ijInletSz = nullptr;
  r.ijOutletSx = r.ijOutletSy = r.ijOutletSz = r.ijSymmetrySx = r.ijSymmetrySy = r.ijSymmetrySz = nullptr;
  r.FaceType = nullptr;
  host.globals.PrevGradX = host.globals.PrevGradY = host.globals.PrevGradZ = nullptr;
  ConnectedOperator op(host, 1);
  op.gradient.Initialize();
  Field const phi = LinearField(mesh);
  GuardedGradient g(mesh.NCell());
  op.gradient.GradMethod(Guarded(phi).Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
  EXPECT_TRUE(SameBits(LeastSquares(mesh, LeastSquaresMoments(mesh), phi, NoExchange()).g, g));
}

TEST(LeastSquares, FaceTypesPlayNoPart) {
  TestMesh mesh;
  Random random(44);
  while (mesh.inner.empty() || mesh.partition.empty()) mesh = RandomMesh(random);
  Field const phi = TameField(random, mesh);
  TestMesh oneSided = mesh;
  for (Face& face : oneSided.inner) face.type = 1;
  for (Face& face : oneSided.partition) face.type = 1;
  Fit a(mesh), b(oneSided);
  a.Run(phi);
  b.Run(phi);
  EXPECT_TRUE(SameBits(a.g, b.g));
}

TEST(LeastSquares, GhostCellsAreExactlyZeroAndHaloCellsHoldTheOwnersValues) {
  Random random(45);
  TestMesh mesh = ShiftedBoxWithoutSymmetry(5);
  for (int f = 0; f < 6; ++f)
    mesh.partition.push_back({1 + 4 * f, mesh.AddOuterCell({-1.0, 0.3 * f, 0.1 * f * f}), {}, {}, 0.5, 0});
  Fit fit(mesh, ExchangeWithItself(mesh));
  EXPECT_EQ("", fit.Run(TameField(random, mesh)));
  EXPECT_TRUE(GhostsAreZero(mesh, fit.g));
  GuardedGradient exchanged = fit.g;
  ExchangeWithItself(mesh)(exchanged.x.Data());
  EXPECT_TRUE(SameBits(exchanged, fit.g));
  for (Face const& face : mesh.partition) EXPECT_NE(0.0, fit.g.x[face.other]);
}

TEST(LeastSquares, HaloCellsAreZeroBeforeTheExchange) {
  TestMesh mesh = ShiftedBoxWithoutSymmetry(6);
  int const halo = mesh.AddOuterCell({-1.0, 0.5, 0.5});
  mesh.partition.push_back({1, halo, {}, {}, 0.5, 0});
  Fit fit(mesh);
  fit.Run(LinearField(mesh));
  EXPECT_TRUE(SameBits(0.0, fit.g.x[halo]) && SameBits(0.0, fit.g.y[halo]) && SameBits(0.0, fit.g.z[halo]));
}

TEST(LeastSquares, ExchangesTheThreeOutputsOnce) {
  TestMesh const mesh = ShiftedBoxWithoutSymmetry(7);
  for (bool const nonBlocking : {false, true}) {
    Fit fit(mesh);
    fit.host.UseNonBlockingExchange(nonBlocking);
    fit.Run(LinearField(mesh));
    EXPECT_EQ(ThreeArrayExchange(nonBlocking, fit.g.x.Data(), fit.g.y.Data(), fit.g.z.Data()),
              fit.host.communication.Calls());
    EXPECT_TRUE(fit.host.communication.RulesKept());
  }
}

TEST(LeastSquares, LastArgumentHasNoEffect) {
  TestMesh const mesh = ShiftedBoxWithoutSymmetry(8);
  Random random(46);
  Field const phi = TameField(random, mesh);
  Fit reference(mesh);
  reference.Run(phi, 1);
  for (int const n : {-3, 0, 2, 50}) {
    Fit fit(mesh);
    fit.Run(phi, n);
    EXPECT_TRUE(SameBits(reference.g, fit.g)) << n;
  }
}

// ------------------------------------------------------------------------------------------- singular systems

TEST(LeastSquares, ZeroFirstPivotPrintsTheMessageAndStopsWithoutAnExchange) {
  for (bool const nonBlocking : {false, true}) {
    Fit fit(CellsWithWallNeighbours({kNoX}));
    fit.host.UseNonBlockingExchange(nonBlocking);
    EXPECT_EQ(kSingularLines, fit.Run({0.0, 1.0, 2.0, 3.0}));
    EXPECT_TRUE(fit.host.communication.Calls().empty());
  }
}

TEST(LeastSquares, EachLineOfTheMessageIsFlushed) {
  Fit fit(CellsWithWallNeighbours({kNoX}));
  GuardedArray<double> phi = Guarded({0.0, 1.0, 2.0, 3.0});
  FlushRecord const record;
  fit.op.gradient.GradMethod(phi.Data(), fit.g.x.Data(), fit.g.y.Data(), fit.g.z.Data(), 1);
  EXPECT_EQ((std::vector<std::string>{"aa[ii][j]=0.\n", "4\n"}), record.Pieces());
}

TEST(LeastSquares, ZeroSecondPivotPrintsTheMessageAndStopsWithoutAnExchange) {
  Fit fit(CellsWithWallNeighbours({kNoY}));
  EXPECT_EQ(kSingularLines, fit.Run({0.0, 1.0, 2.0, 3.0}));
  EXPECT_TRUE(fit.host.communication.Calls().empty());
}

TEST(LeastSquares, CollinearNeighboursLeadToAZeroSecondPivot) {
  // Offsets (1,1,0) and (2,2,0): Sxx = Sxy = Syy = 5, so that Syy - Sxy/Sxx*Sxy is exactly 0.
  Fit fit(CellsWithWallNeighbours({{{1.0, 1.0, 0.0}, {2.0, 2.0, 0.0}}}));
  EXPECT_EQ(kSingularLines, fit.Run({0.0, 1.0, 2.0, 3.0}));
}

TEST(LeastSquares, CellWithoutNeighboursHasAZeroFirstPivot) {
  Fit fit(CellsWithWallNeighbours({{}}));
  EXPECT_EQ(kSingularLines, fit.Run({0.0, 1.0}));
  EXPECT_TRUE(fit.host.communication.Calls().empty());
}

TEST(LeastSquares, PivotThatUnderflowedToZeroIsZero) {
  Fit fit(CellsWithWallNeighbours({{{1e-200, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}}));
  EXPECT_EQ(kSingularLines, fit.Run({0.0, 1.0, 1.0, 1.0, 1.0}));
}

TEST(LeastSquares, DenormalPivotIsNotZero) {
  TestMesh const mesh = CellsWithWallNeighbours({{{1e-160, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}});
  Fit fit(mesh);
  ASSERT_LT(0.0, fit.State().m_pSxx[1]);
  ASSERT_GT(std::numeric_limits<double>::min(), fit.State().m_pSxx[1]);
  EXPECT_EQ("", fit.Run({0.0, 1.0, 1.0, 1.0, 1.0}));
  EXPECT_EQ(3u, fit.host.communication.Calls().size());
}

TEST(LeastSquares, CellsSolvedBeforeASingularOneKeepTheirValuesAndTheRestStayZero) {
  TestMesh mesh = CellsWithWallNeighbours({kAllAxes, kAllAxes, kNoX, kAllAxes});
  int const halo = mesh.AddOuterCell({1.0, 1.0, 1.0});
  mesh.partition.push_back({1, halo, {}, {}, 0.5, 0});
  Field const phi = LinearField(mesh);
  Fit fit(mesh, ExchangeWithItself(mesh));
  EXPECT_EQ(kSingularLines, fit.Run(phi));
  for (int const c : {1, 2}) {
    EXPECT_NEAR(2.0, fit.g.x[c], 1e-14);
    EXPECT_NEAR(-3.0, fit.g.y[c], 1e-14);
    EXPECT_NEAR(0.5, fit.g.z[c], 1e-14);
  }
  for (int c = 3; c <= mesh.NCell(); ++c)
    EXPECT_TRUE(SameBits(0.0, fit.g.x[c]) && SameBits(0.0, fit.g.y[c]) && SameBits(0.0, fit.g.z[c])) << c;
  EXPECT_TRUE(fit.host.communication.Calls().empty());
}

TEST(LeastSquares, TheCellRightBeforeASingularOneKeepsItsValues) {
  TestMesh const mesh = CellsWithWallNeighbours({kAllAxes, kNoX});
  Fit fit(mesh);
  EXPECT_EQ(kSingularLines, fit.Run(LinearField(mesh)));
  EXPECT_NEAR(2.0, fit.g.x[1], 1e-14);
  EXPECT_NEAR(-3.0, fit.g.y[1], 1e-14);
  EXPECT_NEAR(0.5, fit.g.z[1], 1e-14);
  EXPECT_TRUE(SameBits(0.0, fit.g.x[2]) && SameBits(0.0, fit.g.y[2]) && SameBits(0.0, fit.g.z[2]));
}

TEST(LeastSquares, SingularCellStopsEveryCallAnewAndChangesNoFailureText) {
  TestMesh const mesh = CellsWithWallNeighbours({kAllAxes, kNoX, kNoX});
  Fit fit(mesh);
  std::string const text = fit.op.gradient.getErrorMsg();
  Field const phi(static_cast<std::size_t>(mesh.NCell()) + 1, 1.0);
  EXPECT_EQ(kSingularLines, fit.Run(phi)) << "once, although two cells are singular";
  EXPECT_EQ(kSingularLines, fit.Run(phi));
  EXPECT_EQ(text, fit.op.gradient.getErrorMsg());
}

TEST(LeastSquares, SingularOuterCellsAreNotSolved) {
  // The halo cell has a single neighbour and the ghost cells have none.
  TestMesh mesh = CellsWithWallNeighbours({kAllAxes});
  mesh.partition.push_back({1, mesh.AddOuterCell({1.0, 1.0, 1.0}), {}, {}, 0.5, 0});
  Fit fit(mesh);
  EXPECT_EQ("", fit.Run(LinearField(mesh)));
  EXPECT_EQ(3u, fit.host.communication.Calls().size());
}

TEST(LeastSquares, ZeroLastPivotPrintsNothingLeavesNonFiniteValuesAndExchanges) {
  Fit fit(CellsWithWallNeighbours({kAllAxes, kNoZ, kAllAxes}));
  Field phi(9 + 3);
  for (std::size_t c = 1; c < phi.size(); ++c) phi[c] = static_cast<double>(c);
  EXPECT_EQ("", fit.Run(phi));
  EXPECT_FALSE(std::isfinite(fit.g.x[2]));
  EXPECT_FALSE(std::isfinite(fit.g.y[2]));
  EXPECT_FALSE(std::isfinite(fit.g.z[2]));
  for (int const c : {1, 3}) EXPECT_TRUE(std::isfinite(fit.g.x[c]) && std::isfinite(fit.g.z[c])) << c;
  EXPECT_EQ(ThreeArrayExchange(false, fit.g.x.Data(), fit.g.y.Data(), fit.g.z.Data()),
            fit.host.communication.Calls());
}

// Two cells are solved side by side unless one of them has a zero pivot: any cell among any others, scales far apart,
// against one system after the other.
TEST(LeastSquares, EveryCellEqualsThePlainEliminationWhateverStandsBesideIt) {
  Random random(2024);
  int nStopped = 0, nLastPivotZero = 0;
  for (int run = 0; run < 400; ++run) {
    std::vector<std::vector<Vector3>> cells(static_cast<std::size_t>(UniformInt(random, 1, 40)));
    for (std::vector<Vector3>& offsets : cells) {
      int const kind = UniformInt(random, 0, 400);
      if (kind == 0) continue;  // no neighbours: the first pivot is 0
      if (kind < 3) offsets = kNoX;
      if (kind >= 3 && kind < 5) offsets = kNoY;
      if (kind >= 5 && kind < 40) offsets = kNoZ;
      if (kind < 40) continue;
      double const size = std::pow(10.0, UniformInt(random, -6, 6));
      for (int k = UniformInt(random, 3, 8); k > 0; --k)
        offsets.push_back(
            {Uniform(random, -size, size), Uniform(random, -size, size), Uniform(random, -size, size)});
    }
    TestMesh const mesh = CellsWithWallNeighbours(cells);
    Field const phi = TameField(random, mesh);
    Fit fit(mesh);
    std::string const printed = fit.Run(phi);
    LeastSquaresResult const plain = LeastSquares(mesh, LeastSquaresMoments(mesh), phi, NoExchange());
    EXPECT_EQ(printed, plain.zeroPivot ? kSingularLines : "") << run;
    EXPECT_TRUE(SameBits(plain.g, fit.g)) << run;
    nStopped += plain.zeroPivot ? 1 : 0;
    for (int c = 1; c <= mesh.nInnerCells; ++c) nLastPivotZero += std::isfinite(fit.g.z[c]) ? 0 : 1;
  }
  EXPECT_LT(20, nStopped);
  EXPECT_GT(300, nStopped);
  EXPECT_LT(100, nLastPivotZero);
}

TEST(LeastSquares, TheMessageIsTheSameWhateverTheProgramSetInItsStream) {
  std::ios::fmtflags const flags = std::cout.flags();
  Fit fit(CellsWithWallNeighbours({kNoX}));
  std::cout << std::hex << std::showbase << std::showpos << std::setw(20);
  EXPECT_EQ(kSingularLines, fit.Run({0.0, 1.0, 2.0, 3.0}));
  EXPECT_EQ(20, std::cout.width(0));
  std::cout.flags(std::ios::dec | std::ios::showpos);
  EXPECT_EQ(kSingularLines, fit.Run({0.0, 1.0, 2.0, 3.0}));
  std::cout.flags(flags);
}

TEST(LeastSquares, NaNPivotPassesTheTest) {
  TestMesh const mesh =
      CellsWithWallNeighbours({{{kNaN, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}, kAllAxes});
  Fit fit(mesh);
  Field phi(mesh.centres.size(), 1.0);
  EXPECT_EQ("", fit.Run(phi));
  EXPECT_TRUE(std::isnan(fit.g.x[1]));
  EXPECT_EQ(0.0, fit.g.x[2]);
  EXPECT_EQ(3u, fit.host.communication.Calls().size());
}

TEST(LeastSquares, NaNInTheFieldPrintsNothing) {
  TestMesh const mesh = CellsWithWallNeighbours({kAllAxes});
  Fit fit(mesh);
  EXPECT_EQ("", fit.Run(Field(mesh.centres.size(), kNaN)));
  EXPECT_TRUE(std::isnan(fit.g.x[1]) && std::isnan(fit.g.y[1]) && std::isnan(fit.g.z[1]));
}

// ----------------------------------------------------------------------------------------------- empty pieces

TEST(LeastSquares, PartitionWithoutInteriorCellsClearsAndExchanges) {
  TestMesh mesh;
  for (int c = 0; c < 3; ++c) mesh.AddOuterCell({1.0 * c, 0.0, 0.0});
  Fit fit(mesh);
  EXPECT_EQ("", fit.Run({0.0, 1.0, 2.0, 3.0}));
  EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 0.0), fit.g));
  EXPECT_EQ(ThreeArrayExchange(false, fit.g.x.Data(), fit.g.y.Data(), fit.g.z.Data()),
            fit.host.communication.Calls());
}

TEST(LeastSquares, PartitionWithoutAnyCellsExchanges) {
  Fit fit{TestMesh()};
  EXPECT_EQ(1, fit.result);
  EXPECT_EQ("", fit.Run({0.0}));
  EXPECT_EQ(3u, fit.host.communication.Calls().size());
}

TEST(LeastSquares, EmptyGroupsMayLendNullOrUnreadableArrays) {
  TestMesh const mesh = CellsWithWallNeighbours({kAllAxes});
  for (bool const lendEmptyArrays : {false, true}) {
    Fit fit(mesh, NoExchange(), lendEmptyArrays);
    fit.Run(LinearField(mesh));
    EXPECT_EQ(2.0, fit.g.x[1]);
  }
}

TEST(LeastSquares, HighestNumberedCellHasItsPlaceInAllNineArrays) {
  // The last cell is an interior one here; a sanitizer sees an array that ends before it.
  TestMesh mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0}, 1.0);
  for (Vector3 const& offset : kAllAxes) mesh.AddInteriorCell(offset, 1.0);
  mesh.inner = {{1, 2, {}, {}, 0.5, 0}, {1, 3, {}, {}, 0.5, 0}, {1, 4, {}, {}, 0.5, 0}};
  Fit fit(mesh);
  EXPECT_EQ(1.0, fit.State().m_pSzz[4]);
  EXPECT_EQ(kSingularLines, fit.Run({0.0, 1.0, 2.0, 3.0, 5.0}));
  EXPECT_EQ(4.0, fit.State().m_pBz[4]);
}

}  // namespace
}  // namespace zyn_test::least_squares_test
