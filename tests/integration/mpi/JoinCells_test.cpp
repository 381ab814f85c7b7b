#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "MpiTestSupport.h"
#include "RandomCells.h"
#include "reference_host/mesh/FaceMeshBuilder.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/slabs/CellSlab.h"
#include "reference_host/slabs/MpiLists.h"

namespace reference_host::test {
namespace {

std::string NameOfTestCell(std::int64_t cell) { return "element " + std::to_string(10 * cell + 7); }

FaceMesh Built(StandardCells const& whole, std::vector<int>& keptPoints) {
  FaceMeshBuilder builder("mesh", whole.points, {{"unnamed", "", {}}});
  builder.SetCellNamer([](int cell) { return NameOfTestCell(cell); });
  for (StandardCell const& cell : whole.cells) builder.AddCell(cell.shape, cell.nodes.data());
  for (SurfaceElement const& surface : whole.surfaces) {
    builder.AddSurface(surface.nodes.data(), NodeCountOfFace(surface.nodes), 1 + surface.label);
  }
  FaceMesh mesh = builder.Build();
  keptPoints = builder.KeptPoints();
  return mesh;
}

/// The own share of the whole, of which every rank has a copy.
/// @param[in] blocksOf  the blocks of n items, the same on every rank
CellSlab ShareOf(StandardCells const& whole, std::function<BlockRanges(std::size_t n)> const& blocksOf) {
  int const rank = Rank();
  CellSlab slab;
  slab.nodes = blocksOf(whole.points.size());
  slab.cells = blocksOf(whole.cells.size());
  BlockRanges const surfaces = blocksOf(whole.surfaces.size());
  slab.points.assign(whole.points.begin() + slab.nodes.First(rank),
                     whole.points.begin() + slab.nodes.End(rank));
  for (std::int64_t c = slab.cells.First(rank); c < slab.cells.End(rank); ++c) {
    StandardCell const& cell = whole.cells[static_cast<std::size_t>(c)];
    slab.shape.push_back(cell.shape);
    slab.node.insert(slab.node.end(), cell.nodes.begin(), cell.nodes.end());
  }
  for (std::int64_t s = surfaces.First(rank); s < surfaces.End(rank); ++s) {
    SurfaceElement const& surface = whole.surfaces[static_cast<std::size_t>(s)];
    slab.surface.push_back({surface.nodes[0], surface.nodes[1], surface.nodes[2], surface.nodes[3]});
    slab.label.push_back(surface.label);
  }
  slab.nodeNumber = [nodes = slab.nodes, rank](std::int64_t node) {
    EXPECT_EQ(nodes.BlockOf(node), rank);
    return 3 * node + 1;
  };
  slab.nameOfCell = [cells = slab.cells, rank](std::int64_t cell) {
    EXPECT_EQ(cells.BlockOf(cell), rank);
    return NameOfTestCell(cell);
  };
  return slab;
}

BlockRanges EvenBlocks(std::size_t n) { return BlockRanges::Even(static_cast<std::int64_t>(n), RankCount()); }

/// All on the last rank but one item on the first.
BlockRanges LopsidedBlocks(std::size_t n) {
  std::vector<std::int64_t> starts(static_cast<std::size_t>(RankCount()) + 1, 1);
  starts.front() = 0;
  starts.back() = static_cast<std::int64_t>(n);
  return BlockRanges(std::move(starts));
}

using Numbers = std::vector<std::int64_t>;

template <class T>
Numbers Piece(std::vector<T> const& all, std::int64_t begin, std::int64_t end) {
  return Numbers(all.begin() + begin, all.begin() + end);
}

void ExpectSameAsBuilder(StandardCells const& whole,
                         std::function<BlockRanges(std::size_t)> const& blocksOf) {
  std::vector<int> kept;
  FaceMesh const mesh = Built(whole, kept);
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  int const rank = Rank();
  CellSlab share = ShareOf(whole, blocksOf);
  BlockRanges const fileNodes = share.nodes;
  JoinedSlab const joined = JoinCells(communicator, "mesh", std::move(share));
  MeshSlab const& slab = joined.mesh;

  ASSERT_EQ(slab.cells.nItems(), mesh.nCells);
  ASSERT_EQ(slab.faces.nItems(), mesh.nFaces());
  ASSERT_EQ(slab.nodes.nItems(), static_cast<std::int64_t>(mesh.points.size()));

  ASSERT_EQ(static_cast<std::int64_t>(slab.points.size()), slab.nodes.Size(rank));
  for (std::int64_t n = slab.nodes.First(rank); n < slab.nodes.End(rank); ++n) {
    EXPECT_EQ(slab.points[static_cast<std::size_t>(n - slab.nodes.First(rank))],
              mesh.points[static_cast<std::size_t>(n)]);
    std::int64_t const inFile = kept[static_cast<std::size_t>(n)];
    EXPECT_EQ(slab.names.nodeNumber(n), 3 * inFile + 1);
    EXPECT_EQ(joined.numberOfNode[static_cast<std::size_t>(inFile - fileNodes.First(rank))], n);
  }
  EXPECT_EQ(slab.nodes.Size(rank),
            static_cast<std::int64_t>(joined.numberOfNode.size()) -
                std::count(joined.numberOfNode.begin(), joined.numberOfNode.end(), -1));

  std::int64_t const begin = slab.faces.First(rank), end = slab.faces.End(rank);
  EXPECT_EQ(slab.owner, Piece(mesh.owner, begin, end));
  EXPECT_EQ(slab.neighbour, Piece(mesh.neighbour, begin, end));
  auto const firstNode = static_cast<std::int64_t>(mesh.faceStart[static_cast<std::size_t>(begin)]);
  EXPECT_EQ(slab.faceNode, Piece(mesh.faceNode, firstNode,
                                 static_cast<std::int64_t>(mesh.faceStart[static_cast<std::size_t>(end)])));
  Numbers const starts = Piece(mesh.faceStart, begin, end + 1);
  ASSERT_EQ(slab.faceStart.size(), starts.size());
  for (std::size_t f = 0; f < starts.size(); ++f) {
    EXPECT_EQ(static_cast<std::int64_t>(slab.faceStart[f]), starts[f] - firstNode);
  }
  Numbers labels;
  for (std::int64_t const patch : Piece(mesh.facePatch, begin, end))
    labels.push_back(patch > 0 ? patch - 1 : -1);
  EXPECT_EQ(joined.labelOfFace, labels);
  EXPECT_EQ(slab.facePatch, std::vector<int>(slab.nOwnFaces(), -1));
  for (std::int64_t const owner : slab.owner) {
    EXPECT_EQ(slab.cells.BlockOf(owner), rank);
    EXPECT_EQ(slab.names.cell(owner), NameOfTestCell(owner));
  }
}

/// The message, which must be the builder's.
std::string Refusal(StandardCells const& whole) {
  std::string expected;
  try {
    std::vector<int> kept;
    Built(whole, kept);
  } catch (MeshError const& error) {
    expected = error.what();
  }
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  std::string const text =
      ErrorOnEveryRank([&] { JoinCells(communicator, "mesh", ShareOf(whole, EvenBlocks)); });
  EXPECT_EQ(text, expected);
  return text;
}

}  // namespace

TEST(JoinCells, MakesWhatTheBuilderMakesOfTheWhole) {
  for (std::vector<int> const& kinds : {std::vector{0}, {1}, {2}, {3}, {0, 1, 2, 3}}) {
    for (bool const shuffled : {false, true}) {
      StandardCells const whole = RandomCells(4, kinds, 5, shuffled);
      ExpectSameAsBuilder(whole, EvenBlocks);
      ExpectSameAsBuilder(whole, LopsidedBlocks);
    }
  }
}

TEST(JoinCells, TakesMeshesWithFewerCellsThanRanks) {
  for (int const kind : {0, 1}) ExpectSameAsBuilder(RandomCells(1, {kind}, 3, true), EvenBlocks);
}

TEST(JoinCells, TakesMeshesOfSeveralRounds) {
  // More sides travel than one rank sends in one round.
  StandardCells const whole = RandomCells(26, {2}, 8, true);
  ExpectSameAsBuilder(whole, EvenBlocks);
}

TEST(JoinCells, RefusesACellWithANodeTwice) {
  StandardCells whole = RandomCells(3, {0, 2}, 1, true);
  for (std::size_t const c : {whole.cells.size() - 2, whole.cells.size() / 2}) {
    whole.cells[c].nodes[3] = whole.cells[c].nodes[1];
    EXPECT_EQ(Refusal(whole), "mesh: " + NameOfTestCell(static_cast<std::int64_t>(c)) + " has a node twice");
  }
}

TEST(JoinCells, RefusesTheFirstFaceOfThreeCells) {
  for (unsigned seed = 1; seed <= 10; ++seed) {
    StandardCells whole = RandomCells(3, {0, 1, 2, 3}, seed, true);
    // A further cell on a face of another: perhaps its third, perhaps with its nodes in an impossible order.
    for (int i = 0; i < 3; ++i) {
      whole.cells.insert(
          whole.cells.begin() + static_cast<std::ptrdiff_t>(20 * i * seed % whole.cells.size()),
          whole.cells[(7 * i + seed) % whole.cells.size()]);
      std::size_t const tip = whole.points.size();
      whole.points.push_back({0.3, 0.2 * i, 0.1});
      StandardCell& copy = whole.cells[(31 * seed) % whole.cells.size()];
      if (i == 2) copy.nodes.back() = static_cast<int>(tip);
    }
    std::string const text = Refusal(whole);
    EXPECT_TRUE(text.find("a face has two sides") != std::string::npos ||
                text.find("lies on the same side of a common face") != std::string::npos)
        << text;
  }
}

TEST(JoinCells, SeesAThirdCellBesideTwoThatMeetOnTheirRank) {
  // Two tetrahedra on the triangle 0 1 2, which the last rank alone could not find fault with.
  StandardCells whole;
  whole.points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, -1}, {0.2, 0.2, 2}};
  whole.cells = {{CellShape::Tetrahedron, {0, 1, 2, 3}}, {CellShape::Tetrahedron, {0, 2, 1, 4}}};
  for (int i = 0; i < 30; ++i) {  // beside each other
    int const n = static_cast<int>(whole.points.size());
    for (Point const& p : {Point{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}) {
      whole.points.push_back({p[0] + 5 * (i + 1), p[1], p[2]});
    }
    whole.cells.push_back({CellShape::Tetrahedron, {n, n + 1, n + 2, n + 3}});
  }
  ExpectSameAsBuilder(whole, EvenBlocks);
  whole.cells.push_back({CellShape::Tetrahedron, {0, 1, 2, 5}});
  EXPECT_EQ(Refusal(whole), "mesh: " + NameOfTestCell(32) + " shares a face with " + NameOfTestCell(0) +
                                " and " + NameOfTestCell(1) + ": a face has two sides");
  whole.cells.erase(whole.cells.begin() + 1);
  EXPECT_EQ(Refusal(whole), "mesh: " + NameOfTestCell(31) + " lies on the same side of a common face as " +
                                NameOfTestCell(0) + " (the cell occurs twice, or cells overlap)");
}

}  // namespace reference_host::test
