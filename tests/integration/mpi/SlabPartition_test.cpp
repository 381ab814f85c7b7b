#include "reference_host/slabs/SlabPartition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "MpiTestSupport.h"
#include "SlabSupport.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/parallel/MeshDistribution.h"
#include "reference_host/slabs/SlabGraph.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"

namespace reference_host::test {
namespace {

/// By cell: its neighbours and the numbers of faces that it shares with them.
using Neighbours = std::vector<std::map<std::int64_t, std::int64_t>>;

Neighbours NeighboursOf(FaceMesh const& mesh) {
  Neighbours neighbours(static_cast<std::size_t>(mesh.nCells));
  ForEachNeighbours(mesh, [&](int a, int b) {
    if (a == b) return;
    ++neighbours[static_cast<std::size_t>(a)][b];
    ++neighbours[static_cast<std::size_t>(b)][a];
  });
  return neighbours;
}

void ExpectGraphOf(FaceMesh const& mesh, MpiCommunicator const& world, SlabBlocks const& blocks) {
  SlabGraph const graph = MakeSlabGraph(world, SlabOf(mesh, world, blocks));
  Neighbours const expected = NeighboursOf(mesh);
  auto const nOwn = static_cast<std::size_t>(blocks.cells.Size(world.rank()));
  ASSERT_EQ(graph.rowStart.size(), nOwn + 1);
  bool const sharesOften = std::any_of(expected.begin(), expected.end(), [](auto const& neighbours) {
    return std::any_of(neighbours.begin(), neighbours.end(),
                       [](auto const& item) { return item.second > 1; });
  });
  EXPECT_EQ(graph.weights.size(), sharesOften ? graph.columns.size() : 0);
  for (std::size_t c = 0; c < nOwn; ++c) {
    auto const begin = static_cast<std::size_t>(graph.rowStart[c]);
    auto const end = static_cast<std::size_t>(graph.rowStart[c + 1]);
    auto const& neighbours = expected[static_cast<std::size_t>(blocks.cells.First(world.rank())) + c];
    ASSERT_EQ(end - begin, neighbours.size());
    std::size_t i = begin;
    for (auto const& [neighbour, nFaces] : neighbours) {
      EXPECT_EQ(graph.columns[i], neighbour);
      if (sharesOften) {
        EXPECT_EQ(graph.weights[i], nFaces);
      }
      ++i;
    }
  }
}

/// How good a partition is: faces between parts, and cells of the largest part by those of an average one.
struct Quality {
  std::int64_t nCutFaces = 0;
  double imbalance = 0.0;
  std::int64_t smallestPart = 0;
};

Quality QualityOf(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) {
  std::vector<std::int64_t> nCells(static_cast<std::size_t>(nParts), 0);
  for (int const part : partOfCell) ++nCells.at(static_cast<std::size_t>(part));
  Quality quality;
  quality.smallestPart = *std::min_element(nCells.begin(), nCells.end());
  quality.imbalance =
      static_cast<double>(*std::max_element(nCells.begin(), nCells.end())) * nParts / mesh.nCells;
  for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
    if (mesh.neighbour[f] < 0) continue;
    if (partOfCell[static_cast<std::size_t>(mesh.owner[f])] !=
        partOfCell[static_cast<std::size_t>(mesh.neighbour[f])])
      ++quality.nCutFaces;
  }
  return quality;
}

/// The parts of all cells by PartitionSlab.
std::vector<int> Partition(FaceMesh const& mesh, MpiCommunicator const& world, SlabBlocks const& blocks) {
  std::vector<int> const own = PartitionSlab(world, SlabOf(mesh, world, blocks));
  EXPECT_EQ(static_cast<std::int64_t>(own.size()), blocks.cells.Size(world.rank()));
  std::vector<std::int64_t> const all = GatherNumbers({own.begin(), own.end()});
  return {all.begin(), all.end()};
}

std::vector<int> Partition(FaceMesh const& mesh, MpiCommunicator const& world) {
  return Partition(mesh, world, EvenBlocks(mesh, world));
}

/// A mesh that PT-Scotch gets, since it is not small.
char const* const kLargeBox = "box:16,15,15:tet";

}  // namespace

TEST(SlabGraph, HasEveryNeighbourOnce) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (std::string const text : {"box:1,1,1", "box:4,3,3", "box:3,3,2:tet", "box:4,3,3:dual"}) {
    FaceMesh const mesh = MakeBox(ParseBoxSpec(text));
    ExpectGraphOf(mesh, world, EvenBlocks(mesh, world));
    for (unsigned const seed : {1u, 2u, 3u}) ExpectGraphOf(mesh, world, UnevenBlocks(mesh, world, seed));
  }
}

TEST(SlabGraph, LeadsBeyondPeriods) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (auto const& [name, mesh] : test_meshes::PeriodicMeshes()) {
    SCOPED_TRACE(name);
    ExpectGraphOf(mesh, world, EvenBlocks(mesh, world));
    for (unsigned const seed : {1u, 2u, 3u}) ExpectGraphOf(mesh, world, UnevenBlocks(mesh, world, seed));
  }
}

TEST(PartitionSlab, NeedsAnMpiLibraryForThreadsAndHasIt) { EXPECT_TRUE(CanPartitionSlabs()); }

TEST(PartitionSlab, BalancesPartsAndCutsAsFewFacesAsMetis) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (std::string const text : {kLargeBox, "box:30,30,30", "box:28,28,28:dual"}) {
    FaceMesh const mesh = MakeBox(ParseBoxSpec(text));
    ASSERT_GT(mesh.nCells, kCellsOfSmallMesh);
    Quality const quality = QualityOf(mesh, Partition(mesh, world), world.size());
    Quality const byMetis = QualityOf(mesh, PartitionMesh(mesh, world.size()), world.size());
    EXPECT_LE(quality.imbalance, 1.1 * byMetis.imbalance) << text;
    EXPECT_LE(static_cast<double>(quality.nCutFaces), 1.1 * static_cast<double>(byMetis.nCutFaces)) << text;
  }
}

TEST(PartitionSlab, IsTheSameEveryTime) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh const mesh = MakeBox(ParseBoxSpec(kLargeBox));
  std::vector<int> const first = Partition(mesh, world);
  for (int repeat = 0; repeat < 3; ++repeat) EXPECT_TRUE(Partition(mesh, world) == first);
}

TEST(PartitionSlab, TakesBlocksOfAnySize) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh const mesh = MakeBox(ParseBoxSpec(kLargeBox));
  for (unsigned const seed : {1u, 2u}) {
    Quality const quality =
        QualityOf(mesh, Partition(mesh, world, UnevenBlocks(mesh, world, seed)), world.size());
    EXPECT_LE(quality.imbalance, 1.05);
    EXPECT_GE(quality.smallestPart, 1);
  }
}

TEST(PartitionSlab, DividesAMeshInSeparatePieces) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh mesh = MakeBox(ParseBoxSpec("box:26,26,26"));
  FaceMesh const other = MakeBox(ParseBoxSpec("box:19,19,19"));
  for (std::size_t f = 0; f < other.owner.size(); ++f) {
    if (other.neighbour[f] < 0) continue;
    mesh.owner.push_back(other.owner[f] + mesh.nCells);
    mesh.neighbour.push_back(other.neighbour[f] + mesh.nCells);
    mesh.facePatch.push_back(-1);
    mesh.faceStart.push_back(mesh.faceNode.size());  // parts need no nodes
  }
  mesh.nCells += other.nCells;
  ASSERT_GT(mesh.nCells, kCellsOfSmallMesh);
  Quality const quality = QualityOf(mesh, Partition(mesh, world), world.size());
  EXPECT_LE(quality.imbalance, 1.05);
  EXPECT_GE(quality.smallestPart, 1);
}

TEST(PartitionSlab, TakesPeriodicMeshes) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh const mesh = test_meshes::Periodic(MakeBox(ParseBoxSpec("box:28,28,28")), "xyz");
  Quality const quality = QualityOf(mesh, Partition(mesh, world), world.size());
  EXPECT_LE(quality.imbalance, 1.05);
}

TEST(PartitionSlab, DividesSmallMeshesAsOneProcessDoes) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (std::string const text : {"box:8,8,8", "box:5,5,5:tet", "box:6,6,6:dual"}) {
    FaceMesh const mesh = MakeBox(ParseBoxSpec(text));
    std::vector<int> const expected = PartitionMesh(mesh, world.size());
    EXPECT_TRUE(Partition(mesh, world) == expected) << text;
    EXPECT_TRUE(Partition(mesh, world, UnevenBlocks(mesh, world, 1)) == expected) << text;
  }
}

TEST(PartitionSlab, GivesEveryPartACellDownToOneCellAPart) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  for (int extra = 0; extra < 3; ++extra) {
    FaceMesh const mesh = MakeBox(ParseBoxSpec("box:" + std::to_string(world.size() + extra) + ",1,1"));
    EXPECT_GE(QualityOf(mesh, Partition(mesh, world), world.size()).smallestPart, 1);
  }
}

TEST(PartitionSlab, RefusesMoreRanksThanCells) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  if (world.size() == 1) return;
  std::string const nCells = std::to_string(world.size() - 1);
  FaceMesh const mesh = MakeBox(ParseBoxSpec("box:" + nCells + ",1,1"));
  EXPECT_EQ("channel.msh: the mesh has " + nCells + " cells, fewer than the " + std::to_string(world.size()) +
                " ranks",
            ErrorOnEveryRank([&] { PartitionSlab(world, SlabOf(mesh, world), "channel.msh"); }));
}

}  // namespace reference_host::test
