#include "cli/vtk/PartitionGrid.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "reference_host/mesh/MeshPart.h"
#include "reference_host/partition/HostPartition.h"
#include "tests/unit/cli/BoxPartition.h"

namespace zyngrad {
namespace {

using reference_host::FaceMesh;
using reference_host::HostPartition;

/// The parts of a box cut into nParts slices of equally many cells.
std::vector<reference_host::MeshPart> Slices(FaceMesh const& mesh, int nParts) {
  std::vector<int> partOfCell(static_cast<std::size_t>(mesh.nCells));
  for (int c = 0; c < mesh.nCells; ++c) partOfCell[static_cast<std::size_t>(c)] = c * nParts / mesh.nCells;
  return SplitMesh(mesh, partOfCell, nParts);
}

/// Volume of the closed surface that the outward faces make: sum over triangles (p0, p1, p2) of p0.(p1 x p2)
/// / 6.
double VolumeInside(CellFaces const& faces, CZYN3DFiniteVolumeMesh const& mesh) {
  double volume = 0.0;
  for (int f = 0; f < faces.nFaces(); ++f) {
    int const* row = faces.Face(f);
    for (int k = 1; k + 1 < faces.FaceSize(f); ++k) {
      int const a = row[0], b = row[k], c = row[k + 1];
      volume += mesh.xn[a] * (mesh.yn[b] * mesh.zn[c] - mesh.zn[b] * mesh.yn[c]) +
                mesh.yn[a] * (mesh.zn[b] * mesh.xn[c] - mesh.xn[b] * mesh.zn[c]) +
                mesh.zn[a] * (mesh.xn[b] * mesh.yn[c] - mesh.yn[b] * mesh.xn[c]);
    }
  }
  return volume / 6.0;
}

TEST(PartitionGrid, TurnsTheFacesOfEveryCellOutwards) {
  for (char const* spec : {"box:3,2,2", "box:2,2,2:tet", "box:2,3,1:prism"}) {
    FaceMesh const mesh = BoxWithGroups(spec);
    for (auto const& part : Slices(mesh, 2)) {
      HostPartition partition(part);
      CZYN3DFiniteVolumeMesh const& host = *partition.mesh();
      CellFaces faces;
      for (int c = 1; c <= host.NInnerCells; ++c) {
        FacesOfCell(host, c, faces);
        EXPECT_NEAR(VolumeInside(faces, host), host.Volume[c], 1e-15) << spec << " cell " << c;
      }
    }
  }
}

TEST(PartitionGrid, WritesOwnedCellsWithTheirTypeAndOnlyTheirNodes) {
  std::map<std::string, VtkType> const typeOf = {{"box:3,2,2", VtkType::Hexahedron},
                                                 {"box:3,2,2:tet", VtkType::Tetrahedron},
                                                 {"box:3,2,2:prism", VtkType::Wedge}};
  for (auto const& [spec, type] : typeOf) {
    for (auto const& part : Slices(BoxWithGroups(spec), 2)) {
      HostPartition partition(part);
      VtuGrid const grid = GridOfInteriorCells(*partition.mesh());
      ASSERT_EQ(grid.types.size(), static_cast<std::size_t>(partition.mesh()->NInnerCells));
      for (std::uint8_t const written : grid.types) EXPECT_EQ(written, static_cast<std::uint8_t>(type));
      std::set<std::int64_t> const used(grid.connectivity.begin(), grid.connectivity.end());
      EXPECT_EQ(used.size(), grid.points.size() / 3);
      EXPECT_EQ(*used.rbegin(), static_cast<std::int64_t>(used.size()) - 1);
      EXPECT_EQ(grid.offsets.back(), static_cast<std::int64_t>(grid.connectivity.size()));
      EXPECT_TRUE(grid.faces.empty());
    }
  }
}

/// Two cubes side by side; the upper half of the shared square is a face of its own, so both cells have 7
/// faces.
FaceMesh TwoCubesWithSplitFace() {
  FaceMesh mesh;
  for (int k = 0; k < 2; ++k) {
    for (int j = 0; j < 2; ++j) {
      for (int i = 0; i < 3; ++i) mesh.points.push_back({double(i), double(j), double(k)});
    }
  }
  mesh.points.push_back({1.0, 0.0, 0.5});
  mesh.points.push_back({1.0, 1.0, 0.5});
  auto const add = [&mesh](std::vector<int> const& nodes, int owner, int neighbour) {
    mesh.faceNode.insert(mesh.faceNode.end(), nodes.begin(), nodes.end());
    mesh.faceStart.push_back(mesh.faceNode.size());
    mesh.owner.push_back(owner);
    mesh.neighbour.push_back(neighbour);
    mesh.facePatch.push_back(neighbour < 0 ? 0 : -1);
  };
  add({1, 4, 13, 12}, 0, 1);
  add({12, 13, 10, 7}, 0, 1);
  add({0, 6, 9, 3}, 0, -1);
  add({0, 3, 4, 1}, 0, -1);
  add({6, 7, 10, 9}, 0, -1);
  add({0, 1, 12, 7, 6}, 0, -1);
  add({3, 9, 10, 13, 4}, 0, -1);
  add({2, 5, 11, 8}, 1, -1);
  add({1, 4, 5, 2}, 1, -1);
  add({7, 8, 11, 10}, 1, -1);
  add({1, 2, 8, 7, 12}, 1, -1);
  add({4, 13, 10, 11, 5}, 1, -1);
  mesh.patches = {{"wall", "", reference_host::BoundaryGroup::Wall}};
  mesh.nCells = 2;
  return mesh;
}

TEST(PartitionGrid, WritesPolyhedraWithTheirFaces) {
  HostPartition partition(Slices(TwoCubesWithSplitFace(), 1).front());
  VtuGrid const grid = GridOfInteriorCells(*partition.mesh());
  ASSERT_EQ((std::vector<std::uint8_t>{42, 42}), grid.types);
  EXPECT_EQ(grid.points.size(), 3U * 14U);
  // Per cell: the face count, then 7 faces with their sizes: 2 halves, 3 squares, 2 pentagons.
  std::int64_t const length = 1 + 7 + 2 * 4 + 3 * 4 + 2 * 5;
  EXPECT_EQ((std::vector<std::int64_t>{length, 2 * length}), grid.faceOffsets);
  EXPECT_EQ(grid.faces.size(), static_cast<std::size_t>(2 * length));
  EXPECT_EQ(7, grid.faces[0]);
  EXPECT_EQ(7, grid.faces[static_cast<std::size_t>(length)]);
}

}  // namespace
}  // namespace zyngrad
