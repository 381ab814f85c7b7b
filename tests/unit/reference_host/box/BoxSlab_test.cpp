#include "reference_host/slabs/BoxSlab.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

/// The whole mesh of all ranks' shares, whose blocks must follow each other.
FaceMesh MeshOfSlabs(BoxSpec const& spec, int nRanks) {
  FaceMesh mesh;
  for (int rank = 0; rank < nRanks; ++rank) {
    MeshSlab const slab = MakeBoxSlab(spec, rank, nRanks);
    EXPECT_EQ(slab.nodes.First(rank), static_cast<std::int64_t>(mesh.points.size()));
    EXPECT_EQ(slab.nodes.Size(rank), static_cast<std::int64_t>(slab.points.size()));
    EXPECT_EQ(slab.faces.First(rank), static_cast<std::int64_t>(mesh.owner.size()));
    EXPECT_EQ(slab.faces.Size(rank), static_cast<std::int64_t>(slab.nOwnFaces()));
    EXPECT_TRUE(slab.periods.empty());
    mesh.points.insert(mesh.points.end(), slab.points.begin(), slab.points.end());
    for (std::size_t f = 0; f < slab.nOwnFaces(); ++f) {
      EXPECT_EQ(rank, slab.cells.BlockOf(slab.owner[f]));
      for (std::size_t i = slab.faceStart[f]; i < slab.faceStart[f + 1]; ++i)
        mesh.faceNode.push_back(static_cast<int>(slab.faceNode[i]));
      mesh.faceStart.push_back(mesh.faceNode.size());
      mesh.owner.push_back(static_cast<int>(slab.owner[f]));
      mesh.neighbour.push_back(static_cast<int>(slab.neighbour[f]));
      mesh.facePatch.push_back(slab.facePatch[f]);
    }
    mesh.patches = slab.patches;
    mesh.nCells = static_cast<int>(slab.cells.nItems());
  }
  return mesh;
}

void ExpectSlabsEqualTheWholeBox(std::string const& text) {
  BoxSpec const spec = ParseBoxSpec(text);
  FaceMesh const whole = MakeBox(spec);
  for (int const nRanks : {1, 2, 3, 5, 16, 31}) {
    SCOPED_TRACE(text + " on " + std::to_string(nRanks));
    FaceMesh const mesh = MeshOfSlabs(spec, nRanks);
    EXPECT_EQ(whole.points, mesh.points);
    EXPECT_EQ(whole.faceStart, mesh.faceStart);
    EXPECT_EQ(whole.faceNode, mesh.faceNode);
    EXPECT_EQ(whole.owner, mesh.owner);
    EXPECT_EQ(whole.neighbour, mesh.neighbour);
    EXPECT_EQ(whole.facePatch, mesh.facePatch);
    EXPECT_EQ(whole.nCells, mesh.nCells);
    ASSERT_EQ(whole.patches.size(), mesh.patches.size());
    for (std::size_t p = 0; p < whole.patches.size(); ++p)
      EXPECT_EQ(whole.patches[p].name, mesh.patches[p].name);
  }
}

}  // namespace

TEST(BoxSlab, SharesOfAllRanksAreTheWholeBox) {
  for (std::string const text :
       {"box:1,1,1", "box:1,1,1:tet", "box:1,1,1:prism", "box:4,3,2", "box:4,3,2:tet", "box:2,3,4:prism",
        "box:7,1,1:tet", "box:1,5,2:tet", "box:1,1,9:prism", "box:3,3,3:hex:perturb=0.3,seed=5",
        "box:3,4,2:tet:perturb=0.1,stretch=3,skew=0.1"}) {
    ExpectSlabsEqualTheWholeBox(text);
  }
}

TEST(BoxSlab, SharesOfAllRanksAreTheWholeDual) {
  for (std::string const text :
       {"box:1,1,1:dual", "box:1,1,7:dual", "box:5,1,1:dual", "box:1,2,1:dual", "box:4,2,3:dual",
        "box:3,3,3:dual:perturb=0.2,seed=2", "box:2,5,3:dual:stretch=5,skew=0.1"}) {
    ExpectSlabsEqualTheWholeBox(text);
  }
  // Several pieces on a rank: rows, layers and the rest of both.
  ExpectSlabsEqualTheWholeBox("box:17,16,19:dual:perturb=0.1");
  ExpectSlabsEqualTheWholeBox("box:2500,2,1:dual");
}

TEST(BoxSlab, NumbersABoxOf6e10CellsWith64Bits) {
  // Among 2^20 ranks, a share has 61035 or 61036 cubes.
  BoxSpec const spec = ParseBoxSpec("box:4000,4000,4000");
  int const nRanks = 1 << 20, last = nRanks - 1;
  MeshSlab const slab = MakeBoxSlab(spec, last, nRanks);
  std::int64_t const n = 4000, nCells = n * n * n, nNodes = (n + 1) * (n + 1) * (n + 1);
  EXPECT_EQ(nCells, slab.cells.nItems());
  EXPECT_EQ(nNodes, slab.nodes.nItems());
  EXPECT_EQ(3 * n * n * (n + 1), slab.faces.nItems());
  EXPECT_EQ(slab.faces.Size(last), static_cast<std::int64_t>(slab.nOwnFaces()));
  EXPECT_EQ(nCells - 1, slab.owner.back());
  EXPECT_EQ((Point{1.0, 1.0, 1.0}), slab.points.back());
  // The last face is the upper one of the last cube: its nodes are the last two of the last two rows.
  std::vector<std::int64_t> const nodes(slab.faceNode.end() - 4, slab.faceNode.end());
  EXPECT_EQ((std::vector<std::int64_t>{nNodes - n - 3, nNodes - n - 2, nNodes - 1, nNodes - 2}), nodes);
}

TEST(BoxSlab, NumbersADualOf6e10CellsWith64Bits) {
  BoxSpec const spec = ParseBoxSpec("box:4000,4000,4000:dual");
  int const nRanks = 1 << 20, last = nRanks - 1;
  MeshSlab const slab = MakeBoxSlab(spec, last, nRanks);
  std::int64_t const n = 4000, nCells = (n + 1) * (n + 1) * (n + 1);
  EXPECT_EQ(nCells, slab.cells.nItems());
  EXPECT_EQ(BoxNodeCount(spec), slab.nodes.nItems());
  EXPECT_EQ(slab.faces.Size(last), static_cast<std::int64_t>(slab.nOwnFaces()));
  EXPECT_EQ(slab.nodes.Size(last), static_cast<std::int64_t>(slab.points.size()));
  EXPECT_EQ(nCells - 1, slab.owner.back());
  EXPECT_EQ(5, slab.facePatch.back());
  EXPECT_EQ((Point{1.0, 1.0, 1.0}), slab.points.back());
  // The last node of the last face is the corner of the box, the last point of all.
  EXPECT_EQ(slab.nodes.nItems() - 1, slab.faceNode.back());
}

TEST(BoxSlab, RefusesABoxThatNoNumberCounts) {
  BoxSpec spec;
  spec.nx = spec.ny = spec.nz = 2147483645;
  EXPECT_THROW(MakeBoxSlab(spec, 0, 4), MeshError);
}

}  // namespace reference_host
