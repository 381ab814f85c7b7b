#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "gradient/COperatorGradientImpl.h"
#include "tests/support/compare/SameBits.h"
#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/mesh/RandomMesh.h"
#include "tests/support/watch/AllocationCount.h"

// What a gradient operator offers to a solver whose mesh moves or is refined, and to one that exchanges by itself.

namespace zyn_test::changing_mesh_test {
namespace {

constexpr int kLeastSquares = 1;

TestMesh SomeMesh(std::uint64_t seed) {
  Random random(seed);
  TestMesh mesh;
  while (mesh.nInnerCells < 20 || mesh.inner.empty() || mesh.partition.empty()) mesh = RandomMesh(random);
  return mesh;
}

Field SomeField(std::uint64_t seed, TestMesh const& mesh) {
  Random random(seed);
  return TameField(random, mesh);
}

TEST(ChangingMesh, UpdatedMomentsAreThoseOfTheMovedMeshInTheSameArrays) {
  TestMesh mesh = SomeMesh(1);
  GradientHost host(mesh);
  host.com.values.reserve(8);
  ConnectedOperator op(host, kLeastSquares);
  ASSERT_EQ(1, op.gradient.Initialize());
  COperatorGradientImpl const& state = *op.gradient.m_pImpl;
  double const* const array = state.m_pSxx;
  for (int c = 1; c <= mesh.NCell(); ++c) {
    host.centres.x[c] = host.centres.x[c] * 1.25 + 0.5 * host.centres.y[c];
    mesh.Centre(c).x = host.centres.x[c];
  }
  long const allocations = Allocations();
  EXPECT_EQ(1, op.gradient.UpdateGeometry());
  EXPECT_EQ(allocations, Allocations());
  EXPECT_EQ(array, state.m_pSxx);

  GradientHost fresh(mesh);
  ConnectedOperator other(fresh, kLeastSquares);
  ASSERT_EQ(1, other.gradient.Initialize());
  COperatorGradientImpl const& expected = *other.gradient.m_pImpl;
  EXPECT_TRUE(SameBits(mesh.NCell(), expected.m_pSxx, state.m_pSxx));
  EXPECT_TRUE(SameBits(mesh.NCell(), expected.m_pSyy, state.m_pSyy));
  EXPECT_TRUE(SameBits(mesh.NCell(), expected.m_pSzz, state.m_pSzz));
  EXPECT_TRUE(SameBits(mesh.NCell(), expected.m_pSxy, state.m_pSxy));
  EXPECT_TRUE(SameBits(mesh.NCell(), expected.m_pSxz, state.m_pSxz));
  EXPECT_TRUE(SameBits(mesh.NCell(), expected.m_pSyz, state.m_pSyz));
}

TEST(ChangingMesh, UpdateReducesTheStatusOnceForEveryTypeAndTellsOfAnotherPartitionsFailure) {
  TestMesh const mesh = SomeMesh(2);
  for (int const type : {0, kLeastSquares}) {
    GradientHost host(mesh);
    ConnectedOperator op(host, type);
    op.gradient.Initialize();
    host.com.values.clear();
    EXPECT_EQ(1, op.gradient.UpdateGeometry()) << type;
    EXPECT_EQ(std::vector<int>({0}), host.com.values) << type;
    host.com.othersMinimum = -1;
    EXPECT_EQ(-1, op.gradient.UpdateGeometry()) << type;
  }
}

TEST(ChangingMesh, AReleasedOperatorServesAnotherMeshAndNothingIsLeftBehind) {
  TestMesh const first = SomeMesh(3), second = SomeMesh(4);
  GradientHost firstHost(first), secondHost(second);
  firstHost.com.values.reserve(64), secondHost.com.values.reserve(64);
  long const live = LiveAllocations();
  {
    ConnectedOperator op(firstHost, kLeastSquares);
    for (int n = 0; n < 10; ++n) {
      Connect(op.gradient, firstHost);
      ASSERT_EQ(1, op.gradient.Initialize());
      op.gradient.Release();
      Connect(op.gradient, secondHost);
      ASSERT_EQ(1, op.gradient.Initialize());
      op.gradient.Release();
    }
    EXPECT_EQ(live + 2, LiveAllocations()) << "the state, and the ring without its memory";
    ASSERT_EQ(1, op.gradient.Initialize());
  }
  EXPECT_EQ(live, LiveAllocations());
}

TEST(ChangingMesh, ReleaseOfAnOperatorWithoutSetUpIsHarmless) {
  COperatorGradient gradient;
  gradient.Release();
  gradient.Release();
  EXPECT_EQ(nullptr, gradient.m_pImpl->m_pSxx);
}

/// The outputs of a gradient and the exchanges that it made.
struct Outcome {
  explicit Outcome(int nCell) : g{GuardedGradient(nCell), GuardedGradient(nCell), GuardedGradient(nCell)} {}

  GuardedGradient g[3];
  std::vector<ExchangeCall> calls;
};

constexpr int kGradients = 5;

/// Every gradient of an operator in turn: plain, three sweeps, least squares, three components, weighted.
Outcome ResultOf(int gradient, TestMesh const& mesh, bool exchangesResult) {
  GradientHost host(mesh, ExchangeWithItself(mesh));
  ConnectedOperator op(host, gradient == 2 ? kLeastSquares : 0);
  op.gradient.SetResultExchange(exchangesResult);
  op.gradient.Initialize();
  GuardedArray<double> phi = Guarded(SomeField(6, mesh));
  GuardedArray<double> coefficient(mesh.NCell());
  for (int c = 1; c <= mesh.NCell(); ++c) coefficient[c] = 1.0 + c % 7;
  Outcome outcome(mesh.NCell());
  GuardedGradient* const g = outcome.g;
  if (gradient == 3) {
    op.gradient.GradMethod_3(phi.Data(), phi.Data(), phi.Data(), g[0].x.Data(), g[0].y.Data(), g[0].z.Data(),
                             g[1].x.Data(), g[1].y.Data(), g[1].z.Data(), g[2].x.Data(), g[2].y.Data(),
                             g[2].z.Data());
  } else if (gradient == 4) {
    op.gradient.GradMethod_Weighted(phi.Data(), g->x.Data(), g->y.Data(), g->z.Data(), coefficient.Data(), 1);
  } else {
    op.gradient.GradMethod(phi.Data(), g->x.Data(), g->y.Data(), g->z.Data(), gradient == 1 ? 3 : 1);
  }
  outcome.calls = host.communication.Calls();
  return outcome;
}

TEST(ResultExchange, LeftOutChangesNoInteriorCellAndSkipsTheLastExchangeAlone) {
  TestMesh const mesh = SomeMesh(7);
  int const arrays[kGradients] = {3, 3, 3, 9, 3};
  int const betweenSweeps[kGradients] = {0, 6, 0, 0, 0};
  for (int gradient = 0; gradient < kGradients; ++gradient) {
    Outcome const with = ResultOf(gradient, mesh, true), without = ResultOf(gradient, mesh, false);
    EXPECT_EQ(static_cast<std::size_t>(betweenSweeps[gradient] + arrays[gradient]), with.calls.size())
        << gradient;
    EXPECT_EQ(static_cast<std::size_t>(betweenSweeps[gradient]), without.calls.size()) << gradient;
    for (int i = 0; i < arrays[gradient] / 3; ++i) {
      EXPECT_TRUE(SameBits(mesh.nInnerCells, with.g[i].x.Data(), without.g[i].x.Data())) << gradient;
      EXPECT_TRUE(SameBits(mesh.nInnerCells, with.g[i].y.Data(), without.g[i].y.Data())) << gradient;
      EXPECT_TRUE(SameBits(mesh.nInnerCells, with.g[i].z.Data(), without.g[i].z.Data())) << gradient;
      EXPECT_TRUE(without.g[i].GuardsIntact());
    }
  }
}

TEST(ResultExchange, IsOnAfterConstruction) {
  COperatorGradient const gradient;
  EXPECT_TRUE(gradient.m_pImpl->m_bExchangesResult);
}

}  // namespace
}  // namespace zyn_test::changing_mesh_test
