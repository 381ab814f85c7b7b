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

// The Green-Gauss gradient whose face values are weighted harmonically by a cell coefficient k.

namespace zyn_test::weighted_green_gauss_test {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

void Compute(GradientHost& host, Field const& phi, Field const& k, GuardedGradient& g, int type = 0,
             int n = 1) {
  ConnectedOperator op(host, type);
  GuardedArray<double> guardedPhi = Guarded(phi), guardedK = Guarded(k);
  op.gradient.GradMethod_Weighted(guardedPhi.Data(), g.x.Data(), g.y.Data(), g.z.Data(), guardedK.Data(), n);
}

GuardedGradient Compute(TestMesh const& mesh, Field const& phi, Field const& k, int type = 0, int n = 1) {
  GradientHost host(mesh);
  GuardedGradient g(mesh.NCell());
  Compute(host, phi, k, g, type, n);
  return g;
}

/// On the mesh of two cells gx of cell 1 is the face value itself: area 1 in x, volume 1.
double FaceValue(double phiCv, double phiOther, double weight, double kCv, double kOther) {
  return Compute(TwoCells(weight), {0.0, phiCv, phiOther}, {0.0, kCv, kOther}).x[1];
}

TEST(WeightedGreenGauss, EqualsItsPlainFormOnRandomMeshes) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    TestMesh const mesh = RandomMesh(random);
    Field const phi = TameField(random, mesh), k = TameField(random, mesh);
    GradientHost host(mesh, ExchangeWithItself(mesh));
    GuardedGradient g(mesh.NCell());
    Compute(host, phi, k, g);
    EXPECT_TRUE(SameBits(WeightedGreenGauss(mesh, phi, k, ExchangeWithItself(mesh)), g)) << seed;
    EXPECT_TRUE(GhostsAreZero(mesh, g)) << seed;
  }
}

TEST(WeightedGreenGauss, HandComputedFaceValueLiesNearerTheCellWithTheLargerCoefficient) {
  // t = 0.5/4 = 1/8 and w/k[cv] = 0.5/1 = 4/8: v = (phi[cv] - phi[other]) * (1/8) / (5/8) + phi[other].
  EXPECT_NEAR(18.0, FaceValue(10.0, 20.0, 0.5, 1.0, 4.0), 1e-13);
  EXPECT_NEAR(12.0, FaceValue(10.0, 20.0, 0.5, 4.0, 1.0), 1e-13);
}

TEST(WeightedGreenGauss, ConstantCoefficientGivesTheLinearValueUpToRounding) {
  Random random(2);
  for (int n = 0; n < 100; ++n) {
    double const w = Uniform(random, 0.0, 1.0), k = Uniform(random, 0.1, 10.0);
    double const cv = Uniform(random, -1.0, 1.0), other = Uniform(random, -1.0, 1.0);
    // A few roundings of numbers of size 1.
    EXPECT_NEAR((1 - w) * cv + w * other, FaceValue(cv, other, w, k, k), 1e-14);
  }
}

TEST(WeightedGreenGauss, ConstantCoefficientAgreesWithThePlainGradient) {
  Random random(3);
  TestMesh const mesh = ClosedBox({0, 1, 3, 4}, {0, 2, 3}, {0, 1, 2});
  Field const phi = TameField(random, mesh), k(mesh.centres.size(), 2.5);
  GuardedGradient const weighted = Compute(mesh, phi, k);
  Gradient const plain = PlainGreenGauss(mesh, phi, NoExchange());
  for (int c = 1; c <= mesh.NCell(); ++c) {
    auto const i = static_cast<std::size_t>(c);
    EXPECT_NEAR(plain.x[i], weighted.x[c], 1e-13);  // sums of up to six values of size 1
    EXPECT_NEAR(plain.y[i], weighted.y[c], 1e-13);
    EXPECT_NEAR(plain.z[i], weighted.z[c], 1e-13);
  }
}

TEST(WeightedGreenGauss, FarLargerCoefficientOfTheOtherCellPullsTheFaceValueToIt) {
  EXPECT_EQ(20.0, FaceValue(10.0, 20.0, 0.5, 1.0, 1e300));
  EXPECT_NEAR(20.0, FaceValue(10.0, 20.0, 0.5, 1.0, 1e10), 1e-8);
}

TEST(WeightedGreenGauss, FarLargerCoefficientOfTheCvCellPullsTheFaceValueToIt) {
  EXPECT_NEAR(10.0, FaceValue(10.0, 20.0, 0.5, 1e300, 1.0), 1e-14);
}

TEST(WeightedGreenGauss, WeightZeroTakesTheCvValue) {
  for (double const kOther : {0.5, 1.0, 4.0, 1e10})
    EXPECT_EQ(10.0, FaceValue(10.0, 20.0, 0.0, 3.0, kOther)) << kOther;
}

TEST(WeightedGreenGauss, WeightOneTakesTheOtherValue) {
  for (double const kCv : {0.5, 1.0, 4.0, 1e10}) EXPECT_EQ(20.0, FaceValue(10.0, 20.0, 1.0, kCv, 3.0)) << kCv;
}

TEST(WeightedGreenGauss, ZeroCoefficientsAreGuarded) {
  EXPECT_NEAR(15.0, FaceValue(10.0, 20.0, 0.5, 0.0, 0.0), 1e-13);
  EXPECT_EQ(10.0, FaceValue(10.0, 20.0, 0.5, 1.0, 0.0)) << "t is 0.5e30, far above w/k";
  EXPECT_EQ(20.0, FaceValue(10.0, 20.0, 0.5, 0.0, 1.0)) << "w/k is 0.5e30, far above t";
}

TEST(WeightedGreenGauss, LimiterCutsWeightsOutsideZeroToOne) {
  // k = 1, w = 1.5: t = -0.5, v = (10 - 20) * (-0.5) / 1 + 20 = 25, beyond the other cell.
  EXPECT_EQ(20.0, FaceValue(10.0, 20.0, 1.5, 1.0, 1.0));
  EXPECT_EQ(10.0, FaceValue(10.0, 20.0, -0.5, 1.0, 1.0));
  EXPECT_EQ(10.0, FaceValue(20.0, 10.0, 1.5, 1.0, 1.0));
}

TEST(WeightedGreenGauss, LimiterKeepsEqualCellValues) { EXPECT_EQ(3.0, FaceValue(3.0, 3.0, 0.3, 0.7, 1.9)); }

TEST(WeightedGreenGauss, ValueThatDoesNotComparePassesTheLimiter) {
  EXPECT_TRUE(std::isnan(FaceValue(4.0, 8.0, 0.5, kNaN, 1.0)));
  EXPECT_TRUE(std::isnan(FaceValue(8.0, 4.0, 0.5, 1.0, kNaN)));
  EXPECT_TRUE(std::isnan(FaceValue(4.0, kNaN, 0.5, 1.0, 1.0)));
}

TEST(WeightedGreenGauss, OrderOfOperationsInTheFaceValueIsTheStatedOne) {
  // (dphi * t) / (...) and dphi * (t / (...)) round differently now and then; the first is meant.
  Random random(4);
  int differing = 0;
  for (int n = 0; n < 300; ++n) {
    double const w = Uniform(random, 0.1, 0.9), kb = Uniform(random, 0.1, 3.0),
                 ka = Uniform(random, 0.1, 3.0);
    double const b = Uniform(random, 0.0, 1.0), a = Uniform(random, 0.0, 1.0);
    double const t = (1 - w) / (ka + 1e-30);
    double const dphi = b - a;
    double const sum = w / (kb + 1e-30) + t;
    double const stated = ((dphi * t) / sum) + a;
    if (dphi * (t / sum) + a != stated) ++differing;
    EXPECT_EQ(stated, FaceValue(b, a, w, kb, ka));
  }
  EXPECT_LT(0, differing);
}

TEST(WeightedGreenGauss, PartitionFacesAreWeightedWithTheirOwnLamdaAndTheHaloCoefficient) {
  TestMesh mesh;
  mesh.AddInteriorCell({}, 1.0);
  int const halo = mesh.AddOuterCell({});
  mesh.partition.push_back({1, halo, {1.0, 0.0, 0.0}, {}, 0.5, 0});
  GuardedGradient const g = Compute(mesh, {0.0, 10.0, 20.0}, {0.0, 1.0, 4.0});
  EXPECT_NEAR(18.0, g.x[1], 1e-13);
  EXPECT_EQ(-g.x[1], g.x[halo]);
}

TEST(WeightedGreenGauss, BoundaryFacesAreNotWeighted) {
  TestMesh mesh;
  mesh.AddInteriorCell({}, 1.0);
  for (int c = 2; c <= 5; ++c) mesh.AddOuterCell({});
  mesh.inlet.push_back({1, 2, {1.0, 0.0, 0.0}, {}, 0.5, 0});
  mesh.outlet.push_back({1, 3, {0.0, 1.0, 0.0}, {}, 0.5, 0});
  mesh.symmetry.push_back({1, 4, {0.0, 0.0, 1.0}, {}, 0.5, 0});
  mesh.wall.push_back({1, 5, {1.0, 1.0, 1.0}, {}, 0.5, 0});
  GuardedGradient const g = Compute(mesh, {0.0, 1.0, 2.0, 4.0, 8.0, 16.0}, {0.0, 1.0, 1e9, 1e-9, kNaN, 0.0});
  EXPECT_EQ(18.0, g.x[1]);
  EXPECT_EQ(20.0, g.y[1]);
  EXPECT_EQ(24.0, g.z[1]);
}

TEST(WeightedGreenGauss, FaceTypesDecideWhoFeelsTheFace) {
  for (int const type : {0, 1, 2, -1}) {
    GuardedGradient const g = Compute(TwoCells(0.5, type), {0.0, 3.0, 5.0}, {0.0, 1.0, 1.0});
    EXPECT_NEAR(4.0, g.x[1], 1e-14) << type;
    EXPECT_EQ(type == 1 ? 0.0 : -g.x[1], g.x[2]) << type;
  }
}

TEST(WeightedGreenGauss, PartitionFaceTypesDecideWhoFeelsTheFace) {
  for (int const type : {0, 1, 2, -1}) {
    TestMesh mesh;
    mesh.AddInteriorCell({}, 1.0);
    int const halo = mesh.AddOuterCell({});
    mesh.partition.push_back({1, halo, {1.0, 2.0, 4.0}, {}, 0.5, type});
    GuardedGradient const g = Compute(mesh, {0.0, 3.0, 5.0}, {0.0, 1.0, 1.0});
    EXPECT_NEAR(4.0, g.x[1], 1e-14) << type;
    EXPECT_EQ(type == 1 ? 0.0 : -g.x[1], g.x[halo]) << type;
  }
}

TEST(WeightedGreenGauss, AddsInnerPartitionInletOutletSymmetryAndWallFacesInThatOrder) {
  Random random(5);
  std::vector<std::vector<double>> terms;
  std::vector<double> found;
  for (int n = 0; n < kSumsForAnOrder; ++n) {
    TestMesh const mesh = OneCellWithFacesOfAllGroups();
    Field phi = {0.0, 0.0};
    for (int c = 2; c <= 8; ++c) phi.push_back(RoughTerm(random));
    terms.emplace_back(phi.begin() + 2, phi.end());
    found.push_back(Compute(mesh, phi, Field(9, 1.0)).x[1]);
  }
  SummationOrder const order(terms);
  ASSERT_TRUE(order.TellsAllOtherOrdersApart());
  EXPECT_EQ(order.Sums(), found);
}

TEST(WeightedGreenGauss, ZeroVolumeIsNotGuarded) {
  TestMesh mesh = TwoCells();
  mesh.volumes[1] = 0.0;
  mesh.inner[0].area.z = 0.0;
  GuardedGradient const g = Compute(mesh, {0.0, 3.0, 5.0}, {0.0, 1.0, 1.0});
  EXPECT_EQ(std::numeric_limits<double>::infinity(), g.x[1]);
  EXPECT_TRUE(std::isnan(g.z[1])) << "0 times infinity";
  EXPECT_TRUE(std::isfinite(g.x[2]));
}

TEST(WeightedGreenGauss, VolumesAreTakenWithoutTheGuardOfThePlainForm) {
  // With a volume of 1e-30 the guard would halve the result.
  TestMesh mesh = TwoCells(1.0);
  mesh.volumes[1] = 1e-30;
  EXPECT_EQ(5.0 * (1.0 / 1e-30), Compute(mesh, {0.0, 3.0, 5.0}, {0.0, 1.0, 1.0}).x[1]);
}

TEST(WeightedGreenGauss, LastArgumentHasNoEffect) {
  Random random(8);
  TestMesh const mesh = RandomMesh(random);
  ASSERT_FALSE(mesh.inner.empty() || mesh.partition.empty());
  Field const phi = TameField(random, mesh), k = TameField(random, mesh);
  GuardedGradient const reference = Compute(mesh, phi, k, 0, 1);
  for (int const n : {-5, 0, 2, 100}) EXPECT_TRUE(SameBits(reference, Compute(mesh, phi, k, 0, n))) << n;
}

TEST(WeightedGreenGauss, GradientTypeHasNoInfluence) {
  Random random(8);
  TestMesh const mesh = RandomMesh(random);
  ASSERT_FALSE(mesh.inner.empty() || mesh.partition.empty());
  Field const phi = TameField(random, mesh), k = TameField(random, mesh);
  GuardedGradient const reference = Compute(mesh, phi, k);
  for (int const type : {1, 2, 3, 7, -1})
    EXPECT_TRUE(SameBits(reference, Compute(mesh, phi, k, type))) << type;
}

TEST(WeightedGreenGauss, ReadsNeitherCentresNorThePreviousIterate) {
  Random random(8);
  TestMesh const mesh = RandomMesh(random);
  Field const phi = TameField(random, mesh), k = TameField(random, mesh);
  GradientHost host(mesh);
  CZYN3DFiniteVolumeMesh& record = host.mesh;
  record.xc = record.yc = record.zc = record.ijxc = record.ijyc = record.ijzc = nullptr;
  host.globals.PrevGradX = host.globals.PrevGradY = host.globals.PrevGradZ = nullptr;
  GuardedGradient g(mesh.NCell(), kNaN);
  Compute(host, phi, k, g);
  EXPECT_TRUE(SameBits(WeightedGreenGauss(mesh, phi, k, NoExchange()), g));
}

TEST(WeightedGreenGauss, ExchangesTheThreeOutputsOnce) {
  Random random(9);
  TestMesh const mesh = RandomMesh(random);
  Field const phi = TameField(random, mesh);
  for (bool const nonBlocking : {false, true}) {
    GradientHost host(mesh, ExchangeWithItself(mesh));
    host.UseNonBlockingExchange(nonBlocking);
    GuardedGradient g(mesh.NCell());
    Compute(host, phi, phi, g);
    EXPECT_EQ(ThreeArrayExchange(nonBlocking, g.x.Data(), g.y.Data(), g.z.Data()),
              host.communication.Calls());
    EXPECT_TRUE(host.communication.RulesKept());
  }
}

TEST(WeightedGreenGauss, EmptyGroupsMayLendNullOrUnreadableArrays) {
  for (bool const lendEmptyArrays : {false, true}) {
    GradientHost host(TwoCells(1.0), NoExchange(), lendEmptyArrays);
    GuardedGradient g(2);
    Compute(host, {0.0, 3.0, 5.0}, {0.0, 1.0, 1.0}, g);
    EXPECT_EQ(5.0, g.x[1]);
    EXPECT_EQ(-5.0, g.x[2]);
  }
}

TEST(WeightedGreenGauss, PartitionWithoutInteriorCellsStillClearsAndExchanges) {
  TestMesh mesh;
  for (int c = 0; c < 3; ++c) mesh.AddOuterCell({});
  GradientHost host(mesh);
  GuardedGradient g(mesh.NCell());
  Compute(host, {0.0, 1.0, 2.0, 3.0}, {0.0, 1.0, 1.0, 1.0}, g);
  EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 0.0), g));
  EXPECT_EQ(3u, host.communication.Calls().size());
}

}  // namespace
}  // namespace zyn_test::weighted_green_gauss_test
