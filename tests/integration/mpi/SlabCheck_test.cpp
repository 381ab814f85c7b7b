#include "reference_host/slabs/SlabCheck.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "SlabSupport.h"
#include "reference_host/MeshReader.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/slabs/SlabDistribution.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace reference_host::test {
namespace {

std::string RefusalOfWhole(FaceMesh const& mesh) {
  try {
    CheckMesh(mesh, "m");
  } catch (MeshError const& error) {
    return error.what();
  }
  ADD_FAILURE() << "the mesh is not refused";
  return {};
}

/// Expects that slabs of the mesh are refused with the words that the whole is.
void ExpectSameRefusal(FaceMesh const& whole) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  std::vector<int> const partOfCell = test_meshes::RandomParts(whole.nCells, world.size());
  std::string const expected = RefusalOfWhole(whole);
  for (SlabBlocks const& blocks : {EvenBlocks(whole, world), UnevenBlocks(whole, world, 4)}) {
    EXPECT_EQ(ErrorOnEveryRank([&] {
                MeshSlab slab = SlabOf(whole, world, blocks);
                CheckSlabTables(world, slab, "m");
                std::vector<int> const own(partOfCell.begin() + blocks.cells.First(world.rank()),
                                           partOfCell.begin() + blocks.cells.End(world.rank()));
                DistributeSlab(world, std::move(slab), own, "m");
              }),
              expected);
  }
}

/// Meshes whose nodes, cells and faces have names in different ways.
std::vector<FaceMesh> MeshesWithAndWithoutNames() {
  std::vector<FaceMesh> meshes = {MakeBox(ParseBoxSpec("box:4,4,4")),
                                  ReadMesh(ZYN_TEST_DATA "/gmsh/box_41.msh"),
                                  ReadMesh(ZYN_TEST_DATA "/openfoam_cases/cavity")};
  for (FaceMesh& mesh : meshes) mesh.periods.clear();  // they are not joined
  return meshes;
}

/// Spoils all meshes in two places, the second of which must not be named.
void ExpectSameRefusals(std::function<void(FaceMesh&, std::size_t face)> const& spoil) {
  for (FaceMesh mesh : MeshesWithAndWithoutNames()) {
    auto const nFaces = mesh.owner.size();
    spoil(mesh, nFaces / 3);
    spoil(mesh, nFaces - 2);
    ExpectSameRefusal(mesh);
  }
}

}  // namespace

TEST(CheckSlabTables, PassesGoodMeshes) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (test_meshes::NamedMesh const& mesh : test_meshes::AllMeshes()) {
    EXPECT_NO_THROW(CheckSlabTables(world, SlabOf(mesh.mesh, world), "m")) << mesh.name;
  }
}

TEST(CheckSlabTables, RefusesAMeshWithoutCells) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  EXPECT_EQ(ErrorOnEveryRank([&] { CheckSlabTables(world, SlabOf(FaceMesh(), world), "a.msh"); }),
            "a.msh: the mesh has no cells");
}

TEST(CheckSlabTables, RefusesCoordinatesThatAreNotFinite) {
  ExpectSameRefusals([](FaceMesh& mesh, std::size_t face) {
    mesh.points[static_cast<std::size_t>(mesh.faceNode[mesh.faceStart[face]])][1] = std::nan("");
  });
}

TEST(CheckSlabTables, RefusesNodesOutOfRangeAndTwice) {
  for (int const node : {-1, std::numeric_limits<int>::max()}) {
    FaceMesh mesh = MakeBox(ParseBoxSpec("box:4,4,4"));
    mesh.faceNode[mesh.faceStart[70] + 1] = node;
    ExpectSameRefusal(mesh);
  }
  ExpectSameRefusals([](FaceMesh& mesh, std::size_t face) {
    mesh.faceNode[mesh.faceStart[face] + 2] = mesh.faceNode[mesh.faceStart[face]];
  });
}

TEST(CheckSlabTables, RefusesCellsOutOfRange) {
  for (int const cell : {-2, std::numeric_limits<int>::max()}) {
    FaceMesh mesh = MakeBox(ParseBoxSpec("box:4,4,4"));
    mesh.neighbour[50] = cell;
    ExpectSameRefusal(mesh);
    mesh.owner[31] = cell;
    ExpectSameRefusal(mesh);
  }
}

TEST(CheckSlabTables, RefusesFacesThatJoinACellToItself) {
  ExpectSameRefusals([](FaceMesh& mesh, std::size_t face) { mesh.neighbour[face] = mesh.owner[face]; });
}

TEST(CheckSlabTables, RefusesBoundaryFacesWithoutAPatch) {
  ExpectSameRefusals([](FaceMesh& mesh, std::size_t face) {
    mesh.neighbour[face] = -1;
    mesh.facePatch[face] = -1;
  });
}

TEST(CheckSlabTables, NamesTheFirstFaultOfAFace) {
  ExpectSameRefusals([](FaceMesh& mesh, std::size_t face) {
    mesh.neighbour[face] = mesh.owner[face];
    mesh.faceNode[mesh.faceStart[face] + 2] = mesh.faceNode[mesh.faceStart[face]];
  });
}

TEST(CheckSlabTables, RefusesFacesWithFewerThanThreeNodesAndTablesOfDifferentLength) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh const whole = MakeBox(ParseBoxSpec("box:4,4,4"));
  bool const isLast = world.rank() == world.size() - 1;
  MeshSlab slab = SlabOf(whole, world);
  if (isLast) slab.faceStart[3] = slab.faceStart[2] + 2;
  std::int64_t const face = EvenBlocks(whole, world).faces.First(world.size() - 1) + 3;
  EXPECT_EQ(ErrorOnEveryRank([&] { CheckSlabTables(world, slab, "m"); }),
            "m: face " + std::to_string(face) + " has fewer than 3 nodes");
  slab = SlabOf(whole, world);
  if (isLast) slab.faceStart.back() += 1;
  EXPECT_EQ(ErrorOnEveryRank([&] { CheckSlabTables(world, slab, "m"); }),
            "m: face " + std::to_string(whole.nFaces()) + " goes beyond the end of the node table");
  if (isLast) slab.neighbour.pop_back();
  EXPECT_EQ(ErrorOnEveryRank([&] { CheckSlabTables(world, slab, "m"); }),
            "m: the face tables differ in length");
}

TEST(CheckSlabTables, RefusesCellsWithFewerThanFourFaces) {
  FaceMesh mesh = MakeBox(ParseBoxSpec("box:4,4,4"));
  mesh.nCells += 2;
  ExpectSameRefusal(mesh);
  // Faces of cell 37 now belong to cell 3.
  mesh = MakeBox(ParseBoxSpec("box:4,4,4"));
  int nLeft = 3;
  for (std::size_t f = 0; f < mesh.owner.size() && nLeft > 0; ++f) {
    if (mesh.owner[f] != 37 && mesh.neighbour[f] != 37) continue;
    (mesh.owner[f] == 37 ? mesh.owner : mesh.neighbour)[f] = 3;
    --nLeft;
  }
  ExpectSameRefusal(mesh);
}

TEST(CheckPartGeometry, RefusesFacesWithoutArea) {
  for (FaceMesh mesh : MeshesWithAndWithoutNames()) {
    for (std::size_t const f : {mesh.owner.size() / 2, mesh.owner.size() - 3}) {
      int const* const nodes = mesh.faceNode.data() + mesh.faceStart[f];
      for (std::size_t i = 1; i < mesh.faceStart[f + 1] - mesh.faceStart[f]; ++i) {
        mesh.points[static_cast<std::size_t>(nodes[i])] = mesh.points[static_cast<std::size_t>(nodes[0])];
      }
    }
    ExpectSameRefusal(mesh);
  }
}

TEST(CheckPartGeometry, RefusesCellsThatAreNotClosed) {
  ExpectSameRefusals([](FaceMesh& mesh, std::size_t face) {
    std::swap(mesh.faceNode[mesh.faceStart[face]], mesh.faceNode[mesh.faceStart[face] + 2]);
  });
}

TEST(CheckPartGeometry, RefusesCellsWithoutAPositiveVolume) {
  for (FaceMesh mesh : MeshesWithAndWithoutNames()) {
    for (Point& point : mesh.points) point[0] = -point[0];
    ExpectSameRefusal(mesh);
  }
  FaceMesh mesh = test_meshes::TetBox(3);
  int const* const nodes = mesh.faceNode.data() + mesh.faceStart[100];
  for (int i = 0; i < 3; ++i) mesh.points[static_cast<std::size_t>(nodes[i])][2] += 0.9;
  ExpectSameRefusal(mesh);
}

}  // namespace reference_host::test
