#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/gradient/SummationOrder.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/mesh/SmallMeshes.h"

// The plain Green-Gauss gradient: gradient type 0 with a last argument of 1.

namespace zyn_test::plain_green_gauss_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

void Compute(GradientHost& host, Field const& phi, GuardedGradient& g) {
  ConnectedOperator op(host, 0);
  GuardedArray<double> guardedPhi = Guarded(phi);
  op.gradient.GradMethod(guardedPhi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
}

GuardedGradient Compute(TestMesh const& mesh, Field const& phi) {
  GradientHost host(mesh);
  GuardedGradient g(mesh.NCell());
  Compute(host, phi, g);
  return g;
}

TEST(PlainGreenGauss, EqualsItsPlainFormOnRandomMeshes) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    TestMesh const mesh = RandomMesh(random);
    Field const phi = TameField(random, mesh);
    GradientHost host(mesh, ExchangeWithItself(mesh));
    GuardedGradient g(mesh.NCell());
    Compute(host, phi, g);
    EXPECT_TRUE(SameBits(PlainGreenGauss(mesh, phi, ExchangeWithItself(mesh)), g)) << seed;
    EXPECT_TRUE(GhostsAreZero(mesh, g)) << seed;
  }
}

TEST(PlainGreenGauss, EqualsOneIteratedSweep) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    TestMesh const mesh = RandomMesh(random);
    Field const phi = TameField(random, mesh);
    GradientHost host(mesh);
    ConnectedOperator iterated(host, 7);
    GuardedGradient g(mesh.NCell());
    iterated.gradient.GradMethod(Guarded(phi).Data(), g.x.Data(), g.y.Data(), g.z.Data(), 1);
    EXPECT_TRUE(SameBits(g, Compute(mesh, phi))) << seed;
  }
}

TEST(PlainGreenGauss, HandComputedCellWithOneFaceOfEachKind) {
  // Cell 1 (volume 2) with an inner face to cell 2 and one face each to halo 3, inlet 4, outlet 5, symmetry
  // 6, wall 7.
  TestMesh mesh;
  mesh.AddInteriorCell({}, 2.0);
  mesh.AddInteriorCell({}, 1.0);
  for (int c = 3; c <= 7; ++c) mesh.AddOuterCell({});
  mesh.inner.push_back({1, 2, {1.0, 0.0, -1.0}, {}, 0.25, 0});
  mesh.partition.push_back({1, 3, {2.0, 0.0, 0.0}, {}, 0.5, 0});
  mesh.inlet.push_back({1, 4, {0.0, 1.0, 0.0}, {}, 0.5, 0});
  mesh.outlet.push_back({1, 5, {0.0, 0.0, 1.0}, {}, 0.5, 0});
  mesh.symmetry.push_back({1, 6, {1.0, 1.0, 0.0}, {}, 0.5, 0});
  mesh.wall.push_back({1, 7, {0.0, 1.0, 1.0}, {}, 0.5, 0});
  GuardedGradient const g = Compute(mesh, {0.0, 4.0, 8.0, 6.0, 10.0, 20.0, 30.0, 40.0});
  // Face values: inner 0.75*4 + 0.25*8 = 5, partition 5, the others their ghost values.
  EXPECT_EQ((5.0 + 2 * 5.0 + 30.0) / 2, g.x[1]);
  EXPECT_EQ((10.0 + 30.0 + 40.0) / 2, g.y[1]);
  EXPECT_EQ((-5.0 + 20.0 + 40.0) / 2, g.z[1]);
  EXPECT_EQ(-5.0, g.x[2]);
  EXPECT_EQ(0.0, g.y[2]);
  EXPECT_EQ(5.0, g.z[2]);
  EXPECT_EQ(-10.0, g.x[3]) << "a halo cell's sum is not scaled";
  EXPECT_TRUE(GhostsAreZero(mesh, g));
}

TEST(PlainGreenGauss, ReadsNeitherCentresNorThePreviousIterate) {
  Random random(3);
  TestMesh const mesh = RandomMesh(random);
  Field const phi = TameField(random, mesh);
  GradientHost host(mesh);
  CZYN3DFiniteVolumeMesh& record = host.mesh;
  record.xc = record.yc = record.zc = record.ijxc = record.ijyc = record.ijzc = nullptr;
  host.globals.PrevGradX = host.globals.PrevGradY = host.globals.PrevGradZ = nullptr;
  GuardedGradient g(mesh.NCell());
  Compute(host, phi, g);
  EXPECT_TRUE(SameBits(PlainGreenGauss(mesh, phi, NoExchange()), g));
}

TEST(PlainGreenGauss, ContentOfTheOutputsBeforeTheCallHasNoInfluence) {
  Random random(4);
  TestMesh const mesh = RandomMesh(random);
  Field const phi = TameField(random, mesh);
  GradientHost host(mesh);
  GuardedGradient g(mesh.NCell(), kNaN);
  Compute(host, phi, g);
  EXPECT_TRUE(SameBits(Compute(mesh, phi), g));
}

// --------------------------------------------------------------------------------------------------- limiter
//
// On the mesh of two cells gx of cell 1 is the face value itself: area 1 in x, volume 1.

double FaceValue(double phiCv, double phiOther, double weight) {
  return Compute(TwoCells(weight), {0.0, phiCv, phiOther}).x[1];
}

TEST(PlainGreenGauss, WeightInsideZeroToOneGivesTheLinearValue) {
  EXPECT_EQ(4.0, FaceValue(4.0, 8.0, 0.0));
  EXPECT_EQ(5.0, FaceValue(4.0, 8.0, 0.25));
  EXPECT_EQ(8.0, FaceValue(4.0, 8.0, 1.0));
  EXPECT_EQ(7.0, FaceValue(8.0, 4.0, 0.25));
}

TEST(PlainGreenGauss, WeightOutsideZeroToOneIsCutToTheCellValues) {
  EXPECT_EQ(8.0, FaceValue(4.0, 8.0, 1.5));
  EXPECT_EQ(4.0, FaceValue(4.0, 8.0, -0.5));
  EXPECT_EQ(4.0, FaceValue(8.0, 4.0, 1.5));
  EXPECT_EQ(8.0, FaceValue(8.0, 4.0, -0.5));
}

TEST(PlainGreenGauss, RoundingOfTheLinearValueBeyondEqualCellValuesIsCut) {
  // 0.1*x + 0.9*x need not be x in floating point; between equal cell values the limiter makes it so.
  int rounded = 0;
  Random random(5);
  for (int n = 0; n < 200; ++n) {
    double const w = Uniform(random, 0.0, 1.0), value = Uniform(random, -3.0, 3.0);
    if ((1 - w) * value + w * value != value) ++rounded;
    EXPECT_EQ(value, FaceValue(value, value, w));
  }
  EXPECT_LT(0, rounded) << "the values should show the rounding";
}

TEST(PlainGreenGauss, ZerosOfEitherSignLeaveAPositiveZero) {
  for (double const cv : {0.0, -0.0}) {
    for (double const other : {0.0, -0.0}) {
      GuardedGradient const g = Compute(TwoCells(), {0.0, cv, other});
      EXPECT_TRUE(SameBits(0.0, g.x[1]) && SameBits(0.0, g.x[2])) << cv << " " << other;
    }
  }
}

TEST(PlainGreenGauss, LimiterComparesInfinitiesAsNumbers) {
  EXPECT_EQ(kInfinity, FaceValue(0.0, kInfinity, 0.5));
  EXPECT_EQ(kInfinity, FaceValue(kInfinity, 0.0, 0.5));
  EXPECT_EQ(-kInfinity, FaceValue(0.0, -kInfinity, 0.5));
  EXPECT_EQ(-kInfinity, FaceValue(-kInfinity, 0.0, 0.5));
  EXPECT_EQ(kInfinity, FaceValue(kInfinity, kInfinity, 0.5));
  EXPECT_EQ(8.0, FaceValue(-4.0, 8.0, kInfinity)) << "v is +infinity";
  EXPECT_EQ(-4.0, FaceValue(-4.0, 8.0, -kInfinity)) << "v is -infinity";
}

TEST(PlainGreenGauss, ValueThatDoesNotComparePassesTheLimiter) {
  EXPECT_TRUE(std::isnan(FaceValue(4.0, 8.0, kNaN)));
  EXPECT_TRUE(std::isnan(FaceValue(8.0, 4.0, kNaN)));
  EXPECT_TRUE(std::isnan(FaceValue(4.0, 4.0, kNaN)));
  EXPECT_TRUE(std::isnan(FaceValue(kNaN, 8.0, 0.5)));
  EXPECT_TRUE(std::isnan(FaceValue(4.0, kNaN, 0.5)));
  EXPECT_TRUE(std::isnan(FaceValue(4.0, kInfinity, 0.0))) << "0 times infinity";
  EXPECT_TRUE(std::isnan(FaceValue(-kInfinity, kInfinity, 0.5)));
}

TEST(PlainGreenGauss, NaNStaysInTheCellsOfItsFaces) {
  TestMesh mesh = TwoCells();
  int const third = mesh.AddInteriorCell({2.0, 0.0, 0.0}, 1.0);
  int const fourth = mesh.AddInteriorCell({3.0, 0.0, 0.0}, 1.0);
  mesh.inner.push_back({third, fourth, {1.0, 0.0, 0.0}, {2.5, 0.0, 0.0}, 0.5, 0});
  GuardedGradient const g = Compute(mesh, {0.0, kNaN, 1.0, 2.0, 4.0});
  EXPECT_TRUE(std::isnan(g.x[1]) && std::isnan(g.x[2]));
  EXPECT_EQ(3.0, g.x[third]);
  EXPECT_EQ(-3.0, g.x[fourth]);
}

// ---------------------------------------------------------------------- face types, orders, volumes, exchange

TEST(PlainGreenGauss, OneSidedFaceAddsToItsCvCellOnly) {
  GuardedGradient const g = Compute(TwoCells(0.5, 1), {0.0, 3.0, 5.0});
  EXPECT_EQ(4.0, g.x[1]);
  EXPECT_TRUE(SameBits(0.0, g.x[2]) && SameBits(0.0, g.y[2]) && SameBits(0.0, g.z[2]));
}

TEST(PlainGreenGauss, EveryOtherFaceTypeAddsToBothCells) {
  for (int const type : {0, 2, -1, 101}) {
    GuardedGradient const g = Compute(TwoCells(0.5, type), {0.0, 3.0, 5.0});
    EXPECT_EQ(4.0, g.x[1]) << type;
    EXPECT_EQ(-4.0, g.x[2]) << type;
  }
}

TEST(PlainGreenGauss, PartitionFacesObeyTheirTypes) {
  for (int const type : {0, 1, 2, -1}) {
    TestMesh mesh;
    mesh.AddInteriorCell({}, 0.5);
    int const halo = mesh.AddOuterCell({});
    mesh.partition.push_back({1, halo, {1.0, 2.0, 4.0}, {}, 0.25, type});
    GuardedGradient const g = Compute(mesh, {0.0, 4.0, 8.0});
    EXPECT_EQ(10.0, g.x[1]) << type;
    EXPECT_EQ(type == 1 ? 0.0 : -5.0, g.x[halo]) << type;
  }
}

TEST(PlainGreenGauss, AddsInnerPartitionInletOutletSymmetryAndWallFacesInThatOrder) {
  Random random(6);
  std::vector<std::vector<double>> terms;
  std::vector<double> found;
  for (int n = 0; n < kSumsForAnOrder; ++n) {
    TestMesh const mesh = OneCellWithFacesOfAllGroups();
    Field phi = {0.0, 0.0};
    for (int c = 2; c <= 8; ++c) phi.push_back(RoughTerm(random));
    terms.emplace_back(phi.begin() + 2, phi.end());
    found.push_back(Compute(mesh, phi).x[1]);
  }
  SummationOrder const order(terms);
  ASSERT_TRUE(order.TellsAllOtherOrdersApart());
  EXPECT_EQ(order.Sums(), found);
}

TEST(PlainGreenGauss, ZeroVolumeMakesAHugeButFiniteGradient) {
  TestMesh mesh = TwoCells();
  mesh.volumes[1] = 0.0;
  EXPECT_EQ(4.0 * (1.0 / 1e-30), Compute(mesh, {0.0, 3.0, 5.0}).x[1]);
}

TEST(PlainGreenGauss, ScalesByTheReciprocalOfTheVolume) {
  // 5 * (1/3) and 5/3 differ in the last bit: the reciprocal is rounded first.
  TestMesh mesh = TwoCells();
  mesh.volumes[1] = 3.0;
  ASSERT_NE(5.0 / 3.0, 5.0 * (1.0 / 3.0));
  EXPECT_EQ(5.0 * (1.0 / 3.0), Compute(mesh, {0.0, 5.0, 5.0}).x[1]);
}

TEST(PlainGreenGauss, ExchangesTheThreeOutputsOnce) {
  Random random(7);
  TestMesh const mesh = RandomMesh(random);
  for (bool const nonBlocking : {false, true}) {
    GradientHost host(mesh, ExchangeWithItself(mesh));
    host.UseNonBlockingExchange(nonBlocking);
    GuardedGradient g(mesh.NCell());
    Compute(host, TameField(random, mesh), g);
    EXPECT_EQ(ThreeArrayExchange(nonBlocking, g.x.Data(), g.y.Data(), g.z.Data()),
              host.communication.Calls());
    EXPECT_TRUE(host.communication.RulesKept());
  }
}

TEST(PlainGreenGauss, EmptyGroupsMayLendNullOrUnreadableArrays) {
  for (bool const lendEmptyArrays : {false, true}) {
    GradientHost host(TwoCells(), NoExchange(), lendEmptyArrays);
    GuardedGradient g(2);
    Compute(host, {0.0, 3.0, 5.0}, g);
    EXPECT_EQ(4.0, g.x[1]);
    EXPECT_EQ(-4.0, g.x[2]);
  }
}

TEST(PlainGreenGauss, PartitionWithoutInteriorCellsStillClearsAndExchanges) {
  TestMesh mesh;
  for (int c = 0; c < 3; ++c) mesh.AddOuterCell({});
  GradientHost host(mesh);
  GuardedGradient g(mesh.NCell());
  Compute(host, {0.0, 1.0, 2.0, 3.0}, g);
  EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 0.0), g));
  EXPECT_EQ(3u, host.communication.Calls().size());
}

}  // namespace
}  // namespace zyn_test::plain_green_gauss_test
