#include "reference_host/slabs/SlabDistribution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "SlabSupport.h"
#include "reference_host/MeshReader.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/parallel/MeshPartBytes.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"

namespace reference_host::test {
namespace {

std::vector<int> OfOwnBlock(std::vector<int> const& partOfCell, BlockRanges const& cells, int rank) {
  return {partOfCell.begin() + cells.First(rank), partOfCell.begin() + cells.End(rank)};
}

/// Expects that the parts of the mesh from slabs have the bytes of those from the whole.
void ExpectExtracted(FaceMesh const& whole, std::vector<int> const& partOfCell, SlabBlocks const& blocks,
                     CheckGeometry check = CheckGeometry::Yes) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  MeshPart const part = DistributeSlab(world, SlabOf(whole, world, blocks),
                                       OfOwnBlock(partOfCell, blocks.cells, world.rank()), "", check);
  MeshPart const expected = ExtractPart(whole, partOfCell, world.rank(), world.size());
  EXPECT_EQ(part.points, expected.points);
  EXPECT_EQ(part.globalNode, expected.globalNode);
  EXPECT_EQ(part.nOwned, expected.nOwned);
  EXPECT_EQ(part.globalCell, expected.globalCell);
  EXPECT_EQ(part.haloPart, expected.haloPart);
  EXPECT_EQ(part.haloPeriod, expected.haloPeriod);
  EXPECT_EQ(part.haloNodeStart, expected.haloNodeStart);
  EXPECT_EQ(part.haloNode, expected.haloNode);
  EXPECT_EQ(part.faceStart, expected.faceStart);
  EXPECT_EQ(part.faceNode, expected.faceNode);
  EXPECT_EQ(part.owner, expected.owner);
  EXPECT_EQ(part.neighbour, expected.neighbour);
  EXPECT_EQ(part.facePatch, expected.facePatch);
  EXPECT_TRUE(PackMeshPart(part) == PackMeshPart(expected)) << "some other field differs";
}

/// In runs, at random, in all of one part, with an empty part; from blocks of equal and of random sizes.
void ExpectExtractedAlways(FaceMesh const& whole, CheckGeometry check = CheckGeometry::Yes) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  int const n = whole.nCells, nParts = world.size();
  std::vector<int> const random = test_meshes::RandomParts(n, nParts);
  std::vector<int> allInLast(static_cast<std::size_t>(n), nParts - 1), firstIsEmpty = random;
  for (int& part : firstIsEmpty) part = std::max(part, std::min(1, nParts - 1));
  for (std::vector<int> const& parts : {test_meshes::RunParts(n, nParts), random, allInLast, firstIsEmpty}) {
    ExpectExtracted(whole, parts, EvenBlocks(whole, world), check);
    for (unsigned const seed : {1u, 2u})
      ExpectExtracted(whole, parts, UnevenBlocks(whole, world, seed), check);
  }
}

/// Cubes that touch in a node and in an edge, and one that is far away.
FaceMesh CubesThatTouchInNodesAndEdges() {
  test_meshes::Builder builder;
  test_meshes::Grid const grid(builder, 4, 3, 3);
  builder.AddCell(test_meshes::Hex(grid.Corners(0, 0, 0)));
  builder.AddCell(test_meshes::Hex(grid.Corners(1, 1, 1)));
  builder.AddCell(test_meshes::Hex(grid.Corners(2, 2, 1)));
  builder.AddCell(test_meshes::Hex(grid.Corners(2, 2, 2)));
  builder.AddCell(test_meshes::Hex(grid.Corners(0, 2, 2)));
  FaceMesh mesh = builder.Finish();
  for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
    if (mesh.neighbour[f] < 0) mesh.facePatch[f] = 0;
  }
  return mesh;
}

/// The mesh with its cells, faces and nodes in random order.
FaceMesh Shuffled(FaceMesh const& mesh, unsigned seed) {
  std::mt19937 random(seed);
  auto const order = [&random](std::size_t n) {
    std::vector<int> numbers(n);
    for (std::size_t i = 0; i < n; ++i) numbers[i] = static_cast<int>(i);
    std::shuffle(numbers.begin(), numbers.end(), random);
    return numbers;
  };
  std::vector<int> const cell = order(static_cast<std::size_t>(mesh.nCells)),
                         node = order(mesh.points.size());
  FaceMesh result = mesh;
  for (std::size_t n = 0; n < mesh.points.size(); ++n) {
    result.points[static_cast<std::size_t>(node[n])] = mesh.points[n];
  }
  result.faceStart = {0};
  result.faceNode.clear();
  std::vector<int> const faces = order(mesh.owner.size());
  for (std::size_t i = 0; i < faces.size(); ++i) {
    auto const f = static_cast<std::size_t>(faces[i]);
    for (std::size_t j = mesh.faceStart[f]; j < mesh.faceStart[f + 1]; ++j) {
      result.faceNode.push_back(node[static_cast<std::size_t>(mesh.faceNode[j])]);
    }
    result.faceStart.push_back(result.faceNode.size());
    result.owner[i] = cell[static_cast<std::size_t>(mesh.owner[f])];
    result.neighbour[i] = mesh.neighbour[f] < 0 ? -1 : cell[static_cast<std::size_t>(mesh.neighbour[f])];
    result.facePatch[i] = mesh.facePatch[f];
  }
  return result;
}

std::string RefusalOf(FaceMesh const& whole, std::vector<int> const& partOfCell, std::string const& name) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  BlockRanges const cells = EvenBlocks(whole, world).cells;
  return ErrorOnEveryRank([&] {
    DistributeSlab(world, SlabOf(whole, world), OfOwnBlock(partOfCell, cells, world.rank()), name);
  });
}

}  // namespace

TEST(DistributeSlab, GivesThePartsOfTheWholeForEveryKindOfCell) {
  for (test_meshes::NamedMesh const& mesh : test_meshes::AllMeshes()) {
    SCOPED_TRACE(mesh.name);
    ExpectExtractedAlways(mesh.mesh);
  }
}

TEST(DistributeSlab, GivesThePartsOfBoxes) {
  for (std::string const text : {"box:1,1,1", "box:3,1,1", "box:7,6,5", "box:4,4,4:tet", "box:4,4,4:dual"}) {
    SCOPED_TRACE(text);
    ExpectExtractedAlways(MakeBox(ParseBoxSpec(text)));
  }
}

TEST(DistributeSlab, GivesThePartsOfShuffledMeshes) {
  ExpectExtractedAlways(Shuffled(test_meshes::TetBox(4), 1));
  ExpectExtractedAlways(Shuffled(test_meshes::MixedBox(4), 2));
  ExpectExtractedAlways(Shuffled(test_meshes::PolyBox(2), 3));
}

TEST(DistributeSlab, GivesThePartsOfPeriodicMeshes) {
  for (test_meshes::NamedMesh const& mesh : test_meshes::PeriodicMeshes()) {
    SCOPED_TRACE(mesh.name);
    ExpectExtractedAlways(mesh.mesh);
  }
}

TEST(DistributeSlab, GivesThePartsOfMeshesThatTouchInNodesOrNotAtAll) {
  ExpectExtractedAlways(CubesThatTouchInNodesAndEdges());
}

TEST(DistributeSlab, GivesThePartsOfFiles) {
  for (std::string const file : {"gmsh/box_41_binary.msh", "gmsh/box_22.msh", "openfoam_cases/cavity",
                                 "openfoam_warped", "openfoam_cases/symmetry"}) {
    SCOPED_TRACE(file);
    FaceMesh mesh = ReadMesh(std::string(ZYN_TEST_DATA) + "/" + file);
    JoinPeriods(mesh);
    ExpectExtractedAlways(mesh);
  }
  FaceMesh channel = ReadMesh(ZYN_TEST_DATA "/openfoam_cases/channel");
  JoinPeriods(channel);
  ASSERT_FALSE(channel.periods.empty());
  ExpectExtractedAlways(channel);
}

// More faces than travel in one round.
TEST(DistributeSlab, GivesThePartsOfAMeshThatTakesSeveralRounds) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  FaceMesh const whole = MakeBox(ParseBoxSpec("box:24,24,24:tet"));
  ASSERT_GT(whole.nFaces(), 2 * 65536);
  ExpectExtracted(whole, test_meshes::RunParts(whole.nCells, world.size()), EvenBlocks(whole, world));
  ExpectExtracted(whole, test_meshes::RandomParts(whole.nCells, world.size()), UnevenBlocks(whole, world, 3));
}

TEST(DistributeSlab, RefusesPartNumbersOutOfRangeAndPeriodsThatAreNotJoined) {
  FaceMesh const whole = MakeBox(ParseBoxSpec("box:4,3,2"));
  std::vector<int> parts(static_cast<std::size_t>(whole.nCells), 0);
  parts[5] = RankCount();
  parts[20] = -1;
  EXPECT_EQ(RefusalOf(whole, parts, "m"), "m: partition puts cell 6 into part " +
                                              std::to_string(RankCount()) + " of " +
                                              std::to_string(RankCount()) + " (counted from 0)");
  FaceMesh periodic = test_meshes::HexBox(2, 2, 2);
  test_meshes::AddPeriod(periodic, 0);
  EXPECT_EQ(RefusalOf(periodic, std::vector<int>(8, 0), "m"), "m: the periods of the mesh are not joined");
}

}  // namespace reference_host::test
