// Faults planted in sound boxes, one at a time, and found.

#include "cli/check/CheckCells.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "cli/check/CheckFindings.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "tests/unit/cli/TestRanks.h"
#include "tests/unit/cli/check/CountedFindings.h"

namespace zyngrad {
namespace {

using reference_host::BoundaryGroup;
using reference_host::LoadedMesh;

LoadedMesh Load(std::string const& box, std::map<std::string, BoundaryGroup> const& groups = {}) {
  return reference_host::LoadMesh(TestRanks().communicator(), box, groups, {});
}

GradientMethod const& Method(std::string const& name) {
  auto const& all = GradientMethods();
  return *std::find_if(all.begin(), all.end(), [&](GradientMethod const& m) { return name == m.name; });
}

std::uint32_t NotFinite(std::string const& name) {
  return GradientNotFinite(static_cast<std::size_t>(&Method(name) - GradientMethods().data()));
}

std::vector<CheckedSystem> Check(LoadedMesh& mesh, std::vector<std::string> const& methods,
                                 RadialBasisSettings const& settings = {}) {
  CellCheckCase theCase;
  for (std::string const& name : methods) theCase.methods.push_back(&Method(name));
  theCase.radialBasis = settings;
  theCase.logFile = kNowhere;
  return CheckCells(TestRanks(), mesh, theCase);
}

std::vector<std::string> const kAll = {"plain", "iterated", "weighted", "lsq", "vector", "rbf"};

TEST(CheckCells, FindsNothingWrongInASoundBox) {
  LoadedMesh mesh = Load("box:4,4,4:tet");
  for (CheckedSystem const& cell : Check(mesh, kAll)) {
    EXPECT_EQ("", InWords(cell.findings)) << cell.number;
    EXPECT_EQ(5, cell.members);
    EXPECT_GT(cell.condition, 1.0);
    EXPECT_LT(cell.rowSum, 1e-12);
  }
}

TEST(CheckCells, MarksBoundaryCells) {
  LoadedMesh mesh = Load("box:4,3,3");
  EXPECT_EQ(Count(MeasureCells(*mesh.partition), kIsAtBoundary), 36 - 2);
}

TEST(CheckCells, FindsCellsBesideSymmetryFacesAndTheirMembersAtTheOrigin) {
  LoadedMesh mesh = Load("box:3,3,3", {{"wall_zmin", BoundaryGroup::Symmetry}});
  auto const cells = Check(mesh, {"rbf"});
  EXPECT_EQ(9, Count(cells, kIsBesideSymmetry));
  EXPECT_EQ(9, Count(cells, kHasMemberAtOrigin));
  EXPECT_EQ(0, Count(cells, kHasCoincidentMembers));
}

TEST(CheckCells, FindsTwoSymmetryFacesToBeOneMember) {
  LoadedMesh mesh =
      Load("box:3,3,3", {{"wall_zmin", BoundaryGroup::Symmetry}, {"wall_ymin", BoundaryGroup::Symmetry}});
  auto const cells = Check(mesh, {"rbf"});
  EXPECT_EQ(3, Count(cells, kHasCoincidentMembers));
  EXPECT_EQ(3, Count(cells, kIsSingular));
}

TEST(CheckCells, FindsTwoCentresInOnePlace) {
  LoadedMesh mesh = Load("box:5,1,1");
  CZYN3DFiniteVolumeMesh& m = *mesh.partition->mesh();
  int const a = m.ijCV[2], b = m.ij[2];
  m.xc[b] = m.xc[a];
  auto const cells = Check(mesh, {"rbf"});
  EXPECT_EQ(2, Count(cells, kHasCoincidentMembers));
  EXPECT_EQ(2, Count(cells, kIsSingular));
  for (int const c : {a, b}) {
    EXPECT_TRUE(std::isinf(cells[static_cast<std::size_t>(c) - 1].skewness));
    EXPECT_LT(cells[static_cast<std::size_t>(c) - 1].nonOrthogonality, 1.0);
  }
}

TEST(CheckCells, FindsANeighbourListedTwice) {
  LoadedMesh mesh = Load("box:3,1,1");
  CZYN3DFiniteVolumeMesh& m = *mesh.partition->mesh();
  int* const row = m.CellCell[m.ijCV[1]];
  int const neighbour = m.ij[1];
  int* const ghost = std::find_if(row + 1, row + 1 + row[0], [&](int c) { return c > m.NInnerCells; });
  *ghost = neighbour;
  auto const cells = Check(mesh, {"rbf"});
  EXPECT_EQ(1, Count(cells, kHasRepeatedMember));
  EXPECT_EQ(0, Count(cells, kHasCoincidentMembers));
}

/// A box of one cell whose six side cells all have the cell's own coordinate on one axis.
LoadedMesh FlatCell(double* CZYN3DFiniteVolumeMesh::*centres) {
  LoadedMesh mesh = Load("box:1,1,1");
  CZYN3DFiniteVolumeMesh& m = *mesh.partition->mesh();
  double* const x = m.*centres;
  for (int c = 2; c <= m.NCell; ++c) x[c] = x[1];
  return mesh;
}

TEST(CheckCells, FindsTheZeroPivotThatStopsLeastSquares) {
  for (auto const axis : {&CZYN3DFiniteVolumeMesh::xc, &CZYN3DFiniteVolumeMesh::yc}) {
    LoadedMesh mesh = FlatCell(axis);
    auto const cells = Check(mesh, {"lsq"});
    EXPECT_EQ(kHasZeroPivot, cells.front().findings & ~kIsAtBoundary);
  }
}

TEST(CheckCells, FindsTheZeroLastPivotThatLeastSquaresDividesBy) {
  LoadedMesh mesh = FlatCell(&CZYN3DFiniteVolumeMesh::zc);
  auto const cells = Check(mesh, {"lsq"});
  EXPECT_EQ(cells.front().findings & ~kIsAtBoundary, kHasZeroLastPivot | NotFinite("lsq"));
}

TEST(CheckCells, FindsAPivotOfRoundOff) {
  LoadedMesh mesh = FlatCell(&CZYN3DFiniteVolumeMesh::zc);
  CZYN3DFiniteVolumeMesh& m = *mesh.partition->mesh();
  // All neighbours in the plane z = x + y / 3 through the cell, whose normal has no axis' direction.
  for (int c = 2; c <= m.NCell; ++c) {
    m.yc[c] += 0.1 * c;
    m.zc[c] = m.zc[1] + (m.xc[c] - m.xc[1]) + (m.yc[c] - m.yc[1]) / 3.0;
  }
  EXPECT_EQ(1, Count(Check(mesh, {"lsq"}), kHasTinyPivot | kHasZeroLastPivot));
}

TEST(CheckCells, FindsAFlatStencilAndThatScalingByItsExtentBreaks) {
  LoadedMesh mesh = Load("box:1,1,1");
  CZYN3DFiniteVolumeMesh& m = *mesh.partition->mesh();
  // The radial-basis operator puts side cells at face centres.
  for (int f = 1; f <= m.NWall; ++f) m.ijWallzc[f] = m.zc[1];
  auto const plain = Check(mesh, {"rbf"});
  EXPECT_NE(0U, plain.front().findings & kHasFlatAxis);
  EXPECT_EQ(0U, plain.front().findings & kHasRowNotFinite);
  auto const normalised = Check(mesh, {"rbf"}, {500.0, true});
  EXPECT_NE(0U, normalised.front().findings & kHasRowNotFinite);
}

TEST(CheckCells, FindsRowsThatAreNotFinite) {
  LoadedMesh mesh = Load("box:5,1,1");
  CZYN3DFiniteVolumeMesh& m = *mesh.partition->mesh();
  m.xc[3] = std::numeric_limits<double>::quiet_NaN();
  auto const cells = Check(mesh, {"rbf"});
  int const nNeighbours = static_cast<int>(std::count_if(
      m.CellCell[3] + 1, m.CellCell[3] + 1 + m.CellCell[3][0], [&](int c) { return c <= m.NInnerCells; }));
  EXPECT_EQ(Count(cells, kHasRowNotFinite), 1 + nNeighbours);
  EXPECT_EQ(Count(cells, kHasSystemNotFinite), 1 + nNeighbours);
}

TEST(CheckCells, FindsASpanThatIsTooWideForTheNumbers) {
  LoadedMesh mesh = Load("box:2,2,2");
  EXPECT_EQ(8, Count(Check(mesh, {"rbf"}, {1e60, false}), kHasRowNotFinite));
}

// Green-Gauss divides by the volume plus 1e-30, but for the weighted form, which divides by it alone.
TEST(CheckCells, FindsAVolumeOfZeroAndTheGradientThatItSpoils) {
  LoadedMesh mesh = Load("box:3,3,3");
  mesh.partition->mesh()->Volume[5] = 0.0;
  auto const cells = Check(mesh, kAll);
  EXPECT_EQ(1, Count(cells, kHasNoVolume));
  EXPECT_NE(0U, cells[4].findings & NotFinite("weighted"));
  EXPECT_EQ(1, Count(cells, NotFinite("weighted")));
  EXPECT_EQ(0, Count(cells, NotFinite("plain") | NotFinite("lsq") | kHasRowNotFinite));
}

TEST(CheckCells, FindsGradientsThatAreNotFinite) {
  LoadedMesh mesh = Load("box:3,3,3");
  mesh.partition->mesh()->ijSx[1] = std::numeric_limits<double>::infinity();
  auto const cells = Check(mesh, kAll);
  for (char const* name : {"plain", "iterated", "weighted", "vector"})
    EXPECT_GE(Count(cells, NotFinite(name)), 2) << name;
  EXPECT_EQ(0, Count(cells, NotFinite("lsq")));
}

TEST(CheckCells, FindsATinyVolume) {
  LoadedMesh mesh = Load("box:3,3,3");
  mesh.partition->mesh()->Volume[5] = 1e-9;
  EXPECT_EQ(1, Count(MeasureCells(*mesh.partition), kIsFlatCell));
}

TEST(CheckCells, FindsBothCellsOfASkewFace) {
  LoadedMesh mesh = Load("box:3,3,3");
  CZYN3DFiniteVolumeMesh& m = *mesh.partition->mesh();
  m.ijyc[4] += 0.5;  // the centres are a third apart
  auto const cells = MeasureCells(*mesh.partition);
  EXPECT_EQ(2, Count(cells, kIsSkew));
  EXPECT_NEAR(1.5, cells[static_cast<std::size_t>(m.ijCV[4]) - 1].skewness, 1e-12);
}

TEST(CheckCells, FindsBothCellsOfANonOrthogonalFace) {
  LoadedMesh mesh = Load("box:3,1,1");
  CZYN3DFiniteVolumeMesh& m = *mesh.partition->mesh();
  m.ijSy[1] = 3.0 * std::fabs(m.ijSx[1]);
  auto const cells = MeasureCells(*mesh.partition);
  EXPECT_EQ(2, Count(cells, kIsNonOrthogonal));
  EXPECT_NEAR(cells[static_cast<std::size_t>(m.ij[1]) - 1].nonOrthogonality, std::atan(3.0) * 180.0 / M_PI,
              1e-9);
}

TEST(CheckCells, LooksOnlyForWhatTheMethodsNeed) {
  LoadedMesh mesh = Load("box:2,2,2");
  for (CheckedSystem const& cell : Check(mesh, {"plain"})) {
    EXPECT_EQ(0.0, cell.condition);
    EXPECT_EQ(0, cell.members);
  }
  EXPECT_EQ(0U, CellFindings({&Method("plain")}) & (kHasZeroPivot | kIsSingular));
  EXPECT_NE(0U, CellFindings({&Method("lsq")}) & kHasZeroPivot);
  EXPECT_NE(0U, CellFindings({&Method("rbf")}) & kIsSingular);
}

}  // namespace
}  // namespace zyngrad
