#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

#include "foundation/FaceGroups.h"
#include "foundation/Processor.h"
#include "gradient/COperatorGradientImpl.h"
#include "gradient/FaceRing.h"
#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/mesh/RandomMesh.h"

// A few hundred random partitions: every method gives the bits of its plain form, whatever the topology, the
// weights, the face types, the empty groups and the field (ties, huge and denormal values, infinities, NaN).

namespace zyn_test {
namespace {

constexpr std::uint64_t kFirstSeed = 1000;
constexpr std::uint64_t kLastSeed = 1399;

/// One random case: partition, fields and how the host exchanges and lends.
struct Case {
  explicit Case(std::uint64_t seed) : random(seed), mesh(RandomMesh(random)) {
    if (mesh.nInnerCells > 0 && UniformInt(random, 0, 1) == 1) exchange = ExchangeWithItself(mesh);
    nonBlocking = UniformInt(random, 0, 1) == 1;
    lendEmptyArrays = UniformInt(random, 0, 1) == 1;
  }

  Random random;
  TestMesh mesh;
  Exchange exchange = NoExchange();
  bool nonBlocking = false;
  bool lendEmptyArrays = false;
};

/// How an operator walks over the faces: without set-up, or set up for records of the cells around the face.
enum class Walk { Faces, Ring };
constexpr Walk kWalks[] = {Walk::Faces, Walk::Ring};

/// The host of a case with a connected operator and one gradient.
struct CaseRun {
  CaseRun(Case const& c, int type, Walk walk = Walk::Faces)
      : host(c.mesh, c.exchange, c.lendEmptyArrays), op(host, type), g(c.mesh.NCell(), 0.75) {
    host.UseNonBlockingExchange(c.nonBlocking);
    if (walk == Walk::Faces) return;
    FaceRing& ring = *op.gradient.m_pImpl->m_pFaceRing;
    ring.TakeNoMeshForSmall();
    ring.Prepare(FacesOf(FaceKind::Inner, host.mesh), host.mesh.NInnerCells);
  }

  /// Whether the inner faces are walked over with the ring.
  bool UsesRing() const {
    return op.gradient.m_pImpl->m_pFaceRing->Fits(FacesOf(FaceKind::Inner, host.mesh), host.mesh.NInnerCells,
                                                  16);
  }

  GradientHost host;
  ConnectedOperator op;
  GuardedGradient g;
};

TEST(RandomMeshes, IteratedGreenGaussEqualsItsPlainForm) {
  for (std::uint64_t seed = kFirstSeed; seed <= kLastSeed; ++seed) {
    Case c(seed);
    Field const phi = RandomField(c.random, c.mesh);
    GuardedArray<double> guardedPhi = Guarded(phi);
    for (int const run : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}) {
      int const nSweep = std::array{-1, 0, 1, 2, 3, 5, 1, 2, 3, 5}[run];
      CaseRun s(c, 7, run < 6 ? Walk::Faces : Walk::Ring);
      s.op.gradient.GradMethod(guardedPhi.Data(), s.g.x.Data(), s.g.y.Data(), s.g.z.Data(), nSweep);
      Gradient expected(c.mesh, 0.75);
      Gradient const previous = IteratedGreenGauss(c.mesh, phi, nSweep, c.exchange, expected);
      ASSERT_TRUE(SameBits(expected, s.g)) << "seed " << seed << ", sweeps " << nSweep;
      ASSERT_TRUE(SameBits(previous, s.host.previous)) << "seed " << seed << ", sweeps " << nSweep;
      ASSERT_TRUE(s.host.communication.RulesKept()) << seed;
      ASSERT_TRUE(s.host.InputsUntouched()) << seed;
    }
  }
}

TEST(RandomMeshes, PlainGreenGaussEqualsItsPlainForm) {
  for (std::uint64_t seed = kFirstSeed; seed <= kLastSeed; ++seed) {
    Case c(seed);
    Field const phi = RandomField(c.random, c.mesh);
    Gradient const expected = PlainGreenGauss(c.mesh, phi, c.exchange);
    for (Walk const walk : kWalks) {
      CaseRun s(c, 0, walk);
      s.op.gradient.GradMethod(Guarded(phi).Data(), s.g.x.Data(), s.g.y.Data(), s.g.z.Data(), 1);
      ASSERT_TRUE(SameBits(expected, s.g)) << seed;
      ASSERT_TRUE(s.host.communication.RulesKept() && s.host.InputsUntouched()) << seed;
    }
  }
}

TEST(RandomMeshes, AreWalkedWithRecordsIfTheProcessorCan) {
  int withRing = 0;
  for (std::uint64_t seed = kFirstSeed; seed <= kLastSeed; ++seed) {
    CaseRun const s(Case(seed), 0, Walk::Ring);
    ASSERT_EQ(processor::HasAvx2() && s.host.mesh.NInnerFaces > 0, s.UsesRing()) << seed;
    withRing += s.UsesRing() ? 1 : 0;
  }
  EXPECT_TRUE(withRing > 300 || !processor::HasAvx2()) << withRing;
}

TEST(RandomMeshes, WeightedGreenGaussEqualsItsPlainForm) {
  for (std::uint64_t seed = kFirstSeed; seed <= kLastSeed; ++seed) {
    Case c(seed);
    Field const phi = RandomField(c.random, c.mesh);
    Field const k =
        UniformInt(c.random, 0, 1) == 0 ? TameField(c.random, c.mesh) : RandomField(c.random, c.mesh);
    CaseRun s(c, UniformInt(c.random, -1, 4));
    s.op.gradient.GradMethod_Weighted(Guarded(phi).Data(), s.g.x.Data(), s.g.y.Data(), s.g.z.Data(),
                                      Guarded(k).Data(), UniformInt(c.random, -2, 5));
    ASSERT_TRUE(SameBits(WeightedGreenGauss(c.mesh, phi, k, c.exchange), s.g)) << seed;
    ASSERT_TRUE(s.host.communication.RulesKept() && s.host.InputsUntouched()) << seed;
  }
}

TEST(RandomMeshes, ThreeComponentGradientEqualsItsPlainForm) {
  for (std::uint64_t seed = kFirstSeed; seed <= kLastSeed; ++seed) {
    Case c(seed);
    std::array<Field, 3> const phi = {RandomField(c.random, c.mesh), RandomField(c.random, c.mesh),
                                      RandomField(c.random, c.mesh)};
    std::array<Gradient, 3> const expected = ThreeComponentGreenGauss(c.mesh, phi, c.exchange);
    for (Walk const walk : kWalks) {
      CaseRun s(c, UniformInt(c.random, -1, 4), walk);
      GuardedGradient second(c.mesh.NCell()), third(c.mesh.NCell());
      s.op.gradient.GradMethod_3(Guarded(phi[0]).Data(), Guarded(phi[1]).Data(), Guarded(phi[2]).Data(),
                                 s.g.x.Data(), s.g.y.Data(), s.g.z.Data(), second.x.Data(), second.y.Data(),
                                 second.z.Data(), third.x.Data(), third.y.Data(), third.z.Data());
      ASSERT_TRUE(SameBits(expected[0], s.g)) << seed;
      ASSERT_TRUE(SameBits(expected[1], second)) << seed;
      ASSERT_TRUE(SameBits(expected[2], third)) << seed;
      ASSERT_TRUE(s.host.communication.RulesKept() && s.host.InputsUntouched()) << seed;
    }
  }
}

TEST(RandomMeshes, LeastSquaresEqualsItsPlainForm) {
  int solved = 0, stopped = 0;
  for (std::uint64_t seed = kFirstSeed; seed <= kLastSeed; ++seed) {
    Case c(seed);
    Field const phi = RandomField(c.random, c.mesh);
    CaseRun s(c, 1);
    ASSERT_EQ(1, s.op.gradient.Initialize());
    testing::internal::CaptureStdout();
    s.op.gradient.GradMethod(Guarded(phi).Data(), s.g.x.Data(), s.g.y.Data(), s.g.z.Data(), 1);
    std::string const printed = testing::internal::GetCapturedStdout();
    Moments const moments = LeastSquaresMoments(c.mesh);
    LeastSquaresResult const expected = LeastSquares(c.mesh, moments, phi, c.exchange);
    ASSERT_TRUE(SameBits(expected.g, s.g)) << seed;
    ASSERT_EQ(expected.zeroPivot ? "aa[ii][j]=0.\n4\n" : "", printed) << seed;
    ASSERT_EQ(expected.zeroPivot, s.host.communication.Calls().empty()) << seed;
    COperatorGradientImpl const& state = *s.op.gradient.m_pImpl;
    ASSERT_TRUE(SameBits(c.mesh.NCell(), moments.xx.data(), state.m_pSxx)) << seed;
    ASSERT_TRUE(SameBits(c.mesh.NCell(), moments.yz.data(), state.m_pSyz)) << seed;
    ASSERT_TRUE(SameBits(c.mesh.NCell(), expected.rightHandSide.z.data(), state.m_pBz)) << seed;
    ASSERT_TRUE(s.host.communication.RulesKept() && s.host.InputsUntouched()) << seed;
    ++(expected.zeroPivot ? stopped : solved);
  }
  EXPECT_LT(100, solved);
  EXPECT_LT(10, stopped);
}

// ------------------------------------------------------------------------------------------------ large
// meshes
//
// A kernel may work through the cells in blocks. These partitions are larger than any block that fits a
// cache: in the order of a sorted mesh, in the order of its directions, and without any order; each with
// untouched cells at the end.

TestMesh BoxByDirections() {
  std::vector<double> x{0.0}, y{0.0}, z{0.0};
  for (int i = 1; i <= 40; ++i) x.push_back(x.back() + 0.5 + 0.01 * i);
  for (int i = 1; i <= 30; ++i) y.push_back(y.back() + 1.0 - 0.01 * i);
  for (int i = 1; i <= 25; ++i) z.push_back(z.back() + 0.7);
  TestMesh mesh = ClosedBox(x, y, z);
  for (int c = 0; c < 20000; ++c) mesh.AddOuterCell({});
  return mesh;
}

TestMesh SortedBox() {
  TestMesh mesh = BoxByDirections();
  std::sort(mesh.inner.begin(), mesh.inner.end(),
            [](Face const& a, Face const& b) { return a.cv != b.cv ? a.cv < b.cv : a.other < b.other; });
  return mesh;
}

TestMesh LargeRandomMesh(std::uint64_t seed) {
  Random random(seed);
  TestMesh mesh;
  while (mesh.nInnerCells < 15000 || mesh.inner.size() < 30000) mesh = RandomMesh(random, {30000, 20000});
  return mesh;
}

void ExpectEveryMethodToEqualItsPlainForm(TestMesh const& mesh, std::uint64_t seed) {
  Random random(seed);
  Field const phi = TameField(random, mesh), k = TameField(random, mesh), third = TameField(random, mesh);
  GuardedArray<double> phiArray = Guarded(phi), kArray = Guarded(k), thirdArray = Guarded(third);
  Exchange const exchange = ExchangeWithItself(mesh);
  GradientHost host(mesh, exchange);
  ConnectedOperator op(host, 1);
  op.gradient.Initialize();
  GuardedGradient g(mesh.NCell()), g2(mesh.NCell()), g3(mesh.NCell());
  auto const callMethod = [&](int type, int n) {
    op.gradient.getGradType(type);
    op.gradient.GradMethod(phiArray.Data(), g.x.Data(), g.y.Data(), g.z.Data(), n);
  };

  testing::internal::CaptureStdout();
  callMethod(1, 1);
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(SameBits(LeastSquares(mesh, LeastSquaresMoments(mesh), phi, exchange).g, g));
  callMethod(0, 1);
  EXPECT_TRUE(SameBits(PlainGreenGauss(mesh, phi, exchange), g));
  for (int const nSweep : {1, 2, 3}) {
    callMethod(7, nSweep);
    Gradient expected(mesh);
    Gradient const previous = IteratedGreenGauss(mesh, phi, nSweep, exchange, expected);
    EXPECT_TRUE(SameBits(expected, g)) << nSweep;
    EXPECT_TRUE(SameBits(previous, host.previous)) << nSweep;
  }
  op.gradient.GradMethod_Weighted(phiArray.Data(), g.x.Data(), g.y.Data(), g.z.Data(), kArray.Data(), 1);
  EXPECT_TRUE(SameBits(WeightedGreenGauss(mesh, phi, k, exchange), g));
  op.gradient.GradMethod_3(phiArray.Data(), kArray.Data(), thirdArray.Data(), g.x.Data(), g.y.Data(),
                           g.z.Data(), g2.x.Data(), g2.y.Data(), g2.z.Data(), g3.x.Data(), g3.y.Data(),
                           g3.z.Data());
  std::array<Gradient, 3> const expected = ThreeComponentGreenGauss(mesh, {phi, k, third}, exchange);
  EXPECT_TRUE(SameBits(expected[0], g));
  EXPECT_TRUE(SameBits(expected[1], g2));
  EXPECT_TRUE(SameBits(expected[2], g3));
  EXPECT_TRUE(host.InputsUntouched() && host.previous.GuardsIntact());
}

TEST(LargeMeshes, SortedBoxEqualsThePlainForms) { ExpectEveryMethodToEqualItsPlainForm(SortedBox(), 1); }

TEST(LargeMeshes, BoxWithFacesByDirectionEqualsThePlainForms) {
  ExpectEveryMethodToEqualItsPlainForm(BoxByDirections(), 2);
}

TEST(LargeMeshes, BoxWithFacesInReverseEqualsThePlainForms) {
  TestMesh mesh = SortedBox();
  std::reverse(mesh.inner.begin(), mesh.inner.end());
  ExpectEveryMethodToEqualItsPlainForm(mesh, 3);
}

TEST(LargeMeshes, FacesFromTheHigherToTheLowerCellEqualThePlainForms) {
  TestMesh mesh = SortedBox();
  for (Face& face : mesh.inner) std::swap(face.cv, face.other);
  ExpectEveryMethodToEqualItsPlainForm(mesh, 4);
}

TEST(LargeMeshes, RandomTopologiesEqualThePlainForms) {
  for (std::uint64_t seed = 1; seed <= 4; ++seed)
    ExpectEveryMethodToEqualItsPlainForm(LargeRandomMesh(seed), seed);
}

TEST(LargeMeshes, FacesOfACellWithItselfEqualThePlainForms) {
  // A periodic mesh that is one cell wide has such faces. They stand alone, side by side, and next to one-sided
  // ones, in between faces of the same CV cell.
  TestMesh mesh = SortedBox();
  std::size_t const nFaces = mesh.inner.size();
  for (std::size_t f = 0; f < nFaces; f += 37) mesh.inner[f].other = mesh.inner[f].cv;
  for (std::size_t f = 1; f < nFaces; f += 111) mesh.inner[f].other = mesh.inner[f].cv;
  for (std::size_t f = 2; f < nFaces; f += 1000) mesh.inner[f].type = 1;
  ExpectEveryMethodToEqualItsPlainForm(mesh, 6);
}

TEST(LargeMeshes, CellsWithoutFacesAreClearedInEveryMethod) {
  // Two faces among many cells, one at each end of the numbering.
  TestMesh mesh;
  for (int c = 0; c < 30000; ++c) mesh.AddInteriorCell({0.1 * c, 0.0, 0.0}, 1.0);
  mesh.inner.push_back({29999, 30000, {1.0, 2.0, 3.0}, {}, 0.5, 0});
  mesh.inner.push_back({2, 1, {1.0, 2.0, 3.0}, {}, 0.5, 0});
  ExpectEveryMethodToEqualItsPlainForm(mesh, 5);
}

}  // namespace
}  // namespace zyn_test
