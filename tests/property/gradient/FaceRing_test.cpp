#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
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

// The Green-Gauss gradients of an operator that Initialize has prepared keep records of the cells around the faces that
// they are at. How many depends on the numbering: from two cells to all of them.

namespace zyn_test {
namespace {

constexpr int kCells = 3000;

/// Cells with random faces between numbers that are at most `bandwidth` apart, sorted by the lower one, and some faces of
/// all other groups.
TestMesh BandedMesh(Random& random, int bandwidth) {
  TestMesh mesh;
  while (mesh.nInnerCells < kCells / 2) mesh = RandomMesh(random, {kCells, 200});
  int const nCells = mesh.nInnerCells;
  std::vector<Face> faces;
  for (int f = 0; f < 4 * nCells; ++f) {
    Face face;
    face.cv = UniformInt(random, 1, nCells);
    face.other = std::min(nCells, face.cv + UniformInt(random, 0, bandwidth));
    if (UniformInt(random, 0, 1) == 1) std::swap(face.cv, face.other);
    face.area = {Uniform(random, -1, 1), Uniform(random, -1, 1), Uniform(random, -1, 1)};
    face.centre = {Uniform(random, -1, 1), Uniform(random, -1, 1), Uniform(random, -1, 1)};
    face.weight = Uniform(random, -0.2, 1.2);
    face.type = UniformInt(random, 0, 400) == 0 ? 1 : 0;
    faces.push_back(face);
  }
  std::sort(faces.begin(), faces.end(),
            [](Face const& a, Face const& b) { return std::min(a.cv, a.other) < std::min(b.cv, b.other); });
  mesh.inner = faces;
  return mesh;
}

/// An operator that takes no mesh for small, with its outputs.
struct Prepared {
  explicit Prepared(TestMesh const& mesh)
      : host(mesh),
        op(host, 0),
        g{GuardedGradient(mesh.NCell()), GuardedGradient(mesh.NCell()), GuardedGradient(mesh.NCell())} {
    ring().TakeNoMeshForSmall();
    op.gradient.Initialize();
  }
  FaceRing& ring() { return *op.gradient.m_pImpl->m_pFaceRing; }
  bool Fits(int recordDoubles) {
    return ring().Fits(FacesOf(FaceKind::Inner, host.mesh), host.mesh.NInnerCells, recordDoubles);
  }

  GradientHost host;
  ConnectedOperator op;
  std::array<GuardedGradient, 3> g;
};

void ExpectPlainForms(TestMesh const& mesh, Prepared& s, std::array<Field, 3> const& phi) {
  std::array<GuardedArray<double>, 3> arrays{Guarded(phi[0]), Guarded(phi[1]), Guarded(phi[2])};
  auto const gradient = [&](int n) {
    s.op.gradient.GradMethod(arrays[0].Data(), s.g[0].x.Data(), s.g[0].y.Data(), s.g[0].z.Data(), n);
  };
  gradient(1);
  ASSERT_TRUE(SameBits(PlainGreenGauss(mesh, phi[0], NoExchange()), s.g[0]));
  gradient(3);
  Gradient expected(mesh);
  Gradient const previous = IteratedGreenGauss(mesh, phi[0], 3, NoExchange(), expected);
  ASSERT_TRUE(SameBits(expected, s.g[0]));
  ASSERT_TRUE(SameBits(previous, s.host.previous));
  s.op.gradient.GradMethod_3(arrays[0].Data(), arrays[1].Data(), arrays[2].Data(), s.g[0].x.Data(),
                             s.g[0].y.Data(), s.g[0].z.Data(), s.g[1].x.Data(), s.g[1].y.Data(),
                             s.g[1].z.Data(), s.g[2].x.Data(), s.g[2].y.Data(), s.g[2].z.Data());
  std::array<Gradient, 3> const three = ThreeComponentGreenGauss(mesh, phi, NoExchange());
  for (std::size_t k = 0; k < 3; ++k) ASSERT_TRUE(SameBits(three[k], s.g[k])) << k;
  ASSERT_TRUE(s.host.InputsUntouched() && s.host.previous.GuardsIntact());
}

std::array<Field, 3> RandomFields(Random& random, TestMesh const& mesh) {
  return {RandomField(random, mesh), RandomField(random, mesh), RandomField(random, mesh)};
}

TEST(FaceRing, EveryBandwidthGivesTheBitsOfThePlainForms) {
  for (int const bandwidth :
       {1, 2, 3, 4, 5, 7, 8, 15, 16, 31, 63, 64, 65, 100, 127, 255, 256, 500, 1000, 2000, kCells}) {
    SCOPED_TRACE(bandwidth);
    Random random(static_cast<std::uint64_t>(bandwidth));
    TestMesh const mesh = BandedMesh(random, bandwidth);
    Prepared s(mesh);
    ASSERT_EQ(processor::HasAvx2(), s.Fits(4) && s.Fits(12) && s.Fits(16));
    ExpectPlainForms(mesh, s, RandomFields(random, mesh));
  }
}

TEST(FaceRing, ProcessorsWithoutAvx2GetTheSameBits) {
  Random random(1);
  TestMesh const mesh = BandedMesh(random, 200);
  std::array<Field, 3> const phi = RandomFields(random, mesh);
  Prepared s(mesh);
  processor::TakenForPlain const plain;
  ExpectPlainForms(mesh, s, phi);
  Prepared without(mesh);
  EXPECT_FALSE(without.Fits(4));
  ExpectPlainForms(mesh, without, phi);
}

TEST(FaceRing, KeepsItsWindowAsSmallAsTheNumberingAllows) {
  if (!processor::HasAvx2()) GTEST_SKIP();
  Random random(2);
  std::vector<int> capacities;
  for (int const bandwidth : {1, 200, 1000}) {
    Prepared s(BandedMesh(random, bandwidth));
    capacities.push_back(s.ring().capacity());
  }
  // A range of 256 faces goes over about 64 cells.
  EXPECT_EQ((std::vector<int>{128, 512, 2048}), capacities);
}

TEST(FaceRing, IsNotUsedWhereAWindowWouldNotStayInCache) {
  if (!processor::HasAvx2()) GTEST_SKIP();
  // One face across the whole mesh, at the end of the walk: nothing is complete before it.
  TestMesh mesh;
  for (int c = 0; c < 70000; ++c) mesh.AddInteriorCell({0.1 * c, 0.0, 0.0}, 1.0);
  for (int c = 1; c < 70000; ++c) mesh.inner.push_back({c, c + 1, {1.0, 2.0, 3.0}, {}, 0.5, 0});
  Random random(3);
  std::array<Field, 3> const phi = RandomFields(random, mesh);
  Prepared narrow(mesh);
  EXPECT_TRUE(narrow.Fits(16));
  ExpectPlainForms(mesh, narrow, phi);
  mesh.inner.push_back({1, 70000, {1.0, 2.0, 3.0}, {}, 0.5, 0});
  Prepared wide(mesh);
  EXPECT_FALSE(wide.Fits(4));
  ExpectPlainForms(mesh, wide, phi);
}

// A solver may renumber in place and go on: only the types 1 and 2 need another Initialize.
TEST(FaceRing, ChangedNumbersGiveTheBitsOfThePlainForms) {
  Random random(4);
  TestMesh mesh = BandedMesh(random, 50);
  Prepared s(mesh);
  std::array<Field, 3> const phi = RandomFields(random, mesh);
  ExpectPlainForms(mesh, s, phi);
  for (int const changes : {1, 1, 100, static_cast<int>(mesh.inner.size())}) {
    s.op.gradient.Initialize();
    EXPECT_EQ(processor::HasAvx2(), s.Fits(16));
    TestMesh changed = mesh;
    for (int i = 0; i < changes; ++i) {
      std::size_t const f =
          static_cast<std::size_t>(UniformInt(random, 0, static_cast<int>(mesh.inner.size()) - 1));
      changed.inner[f].cv = UniformInt(random, 1, mesh.nInnerCells);
      changed.inner[f].other = UniformInt(random, 1, mesh.nInnerCells);
    }
    std::vector<int> const cv(s.host.mesh.ijCV, s.host.mesh.ijCV + mesh.inner.size() + 1);
    std::vector<int> const other(s.host.mesh.ij, s.host.mesh.ij + mesh.inner.size() + 1);
    for (std::size_t f = 0; f < mesh.inner.size(); ++f) {
      s.host.mesh.ijCV[f + 1] = changed.inner[f].cv;
      s.host.mesh.ij[f + 1] = changed.inner[f].other;
    }
    std::array<GuardedArray<double>, 3> arrays{Guarded(phi[0]), Guarded(phi[1]), Guarded(phi[2])};
    s.op.gradient.GradMethod(arrays[0].Data(), s.g[0].x.Data(), s.g[0].y.Data(), s.g[0].z.Data(), 1);
    EXPECT_TRUE(SameBits(PlainGreenGauss(changed, phi[0], NoExchange()), s.g[0]));
    std::copy(cv.begin() + 1, cv.end(), s.host.mesh.ijCV + 1);
    std::copy(other.begin() + 1, other.end(), s.host.mesh.ij + 1);
    ExpectPlainForms(mesh, s, phi);
  }
}

TEST(FaceRing, OtherPartitionFacesNeedNoInitialize) {
  // A partition face may join two interior cells, as those of a periodic mesh on one rank may.
  Random random(5);
  TestMesh mesh = BandedMesh(random, 50);
  for (int i = 0; i < 100; ++i) {
    Face face = mesh.inner[static_cast<std::size_t>(i * 7)];
    face.cv = UniformInt(random, 1, mesh.nInnerCells);
    face.other = UniformInt(random, 1, mesh.nInnerCells);
    mesh.partition.push_back(face);
  }
  Prepared s(mesh);
  ExpectPlainForms(mesh, s, RandomFields(random, mesh));
}

TEST(FaceRing, MeshesWithoutCellsOrFacesAreNoneForIt) {
  TestMesh mesh;
  Prepared s(mesh);
  EXPECT_FALSE(s.Fits(4));
  COperatorGradient alone;
  alone.m_pImpl->m_pFaceRing->Prepare({}, 0);
  EXPECT_FALSE(alone.m_pImpl->m_pFaceRing->Fits({}, 0, 4));
}

TEST(FaceRing, ReleaseGivesTheMemoryBackAndInitializeBringsItAgain) {
  if (!processor::HasAvx2()) GTEST_SKIP();
  Random random(6);
  TestMesh const mesh = BandedMesh(random, 20);
  Prepared s(mesh);
  EXPECT_TRUE(s.Fits(16));
  s.op.gradient.Release();
  EXPECT_FALSE(s.Fits(16));
  ExpectPlainForms(mesh, s, RandomFields(random, mesh));
  s.op.gradient.Initialize();
  EXPECT_TRUE(s.Fits(16));
  ExpectPlainForms(mesh, s, RandomFields(random, mesh));
}

}  // namespace
}  // namespace zyn_test
