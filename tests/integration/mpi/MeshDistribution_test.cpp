#include "reference_host/parallel/MeshDistribution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiBytes.h"

namespace reference_host::test {
namespace {

std::vector<int> CellsOfParts(std::vector<int> const& partOfCell, int nParts) {
  std::vector<int> nCells(nParts, 0);
  for (int const part : partOfCell) ++nCells.at(part);
  return nCells;
}

int CutFaces(FaceMesh const& mesh, std::vector<int> const& partOfCell) {
  int nCut = 0;
  for (int f = 0; f < mesh.nFaces(); ++f) {
    if (mesh.neighbour[f] >= 0 && partOfCell[mesh.owner[f]] != partOfCell[mesh.neighbour[f]]) ++nCut;
  }
  return nCut;
}

/// Joins two meshes that do not touch.
FaceMesh Beside(FaceMesh a, FaceMesh const& b) {
  for (int f = 0; f < b.nFaces(); ++f) {
    for (std::size_t i = b.faceStart[f]; i < b.faceStart[f + 1]; ++i) {
      a.faceNode.push_back(b.faceNode[i] + static_cast<int>(a.points.size()));
    }
    a.faceStart.push_back(a.faceNode.size());
    a.owner.push_back(b.owner[f] + a.nCells);
    a.neighbour.push_back(b.neighbour[f] < 0 ? -1 : b.neighbour[f] + a.nCells);
    a.facePatch.push_back(b.facePatch[f]);
  }
  for (Point const& p : b.points) a.points.push_back({p[0] + 10.0, p[1], p[2]});
  a.nCells += b.nCells;
  return a;
}

}  // namespace

TEST(PartitionMesh, BalancesPartsAndCutsFewFaces) {
  FaceMesh const mesh = MakeBox(ParseBoxSpec("box:16,16,16"));
  for (int const nParts : {2, 3, 4, 8, 9, 16, 30}) {
    std::vector<int> const partOfCell = PartitionMesh(mesh, nParts);
    std::vector<int> const nCells = CellsOfParts(partOfCell, nParts);
    EXPECT_LE(*std::max_element(nCells.begin(), nCells.end()), 1.1 * 4096 / nParts) << nParts;
    // Slabs across the box would cut 256 (nParts - 1) faces.
    EXPECT_LE(CutFaces(mesh, partOfCell), 1.2 * 256 * (nParts - 1)) << nParts;
  }
}

TEST(PartitionMesh, GivesEveryPartACellDownToOneCellAPart) {
  for (std::string const text : {"box:3,2,2", "box:12,1,1", "box:2,1,1:tet", "box:4,4,4", "box:40,1,1"}) {
    FaceMesh const mesh = MakeBox(ParseBoxSpec(text));
    for (int nParts = 1; nParts <= mesh.nCells; ++nParts) {
      std::vector<int> const nCells = CellsOfParts(PartitionMesh(mesh, nParts), nParts);
      EXPECT_GE(*std::min_element(nCells.begin(), nCells.end()), 1) << text << " in " << nParts;
    }
  }
}

TEST(PartitionMesh, DividesAMeshInSeparatePieces) {
  FaceMesh const mesh = Beside(MakeBox(ParseBoxSpec("box:8,8,8")), MakeBox(ParseBoxSpec("box:5,5,5")));
  for (int const nParts : {2, 3, 12, 20}) {
    std::vector<int> const nCells = CellsOfParts(PartitionMesh(mesh, nParts), nParts);
    EXPECT_GE(*std::min_element(nCells.begin(), nCells.end()), 1);
    EXPECT_LE(*std::max_element(nCells.begin(), nCells.end()), 1.2 * mesh.nCells / nParts);
  }
}

TEST(PartitionMesh, IsTheSameEveryTime) {
  FaceMesh const mesh = MakeBox(ParseBoxSpec("box:10,9,8:tet"));
  for (int const nParts : {3, 12}) EXPECT_EQ(PartitionMesh(mesh, nParts), PartitionMesh(mesh, nParts));
}

TEST(PartitionMesh, RefusesMorePartsThanCells) {
  FaceMesh const mesh = MakeBox(ParseBoxSpec("box:3,1,1"));
  try {
    PartitionMesh(mesh, 4, "channel.msh");
    FAIL();
  } catch (MeshError const& error) {
    EXPECT_STREQ("channel.msh: the mesh has 3 cells, fewer than the 4 ranks", error.what());
  }
}

TEST(FillEmptyParts, TakesFromTheLargestPart) {
  std::vector<int> partOfCell = {2, 2, 2, 2, 4, 4};
  FillEmptyParts(partOfCell, 5);
  EXPECT_EQ((std::vector<int>{0, 1, 3, 2, 4, 4}), partOfCell);
  FillEmptyParts(partOfCell, 5);
  EXPECT_EQ((std::vector<int>{0, 1, 3, 2, 4, 4}), partOfCell);
}

TEST(DistributeMesh, GivesEachRankItsPart) {
  FaceMesh const mesh = MakeBox(ParseBoxSpec("box:5,4,3:prism:perturb=0.1"));
  MpiCommunicator const world(MPI_COMM_WORLD);
  std::vector<int> const partOfCell = PartitionMesh(mesh, world.size());
  bool const isFirst = world.rank() == 0;
  MeshPart const part =
      DistributeMesh(world, isFirst ? &mesh : nullptr, isFirst ? partOfCell : std::vector<int>());
  MeshPart const expected = ExtractPart(mesh, partOfCell, world.rank(), world.size());
  EXPECT_EQ(part.part, world.rank());
  EXPECT_EQ(part.points, expected.points);
  EXPECT_EQ(part.globalCell, expected.globalCell);
  EXPECT_EQ(part.haloPart, expected.haloPart);
  EXPECT_EQ(part.faceNode, expected.faceNode);
  EXPECT_EQ(part.facePatch, expected.facePatch);
  EXPECT_EQ(part.patches.size(), expected.patches.size());
}

TEST(DistributeMesh, FailureOnRank0ReachesEveryRank) {
  FaceMesh const mesh = MakeBox(ParseBoxSpec("box:5,1,1"));
  MpiCommunicator const world(MPI_COMM_WORLD);
  std::vector<int> const wrong(5, world.size());  // no such part
  ErrorOnEveryRank([&] { DistributeMesh(world, &mesh, wrong); });
}

TEST(MpiBytes, MessagesOfEverySizeArriveInPieces) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  constexpr std::size_t kPiece = 7;
  for (std::size_t const size : {0u, 1u, 6u, 7u, 8u, 14u, 20u}) {
    std::vector<char> bytes(size);
    std::iota(bytes.begin(), bytes.end(), 'a');
    if (world.rank() == 0) {
      for (int to = 1; to < world.size(); ++to) SendBytes(world, to, bytes, kPiece);
    } else {
      std::optional<std::vector<char>> const received = ReceiveBytes(world, 0, kPiece);
      EXPECT_TRUE(received && *received == bytes) << size;
    }
  }
}

TEST(MpiBytes, NothingIsNotAnEmptyMessage) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  if (world.rank() == 0) {
    for (int to = 1; to < world.size(); ++to) SendNothing(world, to);
  } else {
    EXPECT_FALSE(ReceiveBytes(world, 0).has_value());
  }
}

TEST(RunTogether, EveryRankThrowsTheTextOfTheLowestFailingRank) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  EXPECT_NO_THROW(RunTogether(world, [] {}));

  int const last = world.size() - 1;
  EXPECT_EQ("only the last", ErrorOnEveryRank([&] {
              RunTogether(world, [&] {
                if (world.rank() == last) throw MeshError("only the last");
              });
            }));
  EXPECT_EQ("rank 0", ErrorOnEveryRank([&] {
              RunTogether(world, [&] { throw std::runtime_error("rank " + std::to_string(world.rank())); });
            }));
  EXPECT_EQ(ErrorOnEveryRank([&] {
              RunTogether(world, [&] {
                if (world.rank() == last) throw std::bad_alloc();
              });
            }),
            "not enough memory on rank " + std::to_string(last));
}

}  // namespace reference_host::test
