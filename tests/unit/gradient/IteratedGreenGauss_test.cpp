#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/gradient/SummationOrder.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/mesh/SmallMeshes.h"

// The iterated Green-Gauss gradient: sweeps, skewness correction, limiter, face types, orders, exchanges.

namespace zyn_test::iterated_green_gauss_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// A type other than 0 to 3 takes the iterated path for every number of sweeps, 1 included.
constexpr int kAlwaysIterated = 7;

/// Runs the operator on a host; `g` is used and overwritten.
void Compute(GradientHost& host, Field const& phi, int nSweep, GuardedGradient& g) {
  ConnectedOperator op(host, kAlwaysIterated);
  GuardedArray<double> guardedPhi = Guarded(phi);
  op.gradient.GradMethod(guardedPhi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), nSweep);
}

GuardedGradient Compute(TestMesh const& mesh, Field const& phi, int nSweep,
                        Exchange const& exchange = NoExchange()) {
  GradientHost host(mesh, exchange);
  GuardedGradient g(mesh.NCell());
  Compute(host, phi, nSweep, g);
  return g;
}

TestMesh SomeMesh(std::uint64_t seed) {
  Random random(seed);
  TestMesh mesh;
  while (mesh.nInnerCells < 10 || mesh.inner.empty() || mesh.partition.empty() || mesh.wall.empty())
    mesh = RandomMesh(random);
  return mesh;
}

Field SomeField(TestMesh const& mesh, std::uint64_t seed) {
  Random random(seed);
  return TameField(random, mesh);
}

// ------------------------------------------------------------------------------------------------- the sweeps

TEST(IteratedGreenGauss, EqualsItsPlainFormForEveryNumberOfSweeps) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    TestMesh const mesh = SomeMesh(seed);
    Field const phi = SomeField(mesh, seed + 100);
    for (int const nSweep : {-1, 0, 1, 2, 3, 5}) {
      GradientHost host(mesh, ExchangeWithItself(mesh));
      GuardedGradient g(mesh.NCell(), 3.25);
      Compute(host, phi, nSweep, g);
      Gradient expected(mesh, 3.25);
      Gradient const previous = IteratedGreenGauss(mesh, phi, nSweep, ExchangeWithItself(mesh), expected);
      EXPECT_TRUE(SameBits(expected, g)) << "seed " << seed << ", sweeps " << nSweep;
      EXPECT_TRUE(SameBits(previous, host.previous)) << "seed " << seed << ", sweeps " << nSweep;
    }
  }
}

TEST(IteratedGreenGauss, WithoutASweepClearsThePreviousIterateKeepsTheOutputsAndExchangesThem) {
  TestMesh const mesh = SomeMesh(1);
  for (int const nSweep : {0, -1, -100}) {
    GradientHost host(mesh);
    GuardedGradient g(mesh.NCell(), 2.5);
    Compute(host, SomeField(mesh, 2), nSweep, g);
    EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 0.0), host.previous)) << nSweep;
    EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 2.5), g)) << nSweep;
    EXPECT_EQ(ThreeArrayExchange(false, g.x.Data(), g.y.Data(), g.z.Data()), host.communication.Calls())
        << nSweep;
  }
}

TEST(IteratedGreenGauss, OneSweepEqualsPlainGreenGaussAndLeavesZerosInThePreviousIterate) {
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    TestMesh const mesh = SomeMesh(seed);
    Field const phi = SomeField(mesh, seed + 100);
    GradientHost host(mesh);
    GuardedGradient g(mesh.NCell());
    Compute(host, phi, 1, g);
    EXPECT_TRUE(SameBits(PlainGreenGauss(mesh, phi, NoExchange()), g)) << seed;
    EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 0.0), host.previous)) << seed;
  }
}

TEST(IteratedGreenGauss, OneSweepByTheIteratedPathEqualsThePlainPathOfTheOperator) {
  TestMesh const mesh = SomeMesh(3);
  Field const phi = SomeField(mesh, 4);
  GradientHost host(mesh);
  ConnectedOperator plain(host, 0);
  GuardedGradient g(mesh.NCell());
  plain.gradient.GradMethod(Guarded(phi).Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
  EXPECT_TRUE(SameBits(g, Compute(mesh, phi, 1)));
}

TEST(IteratedGreenGauss, PreviousIterateHoldsTheResultOfOneSweepLessInAllCells) {
  TestMesh const mesh = SomeMesh(5);
  Field const phi = SomeField(mesh, 6);
  for (int const nSweep : {2, 3, 5}) {
    GradientHost host(mesh, ExchangeWithItself(mesh));
    GuardedGradient g(mesh.NCell());
    Compute(host, phi, nSweep, g);
    EXPECT_TRUE(SameBits(Compute(mesh, phi, nSweep - 1, ExchangeWithItself(mesh)), host.previous)) << nSweep;
  }
}

TEST(IteratedGreenGauss, ContentOfThePreviousIterateBeforeTheCallHasNoInfluence) {
  TestMesh const mesh = SomeMesh(7);
  Field const phi = SomeField(mesh, 8);
  GradientHost host(mesh);
  for (GuardedArray<double>* array : {&host.previous.x, &host.previous.y, &host.previous.z})
    for (int c = 1; c <= mesh.NCell(); ++c) (*array)[c] = kNaN;
  GuardedGradient g(mesh.NCell());
  Compute(host, phi, 3, g);
  EXPECT_TRUE(SameBits(Compute(mesh, phi, 3), g));
}

TEST(IteratedGreenGauss, ContentOfTheOutputsBeforeASweepHasNoInfluence) {
  TestMesh const mesh = SomeMesh(9);
  Field const phi = SomeField(mesh, 10);
  GradientHost host(mesh);
  GuardedGradient g(mesh.NCell(), kNaN);
  Compute(host, phi, 2, g);
  EXPECT_TRUE(SameBits(Compute(mesh, phi, 2), g));
}

TEST(IteratedGreenGauss, AllSweepsAgreeWhereFaceCentresLieOnTheLinesOfCentres) {
  // Dyadic coordinates and weights, so that the face centre minus the interpolated point is exactly zero.
  TestMesh const mesh = ClosedBox({0.0, 1.0, 2.0, 5.0}, {0.0, 0.5, 1.0}, {0.0, 1.0, 2.0});
  Field const phi = SomeField(mesh, 11);
  GuardedGradient const first = Compute(mesh, phi, 1);
  for (int const nSweep : {2, 3, 5}) EXPECT_TRUE(SameBits(first, Compute(mesh, phi, nSweep))) << nSweep;
}

TEST(IteratedGreenGauss, LinearFieldOnAUniformBoxHasItsExactGradientFromTheFirstSweep) {
  TestMesh const mesh = ClosedBox({0, 1, 2, 3}, {0, 1, 2, 3}, {0, 1, 2, 3});
  Field phi(mesh.centres.size());
  for (std::size_t c = 1; c < phi.size(); ++c)
    phi[c] = 4.0 + 2.0 * mesh.centres[c].x - 3.0 * mesh.centres[c].y + 0.5 * mesh.centres[c].z;
  for (int const nSweep : {1, 2, 4}) {
    GuardedGradient const g = Compute(mesh, phi, nSweep);
    for (int c = 1; c <= mesh.nInnerCells; ++c) {
      // Small integers and halves: every operation is exact.
      EXPECT_EQ(2.0, g.x[c]);
      EXPECT_EQ(-3.0, g.y[c]);
      EXPECT_EQ(0.5, g.z[c]);
    }
  }
}

TEST(IteratedGreenGauss, GhostCellsAreExactlyZeroInTheResultAndInThePreviousIterate) {
  for (int const nSweep : {1, 2, 3}) {
    TestMesh const mesh = SomeMesh(12);
    GradientHost host(mesh, ExchangeWithItself(mesh));
    GuardedGradient g(mesh.NCell());
    Compute(host, SomeField(mesh, 13), nSweep, g);
    EXPECT_TRUE(GhostsAreZero(mesh, g)) << nSweep;
    EXPECT_TRUE(GhostsAreZero(mesh, host.previous)) << nSweep;
  }
}

TEST(IteratedGreenGauss, HaloCellsHoldTheOwnersGradientAfterTheExchange) {
  TestMesh const mesh = SomeMesh(14);
  Field const phi = SomeField(mesh, 15);
  GuardedGradient const g = Compute(mesh, phi, 3, ExchangeWithItself(mesh));
  GuardedGradient expected = g;
  ExchangeWithItself(mesh)(expected.x.Data());
  ExchangeWithItself(mesh)(expected.y.Data());
  ExchangeWithItself(mesh)(expected.z.Data());
  EXPECT_TRUE(SameBits(expected, g));
}

// ---------------------------------------------------------------------------------- correction and limiter
//
//         wall (area (0, G, 0), ghost value 1)
//       -------
//          1  |  2        inner face: area (1, 0, 0), weight 0.5, centre (0.5, 1, 0)
//
// After the first sweep cell 1 has the y-derivative G and cell 2 none, and the x-derivatives cancel. In the
// second sweep the face value before limiting is therefore L + (1 - 0) * G/2, and it appears in gx of cell 1.

double SecondSweepFaceValue(double phiCv, double phiOther, double firstSweepSlope) {
  TestMesh mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0}, 1.0);
  mesh.AddInteriorCell({1.0, 0.0, 0.0}, 1.0);
  int const ghost = mesh.AddOuterCell({0.0, 1.0, 0.0});
  mesh.inner.push_back({1, 2, {1.0, 0.0, 0.0}, {0.5, 1.0, 0.0}, 0.5, 0});
  mesh.wall.push_back({1, ghost, {0.0, firstSweepSlope, 0.0}, {0.0, 1.0, 0.0}, 0.5, 0});
  return Compute(mesh, {0.0, phiCv, phiOther, 1.0}, 2).x[1];
}

TEST(IteratedGreenGauss, SecondSweepCorrectsTheFaceValueByTheGradientOfTheFirst) {
  EXPECT_EQ(5.0, SecondSweepFaceValue(0.0, 8.0, 2.0));
  EXPECT_EQ(3.0, SecondSweepFaceValue(0.0, 8.0, -2.0));
  EXPECT_EQ(5.0, SecondSweepFaceValue(8.0, 0.0, 2.0));
  EXPECT_EQ(4.0, SecondSweepFaceValue(0.0, 8.0, 0.0));
}

TEST(IteratedGreenGauss, OvershootingFaceValueIsCutToTheNearerCellValue) {
  EXPECT_EQ(8.0, SecondSweepFaceValue(0.0, 8.0, 100.0));
  EXPECT_EQ(0.0, SecondSweepFaceValue(0.0, 8.0, -100.0));
  EXPECT_EQ(8.0, SecondSweepFaceValue(8.0, 0.0, 100.0));
  EXPECT_EQ(0.0, SecondSweepFaceValue(8.0, 0.0, -100.0));
}

TEST(IteratedGreenGauss, FaceValueThatReachesACellValueExactlyIsThatValue) {
  EXPECT_EQ(8.0, SecondSweepFaceValue(0.0, 8.0, 8.0));
  EXPECT_EQ(0.0, SecondSweepFaceValue(0.0, 8.0, -8.0));
  EXPECT_EQ(8.0, SecondSweepFaceValue(8.0, 0.0, 8.0));
  EXPECT_EQ(0.0, SecondSweepFaceValue(8.0, 0.0, -8.0));
}

TEST(IteratedGreenGauss, BetweenEqualCellValuesTheFaceValueIsThatValueWhateverTheCorrection) {
  for (double const slope : {0.0, 2.0, -2.0, 1e300, -1e300, kInfinity, -kInfinity})
    EXPECT_EQ(3.0, SecondSweepFaceValue(3.0, 3.0, slope)) << slope;
}

TEST(IteratedGreenGauss, InfiniteCorrectionIsCutToACellValue) {
  EXPECT_EQ(8.0, SecondSweepFaceValue(0.0, 8.0, kInfinity));
  EXPECT_EQ(0.0, SecondSweepFaceValue(0.0, 8.0, -kInfinity));
}

TEST(IteratedGreenGauss, CorrectionThatDoesNotComparePassesTheLimiter) {
  EXPECT_TRUE(std::isnan(SecondSweepFaceValue(0.0, 8.0, kNaN)));
  EXPECT_TRUE(std::isnan(SecondSweepFaceValue(8.0, 0.0, kNaN)));
  EXPECT_TRUE(std::isnan(SecondSweepFaceValue(3.0, 3.0, kNaN)));
}

TEST(IteratedGreenGauss, CorrectedValueIsAddedUpFromTheLeft) {
  // Weight 1 takes everything from cell 2, whose gradient after the first sweep is the area of its one wall
  // face (ghost value 1, volume 1). The face centre is one unit away in each direction and the face is
  // one-sided, so the second sweep's face value is Px + phi[2] + Py + Pz, and cell 1 shows it.
  Random random(20);
  std::vector<std::vector<double>> terms;
  bool pairwiseGroupingDiffers = false;
  std::vector<double> found;
  for (int n = 0; n < kSumsForAnOrder; ++n) {
    std::vector<double> t(4);
    for (double& term : t) term = RoughTerm(random);
    double const sum = ((t[0] + t[1]) + t[2]) + t[3];
    TestMesh mesh;
    mesh.AddInteriorCell({}, 1.0);
    mesh.AddInteriorCell({}, 1.0);
    int const ghost = mesh.AddOuterCell({});
    mesh.inner.push_back({1, 2, {1.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, 1.0, 1});
    mesh.wall.push_back({2, ghost, {t[0], t[2], t[3]}, {}, 0.5, 0});
    double const farCellValue = sum > t[1] ? 1e30 : -1e30;  // so far that the limiter lets the sum pass
    found.push_back(Compute(mesh, {0.0, farCellValue, t[1], 1.0}, 2).x[1]);
    terms.push_back(t);
    pairwiseGroupingDiffers = pairwiseGroupingDiffers || (t[0] + t[1]) + (t[2] + t[3]) != sum;
  }
  SummationOrder const order(terms);
  ASSERT_TRUE(order.TellsAllOtherOrdersApart() && pairwiseGroupingDiffers);
  EXPECT_EQ(order.Sums(), found);
}

// --------------------------------------------------------------------------------------------- face types

TEST(IteratedGreenGauss, OneSidedInnerFaceAddsToItsCvCellOnly) {
  for (int const nSweep : {1, 2, 3}) {
    GuardedGradient const g = Compute(TwoCells(0.5, 1), {0.0, 3.0, 5.0}, nSweep);
    EXPECT_EQ(4.0, g.x[1]);
    EXPECT_EQ(8.0, g.y[1]);
    EXPECT_EQ(16.0, g.z[1]);
    EXPECT_TRUE(SameBits(0.0, g.x[2]) && SameBits(0.0, g.y[2]) && SameBits(0.0, g.z[2])) << nSweep;
  }
}

TEST(IteratedGreenGauss, EveryOtherInnerFaceTypeAddsToBothCells) {
  for (int const type : {0, 2, -1, 3, 101}) {
    GuardedGradient const g = Compute(TwoCells(0.5, type), {0.0, 3.0, 5.0}, 1);
    EXPECT_EQ(4.0, g.x[1]) << type;
    EXPECT_EQ(-4.0, g.x[2]) << type;
    EXPECT_EQ(-8.0, g.y[2]) << type;
    EXPECT_EQ(-16.0, g.z[2]) << type;
  }
}

/// One interior cell and one halo cell across a partition face.
TestMesh CellAndHalo(int faceType) {
  TestMesh mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0}, 0.5);
  int const halo = mesh.AddOuterCell({1.0, 0.0, 0.0});
  mesh.partition.push_back({1, halo, {1.0, 2.0, 4.0}, {0.5, 0.0, 0.0}, 0.25, faceType});
  return mesh;
}

TEST(IteratedGreenGauss, PartitionFaceLeavesAnUnscaledSumInTheHaloCellUntilTheExchange) {
  for (int const type : {0, 2, -1}) {
    GuardedGradient const g = Compute(CellAndHalo(type), {0.0, 4.0, 8.0}, 1);
    EXPECT_EQ(10.0, g.x[1]) << type;  // face value 5, divided by the volume 0.5
    EXPECT_EQ(20.0, g.y[1]) << type;
    EXPECT_EQ(40.0, g.z[1]) << type;
    EXPECT_EQ(-5.0, g.x[2]) << type;
    EXPECT_EQ(-10.0, g.y[2]) << type;
    EXPECT_EQ(-20.0, g.z[2]) << type;
  }
}

TEST(IteratedGreenGauss, OneSidedPartitionFaceLeavesTheHaloCellAtZero) {
  GuardedGradient const g = Compute(CellAndHalo(1), {0.0, 4.0, 8.0}, 1);
  EXPECT_EQ(10.0, g.x[1]);
  EXPECT_TRUE(SameBits(0.0, g.x[2]) && SameBits(0.0, g.y[2]) && SameBits(0.0, g.z[2]));
}

// ----------------------------------------------------------------------------------------- order of addition

TEST(IteratedGreenGauss, AddsInnerPartitionInletOutletSymmetryAndWallFacesInThatOrder) {
  // One cell with two inner faces and one face of every other group. The faces' values have several scales,
  // so that each other order of addition rounds differently in some of the sums.
  Random random(21);
  std::vector<std::vector<double>> terms;
  std::vector<double> found;
  for (int n = 0; n < kSumsForAnOrder; ++n) {
    TestMesh const mesh = OneCellWithFacesOfAllGroups();
    Field phi = {0.0, 0.0};
    for (int c = 2; c <= 8; ++c) phi.push_back(RoughTerm(random));
    terms.emplace_back(phi.begin() + 2, phi.end());
    found.push_back(Compute(mesh, phi, 1).x[1]);
  }
  SummationOrder const order(terms);
  ASSERT_TRUE(order.TellsAllOtherOrdersApart());
  EXPECT_EQ(order.Sums(), found);
}

TEST(IteratedGreenGauss, AddsTheFacesOfAGroupInTheirNumbering) {
  // Seven faces of one group at one cell, for each boundary group in turn (more than four, since faces may be
  // taken in fours).
  for (std::vector<Face> TestMesh::*group :
       {&TestMesh::inlet, &TestMesh::outlet, &TestMesh::symmetry, &TestMesh::wall}) {
    Random random(22);
    std::vector<std::vector<double>> terms;
    std::vector<double> found;
    for (int n = 0; n < kSumsForAnOrder; ++n) {
      TestMesh mesh;
      mesh.AddInteriorCell({}, 1.0);
      Field phi = {0.0, 0.0};
      for (int f = 0; f < 7; ++f) {
        (mesh.*group).push_back({1, mesh.AddOuterCell({}), {1.0, 0.0, 0.0}, {}, 0.5, 0});
        phi.push_back(RoughTerm(random));
      }
      terms.emplace_back(phi.begin() + 2, phi.end());
      found.push_back(Compute(mesh, phi, 1).x[1]);
    }
    SummationOrder const order(terms);
    ASSERT_TRUE(order.TellsAllOtherOrdersApart());
    EXPECT_EQ(order.Sums(), found);
  }
}

// ------------------------------------------------------------------------------------------------- exchanges

TEST(IteratedGreenGauss, ExchangesThePreviousIterateAfterEverySweepButTheLastAndThenTheOutputs) {
  TestMesh const mesh = SomeMesh(31);
  for (bool const nonBlocking : {false, true}) {
    for (int const nSweep : {-1, 0, 1, 2, 3, 5}) {
      GradientHost host(mesh, ExchangeWithItself(mesh));
      host.UseNonBlockingExchange(nonBlocking);
      GuardedGradient g(mesh.NCell());
      Compute(host, SomeField(mesh, 32), nSweep, g);
      std::vector<ExchangeCall> expected;
      for (int s = 1; s < nSweep; ++s)
        for (ExchangeCall const& call : ThreeArrayExchange(nonBlocking, host.previous.x.Data(),
                                                           host.previous.y.Data(), host.previous.z.Data()))
          expected.push_back(call);
      for (ExchangeCall const& call : ThreeArrayExchange(nonBlocking, g.x.Data(), g.y.Data(), g.z.Data()))
        expected.push_back(call);
      EXPECT_EQ(expected, host.communication.Calls()) << nSweep;
      EXPECT_TRUE(host.communication.RulesKept());
    }
  }
}

TEST(IteratedGreenGauss, EveryNonZeroSettingSelectsTheNonBlockingExchange) {
  TestMesh const mesh = SomeMesh(33);
  unsigned char const settings[] = {1, 2, 128, 255};
  for (unsigned char const setting : settings) {
    GradientHost host(mesh);
    host.globals.UseNonBlockingExch = setting;
    GuardedGradient g(mesh.NCell());
    Compute(host, SomeField(mesh, 34), 1, g);
    EXPECT_EQ(ThreeArrayExchange(true, g.x.Data(), g.y.Data(), g.z.Data()), host.communication.Calls());
  }
}

TEST(IteratedGreenGauss, BlockingAndNonBlockingExchangesGiveTheSameBits) {
  TestMesh const mesh = SomeMesh(35);
  Field const phi = SomeField(mesh, 36);
  GradientHost host(mesh, ExchangeWithItself(mesh));
  host.UseNonBlockingExchange(true);
  GuardedGradient g(mesh.NCell());
  Compute(host, phi, 3, g);
  EXPECT_TRUE(SameBits(Compute(mesh, phi, 3, ExchangeWithItself(mesh)), g));
}

TEST(IteratedGreenGauss, NeighboursGradientsInHaloCellsReachTheNextSweep) {
  TestMesh const mesh = SomeMesh(37);
  Field const phi = SomeField(mesh, 38);
  GuardedGradient const alone = Compute(mesh, phi, 2, NoExchange());
  GuardedGradient const exchanged = Compute(mesh, phi, 2, ExchangeWithItself(mesh));
  bool interiorDiffers = false;
  for (int c = 1; c <= mesh.nInnerCells; ++c)
    interiorDiffers = interiorDiffers || alone.x[c] != exchanged.x[c];
  EXPECT_TRUE(interiorDiffers);
}

TEST(IteratedGreenGauss, InputFieldIsNeverExchanged) {
  TestMesh const mesh = SomeMesh(39);
  GradientHost host(mesh);
  ConnectedOperator op(host, kAlwaysIterated);
  GuardedArray<double> phi = Guarded(SomeField(mesh, 40));
  GuardedGradient g(mesh.NCell());
  op.gradient.GradMethod(phi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 3);
  for (ExchangeCall const& call : host.communication.Calls()) EXPECT_NE(phi.Data(), call.field);
}

// ------------------------------------------------------------------------------- volumes and empty pieces

TEST(IteratedGreenGauss, ZeroVolumeMakesAHugeButFiniteGradient) {
  TestMesh mesh = TwoCells();
  mesh.volumes[1] = 0.0;
  GuardedGradient const g = Compute(mesh, {0.0, 3.0, 5.0}, 1);
  EXPECT_EQ(4.0 * (1.0 / 1e-30), g.x[1]);
  EXPECT_EQ(-4.0, g.x[2]);
}

TEST(IteratedGreenGauss, EmptyGroupsMayLendNullOrUnreadableArrays) {
  TestMesh const mesh = TwoCells();
  for (bool const lendEmptyArrays : {false, true}) {
    GradientHost host(mesh, NoExchange(), lendEmptyArrays);
    GuardedGradient g(mesh.NCell());
    Compute(host, {0.0, 3.0, 5.0}, 3, g);
    EXPECT_EQ(4.0, g.x[1]);
    EXPECT_EQ(-4.0, g.x[2]);
  }
}

TEST(IteratedGreenGauss, PartitionWithoutInteriorCellsStillClearsAndExchanges) {
  TestMesh mesh;
  for (int c = 0; c < 3; ++c) mesh.AddOuterCell({1.0 * c, 0.0, 0.0});
  GradientHost host(mesh);
  GuardedGradient g(mesh.NCell());
  Compute(host, {0.0, 1.0, 2.0, 3.0}, 2, g);
  EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 0.0), g));
  EXPECT_EQ(6u, host.communication.Calls().size());
}

}  // namespace
}  // namespace zyn_test::iterated_green_gauss_test
