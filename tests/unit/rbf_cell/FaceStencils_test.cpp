#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/mesh/LatticeMesh.h"
#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_cell/TableComparison.h"

// The face tables: how many cells are counted around a face, and which rows each mode allocates.

namespace zyn_test::face_stencils_test {
namespace {

constexpr int kKinds[] = {1, 2, 3, 4, 5};

/// One partition face with the given nodes, and the given cells around nodes 1, 2, ...
TestMesh OneFace(std::vector<int> const& nodes, std::vector<std::vector<int>> const& cellsAround) {
  TestMesh mesh = OneStencil({}, {{1, 0, 0}});
  for (int c = 3; c <= 10; ++c) mesh.AddOuterCell({0, 0, 0});
  mesh.partition[0].nodes = nodes;
  mesh.nodeCells.insert(mesh.nodeCells.end(), cellsAround.begin(), cellsAround.end());
  return mesh;
}

int Count(TestMesh const& mesh, int face = 1, int kind = 5) {
  CellBed bed(mesh);
  return bed.object->CountingfaceToCellconnectionNumber(face, kind);
}

// Nodes 3 and 1. Node 3 has 2 cells, so 2 are taken from row 1 (the running number of node 3): cells 1, 2.
// Node 1 has 3 cells, so 3 are taken from row 2: cells 2, 1, 5. Distinct: 1, 2, 5.
std::vector<int> const kNodes = {3, 1};
std::vector<std::vector<int>> const kAround = {{1, 2, 3}, {2, 1, 5, 6}, {7, 8}};

TEST(FaceStencilCount, TakesTheCellsOfTheRunningNumberAndTheLengthOfTheNode) {
  EXPECT_EQ(3, Count(OneFace(kNodes, kAround)));
}

TEST(FaceStencilCount, UsesThePartitionFacesForEveryKind) {
  for (int const kind : kKinds) EXPECT_EQ(3, Count(OneFace(kNodes, kAround), 1, kind)) << kind;
}

TEST(FaceStencilCount, OfAnUnknownKindIsZero) {
  for (int const kind : {-1, 0, 6, 101}) EXPECT_EQ(0, Count(OneFace(kNodes, kAround), 1, kind)) << kind;
}

TEST(FaceStencilCount, OfAFaceWithoutNodesIsZero) { EXPECT_EQ(0, Count(OneFace({}, kAround))); }

TEST(FaceStencilCount, CountsEachCellOnce) { EXPECT_EQ(2, Count(OneFace({1, 2}, {{4, 5}, {5, 4}}))); }

TEST(FaceStencilCount, TakesNoCellsWhereTheNodeHasNone) { EXPECT_EQ(0, Count(OneFace({2}, {{4, 5}, {}}))); }

TEST(FaceStencilCount, StopsAtTheEndOfAShorterRow) {
  // Node 2 has 5 cells, row 1 only 2.
  EXPECT_EQ(2, Count(OneFace({2}, {{4, 5}, {1, 2, 3, 4, 5}})));
}

// The table of nodes ends with the last partition face; a sanitizer sees a step beyond it.
TEST(FaceStencilCount, OfAFaceBeyondThePartitionFacesIsZero) {
  TestMesh const mesh = OneFace(kNodes, kAround);
  ASSERT_EQ(1U, mesh.partition.size());
  for (int const kind : kKinds)
    for (int const face : {2, 3, 1000, 0, -1})
      EXPECT_EQ(0, Count(mesh, face, kind)) << face << " of " << kind;
}

TEST(FaceStencilCount, AsksTheFacesForTheirNumberWhateverRowsTheTableHas) {
  RaggedTable rows({{}, {}, kNodes});
  CellBed bed(OneFace({}, kAround));
  bed.host.mesh.ijParLnods = rows.Data();
  ASSERT_EQ(1, bed.host.NFace(kPartition));
  for (int const kind : kKinds) EXPECT_EQ(0, bed.object->CountingfaceToCellconnectionNumber(2, kind)) << kind;
}

TEST(FaceStencilCount, NeedsNoPartitionFaces) {
  CellBed bed(OneFace(kNodes, kAround));
  CPartitionFace_DLL* const faces = bed.object->m_pPartFace;
  bed.object->m_pPartFace = nullptr;
  EXPECT_EQ(3, bed.object->CountingfaceToCellconnectionNumber(1, 1));
  bed.object->m_pPartFace = faces;
}

TEST(FaceStencilCount, WithoutATableIsZero) {
  TestMesh mesh = OneFace(kNodes, kAround);
  mesh.partition.clear();
  for (int const kind : kKinds) EXPECT_EQ(0, Count(mesh, 1, kind)) << kind;
}

TEST(FaceStencilCount, CanBeRepeated) {
  CellBed bed(OneFace(kNodes, kAround));
  for (int i = 0; i < 3; ++i) EXPECT_EQ(3, bed.object->CountingfaceToCellconnectionNumber(1, 5));
}

/// The same count from the tables of a mesh by the plainest means.
int PlainCount(TestMesh const& mesh, int face) {
  if (face > static_cast<int>(mesh.partition.size())) return 0;
  std::vector<bool> seen(static_cast<std::size_t>(mesh.NCell() + 1), false);
  int count = 0;
  std::vector<int> const& nodes = mesh.partition[static_cast<std::size_t>(face - 1)].nodes;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    std::vector<int> const& row = mesh.nodeCells[i + 1];
    std::size_t const m = mesh.nodeCells[static_cast<std::size_t>(nodes[i])].size();
    for (std::size_t j = 0; j < m && j < row.size(); ++j) {
      auto const c = static_cast<std::size_t>(row[j]);
      if (!seen[c]) ++count;
      seen[c] = true;
    }
  }
  return count;
}

TEST(FaceStencilCount, EqualsThePlainCountOnMeshesOfAllCells) {
  for (Cells const cells : kAllCells) {
    LatticeOptions options;
    options.cells = cells;
    TestMesh const mesh = LatticeMesh(options);
    CellBed bed(mesh);
    ASSERT_FALSE(mesh.partition.empty());
    for (int f = 1; f <= static_cast<int>(mesh.partition.size()); ++f)
      for (int const kind : kKinds)
        EXPECT_EQ(PlainCount(mesh, f), bed.object->CountingfaceToCellconnectionNumber(f, kind))
            << Name(cells);
  }
}

// ------------------------------------------------------------------------------------------------- the tables

/// The tables of one kind of face.
struct Tables {
  std::string name;
  int count;
  int** stencils;
  RBFnode** weights;
};

std::vector<Tables> AllTables(TestMesh const& mesh, CZynRBFInternalObject const& o) {
  auto const size = [](std::vector<Face> const& faces) { return static_cast<int>(faces.size()); };
  return {{"inner", size(mesh.inner), o.m_ppRBFInnerFaceConn, o.m_ppRBFInnerFaceCoef},
          {"wall", size(mesh.wall), o.m_ppRBFWallFaceConn, o.m_ppRBFWallFaceCoef},
          {"inlet", size(mesh.inlet), o.m_ppRBFInletFaceConn, o.m_ppRBFInletFaceCoef},
          {"outlet", size(mesh.outlet), o.m_ppRBFOutletFaceConn, o.m_ppRBFOutletFaceCoef},
          {"partition", size(mesh.partition), o.m_ppRBFPartInterFaceConn, o.m_ppRBFPartInterFaceCoef}};
}

TestMesh SomeMesh() {
  LatticeOptions options;
  options.cells = Cells::Prisms;
  return LatticeMesh(options);
}

AssertionResult IsZero(RBFnode const& node) { return SameRecord("record", Triple{}, 0, node); }

/// Rows of a stencil table with `length(f)` in element 0 and zeros behind it, of a weight table with two or
/// `length(f) + 2` zero records; then fills all elements and looks whether each kept its own value.
template <typename Length>
void ExpectRows(Tables const& t, Length length, int weightElements) {
  auto const nWeight = [&](int f) { return weightElements > 0 ? weightElements : length(f) + 2; };
  EXPECT_EQ(nullptr, t.stencils[0]);
  EXPECT_EQ(nullptr, t.weights[0]);
  for (int f = 1; f <= t.count; ++f) {
    ASSERT_EQ(length(f), t.stencils[f][0]) << t.name << f;
    for (int k = 1; k <= length(f); ++k) EXPECT_EQ(0, t.stencils[f][k]) << t.name << f;
    for (int k = 0; k < nWeight(f); ++k) EXPECT_TRUE(IsZero(t.weights[f][k])) << t.name << f;
  }
  for (int f = 1; f <= t.count; ++f) {
    for (int k = 0; k <= length(f); ++k) t.stencils[f][k] = 1000 * f + k;
    for (int k = 0; k < nWeight(f); ++k) t.weights[f][k].id = 1000 * f + k;
  }
  for (int f = 1; f <= t.count; ++f) {
    for (int k = 0; k <= length(f); ++k) EXPECT_EQ(1000 * f + k, t.stencils[f][k]) << t.name << f;
    for (int k = 0; k < nWeight(f); ++k) EXPECT_EQ(1000 * f + k, t.weights[f][k].id) << t.name << f;
  }
}

template <typename Elements>
void ExpectFluxRows(double* const* flux, int count, Elements elements) {
  EXPECT_EQ(nullptr, flux[0]);
  for (int f = 1; f <= count; ++f)
    for (int k = 0; k < elements(f); ++k) EXPECT_TRUE(SameValue("flux", 0.0, flux[f][k]));
  for (int f = 1; f <= count; ++f)
    for (int k = 0; k < elements(f); ++k) flux[f][k] = 1000 * f + k;
  for (int f = 1; f <= count; ++f)
    for (int k = 0; k < elements(f); ++k) EXPECT_EQ(1000 * f + k, flux[f][k]);
}

TEST(FaceTables, Mode0HasTwoNodesAFace) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_EQ(0, bed.object->faceToCellconnection_memoryallocate(0));
  for (Tables const& t : AllTables(mesh, *bed.object)) {
    ASSERT_GT(t.count, 0);
    ExpectRows(
        t, [](int) { return 2; }, 4);
  }
  ExpectFluxRows(bed.object->m_ppRBFInnerFaceFlux, static_cast<int>(mesh.inner.size()),
                 [](int) { return 4; });
}

TEST(FaceTables, Mode1HasTheCountedCellsOfEachFace) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_EQ(0, bed.object->faceToCellconnection_memoryallocate(1));
  auto const count = [&mesh](int f) { return PlainCount(mesh, f); };
  ASSERT_GT(count(1), 2);
  for (Tables const& t : AllTables(mesh, *bed.object)) ExpectRows(t, count, 0);
  ExpectFluxRows(bed.object->m_ppRBFInnerFaceFlux, static_cast<int>(mesh.inner.size()),
                 [count](int f) { return count(f) + 2; });
}

TEST(FaceTables, Mode1OfAFaceWithoutNodesHasOneStencilElementAndTwoWeights) {
  TestMesh const mesh = OneFace({}, kAround);
  CellBed bed(mesh);
  bed.SetUp();
  EXPECT_EQ(0, bed.object->faceToCellconnection_memoryallocate(1));
  EXPECT_EQ(0, bed.object->m_ppRBFPartInterFaceConn[1][0]);
  EXPECT_TRUE(IsZero(bed.object->m_ppRBFPartInterFaceCoef[1][0]));
  EXPECT_TRUE(IsZero(bed.object->m_ppRBFPartInterFaceCoef[1][1]));
}

TEST(FaceTables, Mode1BeyondThePartitionFacesCountsNothing) {
  TestMesh const mesh = SomeMesh();
  ASSERT_GT(mesh.inner.size(), mesh.partition.size());
  CellBed bed(mesh);
  bed.SetUp();
  bed.object->faceToCellconnection_memoryallocate(1);
  for (std::size_t f = mesh.partition.size() + 1; f <= mesh.inner.size(); ++f)
    EXPECT_EQ(0, bed.object->m_ppRBFInnerFaceConn[f][0]);
}

TEST(FaceTables, OtherModesHaveHeadsOfNullRows) {
  TestMesh const mesh = SomeMesh();
  for (int const mode : {-1, 2, 100}) {
    CellBed bed(mesh);
    bed.SetUp();
    EXPECT_EQ(0, bed.object->faceToCellconnection_memoryallocate(mode));
    for (Tables const& t : AllTables(mesh, *bed.object)) {
      ASSERT_NE(nullptr, t.stencils) << t.name;
      ASSERT_NE(nullptr, t.weights) << t.name;
      for (int f = 0; f <= t.count; ++f) {
        EXPECT_EQ(nullptr, t.stencils[f]) << t.name;
        EXPECT_EQ(nullptr, t.weights[f]) << t.name;
      }
    }
    ASSERT_NE(nullptr, bed.object->m_ppRBFInnerFaceFlux);
    for (std::size_t f = 0; f <= mesh.inner.size(); ++f)
      EXPECT_EQ(nullptr, bed.object->m_ppRBFInnerFaceFlux[f]);
  }
}

TEST(FaceTables, WithoutPartitionFacesHoldElement0Alone) {
  TestMesh mesh = SomeMesh();
  mesh.partition.clear();
  for (int const mode : {0, 1, 2}) {
    CellBed bed(mesh);
    bed.SetUp();
    EXPECT_EQ(0, bed.object->faceToCellconnection_memoryallocate(mode));
    ASSERT_NE(nullptr, bed.object->m_ppRBFPartInterFaceConn);
    ASSERT_NE(nullptr, bed.object->m_ppRBFPartInterFaceCoef);
    EXPECT_EQ(nullptr, bed.object->m_ppRBFPartInterFaceConn[0]);
    EXPECT_EQ(nullptr, bed.object->m_ppRBFPartInterFaceCoef[0]);
  }
}

TEST(FaceTables, SecondCallAllocatesAnew) {
  CellBed bed(SomeMesh());
  bed.SetUp();
  bed.object->faceToCellconnection_memoryallocate(0);
  // The former face tables are lost with the second call. A copy without cell tables keeps them, so that this
  // test can free them with host objects of their own.
  auto* const former = new CZynRBFInternalObject(*bed.object);
  former->m_ppRBFCellConn = nullptr;
  former->m_ppRBFCellCoef = nullptr;
  former->m_pSupportLength = nullptr;
  former->m_piNodeKind = former->m_piNodeKindIndex = nullptr;
  former->m_pADTree = nullptr;
  former->m_pRBFnode = former->m_pStencilExtent = nullptr;
  bed.object->faceToCellconnection_memoryallocate(1);
  EXPECT_NE(former->m_ppRBFInnerFaceConn, bed.object->m_ppRBFInnerFaceConn);
  EXPECT_NE(former->m_ppRBFInnerFaceFlux, bed.object->m_ppRBFInnerFaceFlux);
  EXPECT_NE(former->m_ppRBFPartInterFaceCoef, bed.object->m_ppRBFPartInterFaceCoef);
  EXPECT_EQ(2, former->m_ppRBFInnerFaceConn[1][0]);
  CellBed::Connect(*former, bed.host);
  delete former;
}

TEST(FaceTables, SettingTheStencilsDoesNothing) {
  TestMesh const mesh = SomeMesh();
  CellBed bed(mesh);
  bed.SetUp();
  bed.object->faceToCellconnection_memoryallocate(0);
  for (int const argument : {-1, 0, 1, 2, 5}) EXPECT_EQ(0, bed.object->SetfaceToCellconnection(argument));
  for (Tables const& t : AllTables(mesh, *bed.object))
    ExpectRows(
        t, [](int) { return 2; }, 4);
}

}  // namespace
}  // namespace zyn_test::face_stencils_test
