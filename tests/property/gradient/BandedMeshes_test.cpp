#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Processor.h"
#include "gradient/COperatorGradientImpl.h"
#include "gradient/LeastSquaresWalk.h"
#include "tests/support/gradient/BitComparison.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/gradient/PlainForm.h"
#include "tests/support/mesh/RandomMesh.h"

// Least squares of one field and of three walk through a mesh in one pass if its numbering has a small bandwidth and the
// processor has AVX2, else in the plain way. On meshes with bandwidths from 1 to all cells, both ways give the bits of
// the plain form, whatever the faces and fields are.

namespace zyn_test::banded_meshes_test {
namespace {

std::string const kSingularLines = "aa[ii][j]=0.\n4\n";

/// Neighbours of a cell without inner faces: all axes, or one that leaves the first, second, or last pivot zero.
std::vector<Vector3> const kNeighbours[] = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}},
                                            {{0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}},
                                            {{1.0, 0.0, 0.0}, {0.0, 0.0, 1.0}},
                                            {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}}};

/// How the faces of a mesh differ from those of a sorted one.
struct Irregular {
  bool swapped, withItself, twice, oneSided, toOuterCells, thin;

  explicit Irregular(Random& random)
      : swapped(Coin(random)),
        withItself(Coin(random)),
        twice(Coin(random)),
        oneSided(Coin(random)),
        toOuterCells(Coin(random)),
        thin(Coin(random)) {}
  static bool Coin(Random& random) { return UniformInt(random, 0, 1) == 1; }
};

/// Cells with random centres, each with faces to later cells that are at most `bandwidth` away, and outer cells.
TestMesh BandedMesh(Random& random, int nInnerCells, int bandwidth, int alone,
                    std::vector<Vector3> const& itsNeighbours) {
  auto const anywhere = [&] {
    return Vector3{Uniform(random, -1.0, 1.0), Uniform(random, -1.0, 1.0), Uniform(random, -1.0, 1.0)};
  };
  TestMesh mesh;
  for (int c = 1; c <= nInnerCells; ++c) mesh.AddInteriorCell(anywhere(), 1.0);
  for (int c = 0; c < 12; ++c) mesh.AddOuterCell(anywhere());
  Irregular const irregular(random);
  auto const now = [&](bool may) { return may && UniformInt(random, 0, 15) == 0; };
  for (int c = 1; c <= nInnerCells; ++c) {
    int const nFaces = UniformInt(random, 2, 4);
    for (int n = 0; n < nFaces; ++n) {
      Face face{
          c,   std::min(nInnerCells, c + UniformInt(random, 1, std::min(bandwidth, nInnerCells - c + 1))),
          {},  {},
          0.5, 0};
      if (now(irregular.swapped)) std::swap(face.cv, face.other);
      if (now(irregular.oneSided)) face.type = 1;
      if (face.cv == alone || face.other == alone) continue;
      if (face.cv != face.other) mesh.inner.push_back(face);
      if (now(irregular.twice)) mesh.inner.push_back(face);
    }
    if (c == alone) continue;
    if (now(irregular.withItself)) mesh.inner.push_back({c, c, {}, {}, 0.5, 0});
    if (now(irregular.toOuterCells))
      mesh.inner.push_back({c, nInnerCells + UniformInt(random, 1, 12), {}, {}, 0.5, 0});
  }
  for (Group const group : {kPartition, kInlet, kOutlet, kWall, kSymmetry}) {
    for (int n = UniformInt(random, 0, 1 + nInnerCells / 4); n > 0; --n) {
      int const cv = UniformInt(random, 1, nInnerCells);
      if (cv != alone) mesh.Of(group).push_back({cv, mesh.AddOuterCell(anywhere()), {}, {}, 0.5, 0});
    }
  }
  // A thin mesh is a layer of cells between walls; without, the neighbours of some cells do not span space.
  for (int c = 1; c <= nInnerCells && irregular.thin; ++c)
    for (int n = 0; n < 2 && c != alone; ++n)
      mesh.wall.push_back({c, mesh.AddOuterCell(anywhere()), {}, {}, 0.5, 0});
  if (alone > 0) {
    mesh.Centre(alone) = {};
    for (Vector3 const& neighbour : itsNeighbours)
      mesh.wall.push_back({alone, mesh.AddOuterCell(neighbour), {}, {}, 0.5, 0});
  }
  return mesh;
}

/// How often each outcome was seen.
struct Seen {
  int inOneWalk = 0, plainly = 0, solved = 0, stopped = 0;
};

/// Compares one field, then three, with the plain form.
void ExpectPlainForm(TestMesh const& mesh, std::array<Field, 3> const& phi, Seen& seen,
                     std::string const& where) {
  Exchange const exchange = ExchangeWithItself(mesh);
  Moments const moments = LeastSquaresMoments(mesh);
  std::vector<LeastSquaresResult> expected;
  for (Field const& field : phi) expected.push_back(LeastSquares(mesh, moments, field, exchange));
  std::string const lines = expected[0].zeroPivot ? kSingularLines : "";

  GradientHost host(mesh, exchange);
  ConnectedOperator op(host, 1);
  ASSERT_EQ(1, op.gradient.Initialize());
  COperatorGradientImpl const& state = *op.gradient.m_pImpl;
  std::array<GuardedArray<double>, 3> fields = {Guarded(phi[0]), Guarded(phi[1]), Guarded(phi[2])};
  std::vector<GuardedGradient> g(3, GuardedGradient(mesh.NCell(), 0.75));
  testing::internal::CaptureStdout();
  op.gradient.GradMethod(fields[0].Data(), g[0].x.Data(), g[0].y.Data(), g[0].z.Data(), 1);
  ASSERT_EQ(lines, testing::internal::GetCapturedStdout()) << where;
  ASSERT_TRUE(SameBits(expected[0].g, g[0])) << where;
  ASSERT_TRUE(SameBits(mesh.NCell(), expected[0].rightHandSide.x.data(), state.m_pBx)) << where;
  ASSERT_TRUE(SameBits(mesh.NCell(), expected[0].rightHandSide.y.data(), state.m_pBy)) << where;
  ASSERT_TRUE(SameBits(mesh.NCell(), expected[0].rightHandSide.z.data(), state.m_pBz)) << where;
  ASSERT_EQ(expected[0].zeroPivot ? 0u : 3u, host.communication.Calls().size()) << where;

  g.assign(3, GuardedGradient(mesh.NCell(), 0.75));
  testing::internal::CaptureStdout();
  op.gradient.GradMethod_LeastSquares_3(fields[0].Data(), fields[1].Data(), fields[2].Data(), g[0].x.Data(),
                                        g[0].y.Data(), g[0].z.Data(), g[1].x.Data(), g[1].y.Data(),
                                        g[1].z.Data(), g[2].x.Data(), g[2].y.Data(), g[2].z.Data());
  ASSERT_EQ(lines, testing::internal::GetCapturedStdout()) << where;
  for (std::size_t k = 0; k < 3; ++k) ASSERT_TRUE(SameBits(expected[k].g, g[k])) << where << ", field " << k;
  ASSERT_EQ(expected[0].zeroPivot ? 0u : 12u, host.communication.Calls().size()) << where;
  ASSERT_TRUE(host.communication.RulesKept() && host.InputsUntouched()) << where;

  CPartitionFace_DLL& partitionFaces = host.partitionFaces;
  bool const inOneWalk =
      state.m_pPlan->Serves(host.mesh, FaceGroups(host.mesh, PartitionFaceCells(partitionFaces)));
  ++(inOneWalk ? seen.inOneWalk : seen.plainly);
  ++(expected[0].zeroPivot ? seen.stopped : seen.solved);
}

void ExpectPlainFormOnEveryProcessor(TestMesh const& mesh, std::array<Field, 3> const& phi, Seen& seen,
                                     std::string const& where) {
  ExpectPlainForm(mesh, phi, seen, where);
  processor::TakenForPlain const plain;
  ExpectPlainForm(mesh, phi, seen, where + ", no AVX2");
}

void ExpectBandsToEqualThePlainForm(int nCells, std::vector<int> const& bandwidths, std::uint64_t nSeeds) {
  Seen seen;
  for (int const bandwidth : bandwidths) {
    for (std::uint64_t seed = 1; seed <= nSeeds; ++seed) {
      Random random(seed * 7919 + static_cast<std::uint64_t>(bandwidth));
      int const n = UniformInt(random, nCells - nCells / 10, nCells);
      // One case in three has a cell of its own, which may stop the solve.
      int const alone = seed % 3 == 0 ? UniformInt(random, 1, n) : 0;
      TestMesh const mesh = BandedMesh(random, n, bandwidth, alone, kNeighbours[seed / 3 % 4]);
      std::array<Field, 3> phi = {TameField(random, mesh), TameField(random, mesh), TameField(random, mesh)};
      if (seed % 2 == 0)
        for (Field& field : phi) field = RandomField(random, mesh);
      ASSERT_NO_FATAL_FAILURE(ExpectPlainFormOnEveryProcessor(
          mesh, phi, seen, "bandwidth " + std::to_string(bandwidth) + ", seed " + std::to_string(seed)));
    }
  }
  EXPECT_LT(0, seen.plainly);
  EXPECT_EQ(processor::HasAvx2(), seen.inOneWalk > 0);
  EXPECT_LT(0, seen.solved);
  EXPECT_LT(0, seen.stopped);
}

TEST(BandedMeshes, SmallOnesEqualThePlainForm) {
  ExpectBandsToEqualThePlainForm(40, {1, 2, 3, 5, 8, 20, 40}, 60);
}

TEST(BandedMeshes, ThoseOfSeveralRangesOfFacesEqualThePlainForm) {
  ExpectBandsToEqualThePlainForm(3000, {1, 2, 4, 7, 30, 200, 1000, 3000}, 9);
}

// More cells than fit the ring, and so many that memory is asked for ahead.
TEST(BandedMeshes, LargeOnesEqualThePlainForm) {
  ExpectBandsToEqualThePlainForm(40000, {2, 20000, 40000}, 3);
}

TEST(BandedMeshes, FacesInAnyOrderEqualThePlainForm) {
  Seen seen;
  for (std::uint64_t seed = 1; seed <= 20; ++seed) {
    Random random(seed);
    TestMesh mesh = BandedMesh(random, 2000, 25, 0, {});
    // Faces change places within a distance, from their neighbours to all over the mesh.
    int const nFaces = static_cast<int>(mesh.inner.size());
    int const distance = seed % 4 == 0 ? nFaces : 1 << (seed % 10);
    for (int f = 0; f < nFaces; ++f)
      std::swap(
          mesh.inner[static_cast<std::size_t>(f)],
          mesh.inner[static_cast<std::size_t>(std::min(nFaces - 1, f + UniformInt(random, 0, distance)))]);
    std::array<Field, 3> const phi = {RandomField(random, mesh), TameField(random, mesh),
                                      RandomField(random, mesh)};
    ASSERT_NO_FATAL_FAILURE(ExpectPlainFormOnEveryProcessor(mesh, phi, seen, "seed " + std::to_string(seed)));
  }
}

TEST(BandedMeshes, AnyTopologyEqualsThePlainForm) {
  Seen seen;
  for (std::uint64_t seed = 1; seed <= 150; ++seed) {
    Random random(seed);
    TestMesh const mesh = RandomMesh(random);
    if (mesh.nInnerCells == 0) continue;  // nothing to exchange with
    std::array<Field, 3> const phi = {RandomField(random, mesh), TameField(random, mesh),
                                      RandomField(random, mesh)};
    ASSERT_NO_FATAL_FAILURE(ExpectPlainFormOnEveryProcessor(mesh, phi, seen, "seed " + std::to_string(seed)));
  }
}

}  // namespace
}  // namespace zyn_test::banded_meshes_test
