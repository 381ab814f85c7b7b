#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "MpiTestSupport.h"
#include "reference_host/mesh/FaceMeshBuilder.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/slabs/CellSlab.h"
#include "reference_host/slabs/MpiLists.h"

namespace reference_host::test {
namespace {

struct StandardCell {
  CellShape shape = CellShape::Tetrahedron;
  std::vector<int> nodes;
};

struct SurfaceElement {
  ShortFace<int> nodes = {};
  int label = 0;
};

/// Standard cells and surface elements of a whole mesh.
struct StandardCells {
  std::vector<Point> points;
  std::vector<StandardCell> cells;
  std::vector<SurfaceElement> surfaces;
};

std::string NameOfTestCell(std::int64_t cell) { return "element " + std::to_string(10 * cell + 7); }

/// Divides a cube with these corners, in the order of a hexahedron, into cells of one kind.
void AddCube(std::array<int, 8> const& n, int kind, StandardCells& mesh) {
  auto const add = [&](CellShape shape, std::vector<int> const& positions) {
    std::vector<int> nodes;
    for (int const p : positions) nodes.push_back(p < 8 ? n[p] : static_cast<int>(mesh.points.size()) - 1);
    mesh.cells.push_back({shape, nodes});
  };
  if (kind == 0) {
    add(CellShape::Hexahedron, {0, 1, 2, 3, 4, 5, 6, 7});
  } else if (kind == 1) {
    add(CellShape::Prism, {0, 1, 2, 4, 5, 6});
    add(CellShape::Prism, {0, 2, 3, 4, 6, 7});
  } else if (kind == 2) {  // around the diagonal from 0 to 6
    for (auto const& [a, b] : {std::pair(1, 2), {2, 3}, {3, 7}, {7, 4}, {4, 5}, {5, 1}}) {
      add(CellShape::Tetrahedron, {0, a, b, 6});
    }
  } else {  // around a node in the middle, position 8
    Point centre = {0, 0, 0};
    for (int const node : n) {
      for (int d = 0; d < 3; ++d) centre[d] += mesh.points[node][d] / 8;
    }
    mesh.points.push_back(centre);
    for (auto const& base :
         {std::array{0, 1, 2, 3}, {4, 7, 6, 5}, {0, 4, 5, 1}, {1, 5, 6, 2}, {2, 6, 7, 3}, {3, 7, 4, 0}}) {
      add(CellShape::Pyramid, {base[0], base[1], base[2], base[3], 8});
    }
  }
}

/// m x m x m cubes, each divided at random, with cells and nodes in random order, some cells inside out, some nodes
/// that no cell uses. Surfaces lie on faces at the boundary and between cells, some twice, and some on no face.
/// @param[in] kinds  of AddCube
StandardCells RandomCells(int m, std::vector<int> const& kinds, unsigned seed, bool shuffled) {
  std::mt19937 random(seed);
  auto const below = [&](std::size_t n) { return static_cast<int>(random() % n); };
  StandardCells mesh;
  auto const node = [m](int i, int j, int k) { return i + (m + 1) * (j + (m + 1) * k); };
  for (int k = 0; k <= m; ++k) {
    for (int j = 0; j <= m; ++j) {
      for (int i = 0; i <= m; ++i) {
        auto const moved = [&](int x) { return x + 0.001 * below(100); };
        mesh.points.push_back({moved(i), moved(j), moved(k)});
      }
    }
  }
  for (int k = 0; k < m; ++k) {
    for (int j = 0; j < m; ++j) {
      for (int i = 0; i < m; ++i) {
        AddCube({node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k), node(i, j + 1, k),
                 node(i, j, k + 1), node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)},
                kinds[below(kinds.size())], mesh);
      }
    }
  }
  for (StandardCell& cell : mesh.cells) {  // swaps two corners of a triangle: inside out, and the same faces
    if (cell.shape == CellShape::Tetrahedron && below(4) == 0) std::swap(cell.nodes[0], cell.nodes[1]);
  }
  for (int i = 0; i < 5; ++i) mesh.points.push_back({-1.0 - i, 0, 0});

  for (StandardCell const& cell : mesh.cells) {
    for (int local = 0; local < FaceCount(cell.shape); ++local) {
      ShortFace<int> nodes = FaceOfCell(cell.shape, local, cell.nodes.data());
      if (below(3) > 0) continue;
      std::rotate(nodes.begin(), nodes.begin() + below(3), nodes.begin() + NodeCountOfFace(nodes));
      if (below(2) == 0) std::reverse(nodes.begin(), nodes.begin() + NodeCountOfFace(nodes));
      for (int n = below(8); n < 2; ++n) mesh.surfaces.push_back({nodes, below(1000)});
      mesh.surfaces.push_back({nodes, below(1000)});
    }
  }
  mesh.surfaces.push_back({{0, node(1, 0, 0), static_cast<int>(mesh.points.size()) - 1, -1}, 3});

  if (shuffled) {
    std::vector<int> newNumber(mesh.points.size());
    std::iota(newNumber.begin(), newNumber.end(), 0);
    std::shuffle(newNumber.begin(), newNumber.end(), random);
    std::vector<Point> points(mesh.points.size());
    for (std::size_t n = 0; n < points.size(); ++n) points[newNumber[n]] = mesh.points[n];
    mesh.points = std::move(points);
    for (StandardCell& cell : mesh.cells) {
      for (int& n : cell.nodes) n = newNumber[n];
    }
    for (SurfaceElement& surface : mesh.surfaces) {
      for (int i = 0; i < NodeCountOfFace(surface.nodes); ++i) surface.nodes[i] = newNumber[surface.nodes[i]];
    }
    std::shuffle(mesh.cells.begin(), mesh.cells.end(), random);
    std::shuffle(mesh.surfaces.begin(), mesh.surfaces.end(), random);
  }
  return mesh;
}

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
