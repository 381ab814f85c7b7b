#include "reference_host/mesh/DualMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <vector>

#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/MeshCheck.h"

namespace reference_host {
namespace {

std::vector<int> FacesPerCell(FaceMesh const& mesh) {
  std::vector<int> n(static_cast<std::size_t>(mesh.nCells), 0);
  for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
    ++n[static_cast<std::size_t>(mesh.owner[f])];
    if (mesh.neighbour[f] >= 0) ++n[static_cast<std::size_t>(mesh.neighbour[f])];
  }
  return n;
}

}  // namespace

TEST(DualMesh, HasACellForEveryNodeAndAFaceForEveryEdge) {
  // Tetrahedra of n^3 cubes: edges along the axes, across the sides and through the cubes.
  int const n = 3, edges = 3 * n * (n + 1) * (n + 1) + 3 * n * n * (n + 1) + n * n * n;
  FaceMesh const dual = MakeDual(MakeBox(ParseBoxSpec("box:3,3,3:tet")));
  EXPECT_EQ(64, dual.nCells);
  EXPECT_EQ(std::count_if(dual.neighbour.begin(), dual.neighbour.end(), [](int c) { return c >= 0; }), edges);
}

TEST(DualMesh, InnerCellsOfDividedCubesHaveFourteenFaces) {
  FaceMesh const dual = MakeDual(MakeBox(ParseBoxSpec("box:4,4,4:tet")));
  std::vector<int> const faces = FacesPerCell(dual);
  EXPECT_EQ(27, std::count(faces.begin(), faces.end(), 14));
}

TEST(DualMesh, OfOneTetrahedronDividesItAmongItsCorners) {
  FaceMesh tet;
  tet.points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  tet.faceNode = {0, 2, 1, 0, 1, 3, 1, 2, 3, 0, 3, 2};
  tet.faceStart = {0, 3, 6, 9, 12};
  tet.owner = {0, 0, 0, 0};
  tet.neighbour = {-1, -1, -1, -1};
  tet.facePatch = {0, 1, 2, 3};  // every edge is one between patches
  tet.patches.resize(4);
  tet.nCells = 1;
  FaceMesh const dual = MakeDual(tet);
  // Each cell is a hexahedron: three faces between cells, three on the surface, a quarter of the volume.
  EXPECT_EQ((std::vector<int>{6, 6, 6, 6}), FacesPerCell(dual));
  for (int f = 0; f < dual.nFaces(); ++f)
    EXPECT_EQ(4u,
              dual.faceStart[static_cast<std::size_t>(f) + 1] - dual.faceStart[static_cast<std::size_t>(f)]);
  for (double const volume : ComputeCellGeometry(dual, dual.nCells).volume)
    EXPECT_NEAR(volume, 1.0 / 24, 1e-16);
}

TEST(DualMesh, EachNodeHasAPieceOfEveryPatchAroundIt) {
  FaceMesh const primal = MakeBox(ParseBoxSpec("box:3,2,2:tet"));
  FaceMesh const dual = MakeDual(primal);
  std::set<std::pair<int, int>> expected, found;
  for (std::size_t f = 0; f < primal.owner.size(); ++f) {
    if (primal.facePatch[f] < 0) continue;
    for (std::size_t i = primal.faceStart[f]; i < primal.faceStart[f + 1]; ++i)
      expected.insert({primal.faceNode[i], primal.facePatch[f]});
  }
  for (std::size_t f = 0; f < dual.owner.size(); ++f) {
    if (dual.facePatch[f] >= 0) {
      EXPECT_TRUE(found.insert({dual.owner[f], dual.facePatch[f]}).second);
    }
  }
  EXPECT_EQ(found, expected);
}

TEST(DualMesh, PassesTheChecksOfMeshFilesWhateverTheCells) {
  for (std::string const box :
       {"box:3,3,3:tet", "box:4,3,2:hex", "box:2,3,2:prism", "box:4,4,4:tet:perturb=0.2"}) {
    FaceMesh const dual = MakeDual(MakeBox(ParseBoxSpec(box)));
    EXPECT_NO_THROW(CheckMesh(dual, box)) << box;
  }
}

}  // namespace reference_host
