#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>

#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/gradient/SummationOrder.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/mesh/SmallMeshes.h"

// Plain Green-Gauss of three fields in one call, with its rotation of nine exchanges through four buffers.

namespace zyn_test::three_component_test {
namespace {

using ThreeFields = std::array<Field, 3>;

struct ThreeGradients {
  explicit ThreeGradients(int nCell, double value = -7.5)
      : g{GuardedGradient(nCell, value), GuardedGradient(nCell, value), GuardedGradient(nCell, value)} {}

  GuardedGradient& operator[](std::size_t n) { return g[n]; }

  std::array<GuardedGradient, 3> g;
};

void Compute(GradientHost& host, double* phi1, double* phi2, double* phi3, ThreeGradients& g, int type = 0) {
  ConnectedOperator op(host, type);
  op.gradient.GradMethod_3(phi1, phi2, phi3, g[0].x.Data(), g[0].y.Data(), g[0].z.Data(), g[1].x.Data(),
                           g[1].y.Data(), g[1].z.Data(), g[2].x.Data(), g[2].y.Data(), g[2].z.Data());
}

void Compute(GradientHost& host, ThreeFields const& phi, ThreeGradients& g, int type = 0) {
  GuardedArray<double> phi1 = Guarded(phi[0]), phi2 = Guarded(phi[1]), phi3 = Guarded(phi[2]);
  Compute(host, phi1.Data(), phi2.Data(), phi3.Data(), g, type);
}

ThreeGradients Compute(TestMesh const& mesh, ThreeFields const& phi, int type = 0) {
  GradientHost host(mesh);
  ThreeGradients g(mesh.NCell());
  Compute(host, phi, g, type);
  return g;
}

ThreeFields TameFields(Random& random, TestMesh const& mesh) {
  return {TameField(random, mesh), TameField(random, mesh), TameField(random, mesh)};
}

TEST(ThreeComponentGradient, EqualsItsPlainFormOnRandomMeshes) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    TestMesh const mesh = RandomMesh(random);
    ThreeFields const phi = TameFields(random, mesh);
    for (bool const nonBlocking : {false, true}) {
      GradientHost host(mesh, ExchangeWithItself(mesh));
      host.UseNonBlockingExchange(nonBlocking);
      ThreeGradients g(mesh.NCell());
      Compute(host, phi, g);
      std::array<Gradient, 3> const expected = ThreeComponentGreenGauss(mesh, phi, ExchangeWithItself(mesh));
      for (std::size_t n = 0; n < 3; ++n)
        EXPECT_TRUE(SameBits(expected[n], g[n])) << seed << ", field " << n + 1;
    }
  }
}

TEST(ThreeComponentGradient, EachGradientEqualsThePlainGradientOfItsFieldBitForBit) {
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    TestMesh const mesh = RandomMesh(random);
    ThreeFields const phi = TameFields(random, mesh);
    GradientHost host(mesh, ExchangeWithItself(mesh));
    ThreeGradients g(mesh.NCell());
    Compute(host, phi, g);
    for (std::size_t n = 0; n < 3; ++n) {
      ConnectedOperator op(host, 0);
      GuardedGradient plain(mesh.NCell());
      op.gradient.GradMethod(Guarded(phi[n]).Data(), plain.x.Data(), plain.y.Data(), plain.z.Data(), 1);
      EXPECT_TRUE(SameBits(plain, g[n])) << seed << ", field " << n + 1;
    }
  }
}

TEST(ThreeComponentGradient, HandComputedFaceValuesOfTwoCells) {
  ThreeGradients g =
      Compute(TwoCells(0.25), {Field{0.0, 4.0, 8.0}, Field{0.0, 8.0, 0.0}, Field{0.0, -4.0, -4.0}});
  double const faceValues[] = {5.0, 6.0, -4.0};
  for (std::size_t n = 0; n < 3; ++n) {
    EXPECT_EQ(faceValues[n], g[n].x[1]);
    EXPECT_EQ(2 * faceValues[n], g[n].y[1]);
    EXPECT_EQ(4 * faceValues[n], g[n].z[1]);
    EXPECT_EQ(-faceValues[n], g[n].x[2]);
    EXPECT_EQ(-2 * faceValues[n], g[n].y[2]);
    EXPECT_EQ(-4 * faceValues[n], g[n].z[2]);
  }
}

TEST(ThreeComponentGradient, LimiterUsesTheCellValuesOfEachFieldOnItsOwn) {
  // Weight 1.5 overshoots the other cell's value in every field.
  ThreeGradients g =
      Compute(TwoCells(1.5), {Field{0.0, 4.0, 8.0}, Field{0.0, 8.0, 4.0}, Field{0.0, 3.0, 3.0}});
  EXPECT_EQ(8.0, g[0].x[1]);
  EXPECT_EQ(4.0, g[1].x[1]);
  EXPECT_EQ(3.0, g[2].x[1]);
}

TEST(ThreeComponentGradient, NaNInOneFieldStaysInItsGradient) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  ThreeGradients g = Compute(TwoCells(), {Field{0.0, 4.0, 8.0}, Field{0.0, nan, 4.0}, Field{0.0, 3.0, 3.0}});
  EXPECT_EQ(6.0, g[0].x[1]);
  EXPECT_TRUE(std::isnan(g[1].x[1]) && std::isnan(g[1].x[2]));
  EXPECT_EQ(3.0, g[2].x[1]);
}

TEST(ThreeComponentGradient, OneSidedFaceChangesNoneOfTheNineSumsOfTheOtherCell) {
  ThreeGradients g =
      Compute(TwoCells(0.5, 1), {Field{0.0, 4.0, 8.0}, Field{0.0, 8.0, 0.0}, Field{0.0, 3.0, 1.0}});
  double const faceValues[] = {6.0, 4.0, 2.0};
  for (std::size_t n = 0; n < 3; ++n) {
    EXPECT_EQ(faceValues[n], g[n].x[1]);
    EXPECT_TRUE(SameBits(0.0, g[n].x[2]) && SameBits(0.0, g[n].y[2]) && SameBits(0.0, g[n].z[2])) << n;
  }
}

TEST(ThreeComponentGradient, EveryOtherFaceTypeChangesBothCells) {
  for (int const type : {0, 2, -1, 101}) {
    ThreeGradients g =
        Compute(TwoCells(0.5, type), {Field{0.0, 4.0, 8.0}, Field{0.0, 8.0, 0.0}, Field{0.0, 3.0, 1.0}});
    double const faceValues[] = {6.0, 4.0, 2.0};
    for (std::size_t n = 0; n < 3; ++n) EXPECT_EQ(-faceValues[n], g[n].x[2]) << type;
  }
}

TEST(ThreeComponentGradient, PartitionFacesObeyTheirTypes) {
  for (int const type : {0, 1, 2, -1}) {
    TestMesh mesh;
    mesh.AddInteriorCell({}, 0.5);
    int const halo = mesh.AddOuterCell({});
    mesh.partition.push_back({1, halo, {1.0, 2.0, 4.0}, {}, 0.25, type});
    ThreeGradients g = Compute(mesh, {Field{0.0, 4.0, 8.0}, Field{0.0, 8.0, 0.0}, Field{0.0, 3.0, 3.0}});
    double const faceValues[] = {5.0, 6.0, 3.0};
    for (std::size_t n = 0; n < 3; ++n) {
      EXPECT_EQ(2 * faceValues[n], g[n].x[1]) << type;
      EXPECT_EQ(type == 1 ? 0.0 : -faceValues[n], g[n].x[halo]) << type;
      EXPECT_EQ(type == 1 ? 0.0 : -4 * faceValues[n], g[n].z[halo]) << type;
    }
  }
}

TEST(ThreeComponentGradient, SameArrayAsFirstAndSecondFieldGivesEqualGradients) {
  Random random(31);
  TestMesh const mesh = RandomMesh(random);
  GuardedArray<double> shared = Guarded(TameField(random, mesh)), third = Guarded(TameField(random, mesh));
  GradientHost host(mesh);
  ThreeGradients g(mesh.NCell());
  Compute(host, shared.Data(), shared.Data(), third.Data(), g);
  EXPECT_TRUE(SameBits(g[0], g[1]));
  EXPECT_FALSE(SameBits(g[0], g[2]));
}

TEST(ThreeComponentGradient, GhostCellsOfAllNineOutputsAreExactlyZero) {
  Random random(32);
  for (int n = 0; n < 10; ++n) {
    TestMesh const mesh = RandomMesh(random);
    ThreeGradients g = Compute(mesh, TameFields(random, mesh));
    for (GuardedGradient const& component : g.g) EXPECT_TRUE(GhostsAreZero(mesh, component));
  }
}

TEST(ThreeComponentGradient, GradientTypeHasNoInfluence) {
  Random random(33);
  TestMesh const mesh = RandomMesh(random);
  ThreeFields const phi = TameFields(random, mesh);
  ThreeGradients reference = Compute(mesh, phi, 0);
  for (int const type : {1, 2, 3, 7, -1}) {
    ThreeGradients g = Compute(mesh, phi, type);
    for (std::size_t n = 0; n < 3; ++n) EXPECT_TRUE(SameBits(reference[n], g[n])) << type;
  }
}

TEST(ThreeComponentGradient, ReadsNeitherCentresNorThePreviousIterate) {
  Random random(34);
  TestMesh const mesh = RandomMesh(random);
  ThreeFields const phi = TameFields(random, mesh);
  GradientHost host(mesh);
  CZYN3DFiniteVolumeMesh& record = host.mesh;
  record.xc = record.yc = record.zc = record.ijxc = record.ijyc = record.ijzc = nullptr;
  host.globals.PrevGradX = host.globals.PrevGradY = host.globals.PrevGradZ = nullptr;
  ThreeGradients g(mesh.NCell(), std::numeric_limits<double>::quiet_NaN());
  Compute(host, phi, g);
  std::array<Gradient, 3> const expected = ThreeComponentGreenGauss(mesh, phi, NoExchange());
  for (std::size_t n = 0; n < 3; ++n) EXPECT_TRUE(SameBits(expected[n], g[n]));
}

TEST(ThreeComponentGradient, ZeroVolumeMakesHugeButFiniteGradients) {
  TestMesh mesh = TwoCells();
  mesh.volumes[1] = 0.0;
  ThreeGradients g = Compute(mesh, {Field{0.0, 3.0, 5.0}, Field{0.0, 1.0, 1.0}, Field{0.0, 2.0, 4.0}});
  EXPECT_EQ(4.0 * (1.0 / 1e-30), g[0].x[1]);
  EXPECT_EQ(1.0 * (1.0 / 1e-30), g[1].x[1]);
  EXPECT_EQ(3.0 * (1.0 / 1e-30), g[2].x[1]);
}

TEST(ThreeComponentGradient, AddsInnerPartitionInletOutletSymmetryAndWallFacesInThatOrder) {
  Random random(35);
  std::array<std::vector<std::vector<double>>, 3> terms;
  std::array<std::vector<double>, 3> found;
  TestMesh const mesh = OneCellWithFacesOfAllGroups();
  for (int n = 0; n < kSumsForAnOrder; ++n) {
    ThreeFields phi;
    for (Field& field : phi) {
      field = {0.0, 0.0};
      for (int c = 2; c <= 8; ++c) field.push_back(RoughTerm(random));
    }
    ThreeGradients g = Compute(mesh, phi);
    for (std::size_t i = 0; i < 3; ++i) {
      terms[i].emplace_back(phi[i].begin() + 2, phi[i].end());
      found[i].push_back(g[i].x[1]);
    }
  }
  for (std::size_t i = 0; i < 3; ++i) {
    SummationOrder const order(terms[i]);
    ASSERT_TRUE(order.TellsAllOtherOrdersApart());
    EXPECT_EQ(order.Sums(), found[i]) << i;
  }
}

TEST(ThreeComponentGradient, BlockingExchangeTakesTheNineOutputsInTheirOrder) {
  TestMesh const mesh = TwoCells();
  GradientHost host(mesh);
  ThreeGradients g(mesh.NCell());
  Compute(host, {Field(3, 1.0), Field(3, 2.0), Field(3, 3.0)}, g);
  std::vector<ExchangeCall> expected;
  for (GuardedGradient& component : g.g)
    for (GuardedArray<double>* array : {&component.x, &component.y, &component.z})
      expected.push_back({ExchangeOperation::Blocking, array->Data(), -1});
  EXPECT_EQ(expected, host.communication.Calls());
}

TEST(ThreeComponentGradient, NonBlockingExchangeRotatesTheNineOutputsThroughFourBuffers) {
  TestMesh const mesh = TwoCells();
  GradientHost host(mesh);
  host.UseNonBlockingExchange(true);
  ThreeGradients g(mesh.NCell());
  Compute(host, {Field(3, 1.0), Field(3, 2.0), Field(3, 3.0)}, g);
  double const *g1x = g[0].x.Data(), *g1y = g[0].y.Data(), *g1z = g[0].z.Data();
  double const *g2x = g[1].x.Data(), *g2y = g[1].y.Data(), *g2z = g[1].z.Data();
  double const *g3x = g[2].x.Data(), *g3y = g[2].y.Data(), *g3z = g[2].z.Data();
  constexpr ExchangeOperation Start = ExchangeOperation::Start, Wait = ExchangeOperation::Wait;
  std::vector<ExchangeCall> const expected = {
      {Start, g1x, 0}, {Start, g1y, 1}, {Start, g1z, 2}, {Start, g2x, 3},  //
      {Wait, g1x, 0},  {Start, g2y, 0},                                    //
      {Wait, g1y, 1},  {Start, g2z, 1},                                    //
      {Wait, g1z, 2},  {Start, g3x, 2},                                    //
      {Wait, g2x, 3},  {Start, g3y, 3},                                    //
      {Wait, g2y, 0},  {Start, g3z, 0},                                    //
      {Wait, g2z, 1},  {Wait, g3x, 2},  {Wait, g3y, 3},  {Wait, g3z, 0},
  };
  EXPECT_EQ(expected, host.communication.Calls());
  EXPECT_TRUE(host.communication.RulesKept());
}

TEST(ThreeComponentGradient, BlockingAndNonBlockingExchangesGiveTheSameBits) {
  Random random(36);
  TestMesh const mesh = RandomMesh(random);
  ThreeFields const phi = TameFields(random, mesh);
  GradientHost blocking(mesh, ExchangeWithItself(mesh)), nonBlocking(mesh, ExchangeWithItself(mesh));
  nonBlocking.UseNonBlockingExchange(true);
  ThreeGradients a(mesh.NCell()), b(mesh.NCell());
  Compute(blocking, phi, a);
  Compute(nonBlocking, phi, b);
  for (std::size_t n = 0; n < 3; ++n) EXPECT_TRUE(SameBits(a[n], b[n]));
}

TEST(ThreeComponentGradient, EmptyGroupsMayLendNullOrUnreadableArrays) {
  for (bool const lendEmptyArrays : {false, true}) {
    GradientHost host(TwoCells(), NoExchange(), lendEmptyArrays);
    ThreeGradients g(2);
    Compute(host, {Field{0.0, 3.0, 5.0}, Field{0.0, 1.0, 1.0}, Field{0.0, 2.0, 4.0}}, g);
    EXPECT_EQ(4.0, g[0].x[1]);
    EXPECT_EQ(-1.0, g[1].x[2]);
    EXPECT_EQ(3.0, g[2].x[1]);
  }
}

TEST(ThreeComponentGradient, PartitionWithoutInteriorCellsStillClearsAndExchanges) {
  TestMesh mesh;
  for (int c = 0; c < 3; ++c) mesh.AddOuterCell({});
  GradientHost host(mesh);
  ThreeGradients g(mesh.NCell());
  Compute(host, {Field(4, 1.0), Field(4, 2.0), Field(4, 3.0)}, g);
  for (std::size_t n = 0; n < 3; ++n) EXPECT_TRUE(SameBits(GuardedGradient(mesh.NCell(), 0.0), g[n]));
  EXPECT_EQ(9u, host.communication.Calls().size());
}

}  // namespace
}  // namespace zyn_test::three_component_test
