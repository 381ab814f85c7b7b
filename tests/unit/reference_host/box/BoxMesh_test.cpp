#include "reference_host/box/BoxMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <numeric>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

std::vector<std::string> const kSpecs = {"box:1,1,1",
                                         "box:1,1,1:tet",
                                         "box:1,1,1:prism",
                                         "box:4,3,2",
                                         "box:4,3,2:tet",
                                         "box:2,3,4:prism",
                                         "box:7,1,1",
                                         "box:1,5,2:tet",
                                         "box:3,3,3:hex:perturb=0.3,seed=5",
                                         "box:4,3,3:tet:perturb=0.1,seed=1",
                                         "box:3,4,3:prism:perturb=0.2",
                                         "box:4,3,2:hex:stretch=50",
                                         "box:3,4,2:tet:perturb=0.1,stretch=3,skew=0.1",
                                         "box:4,2,3:dual",
                                         "box:1,1,1:dual",
                                         "box:6,1,2:dual",
                                         "box:1,5,1:dual:stretch=3,skew=0.1",
                                         "box:3,3,3:dual:perturb=0.2,seed=2"};

void ExpectSamePatches(std::vector<Patch> const& a, std::vector<Patch> const& b) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t p = 0; p < a.size(); ++p) {
    EXPECT_EQ(a[p].name, b[p].name);
    EXPECT_EQ(a[p].type, b[p].type);
    EXPECT_EQ(a[p].group, b[p].group);
  }
}

void ExpectSamePart(MeshPart const& a, MeshPart const& b) {
  EXPECT_EQ(a.part, b.part);
  EXPECT_EQ(a.nParts, b.nParts);
  EXPECT_EQ(a.points, b.points);
  EXPECT_EQ(a.globalNode, b.globalNode);
  EXPECT_EQ(a.nOwned, b.nOwned);
  EXPECT_EQ(a.globalCell, b.globalCell);
  EXPECT_EQ(a.haloPart, b.haloPart);
  EXPECT_EQ(a.haloPeriod, b.haloPeriod);
  EXPECT_EQ(a.haloNodeStart, b.haloNodeStart);
  EXPECT_EQ(a.haloNode, b.haloNode);
  EXPECT_EQ(a.faceStart, b.faceStart);
  EXPECT_EQ(a.faceNode, b.faceNode);
  EXPECT_EQ(a.owner, b.owner);
  EXPECT_EQ(a.neighbour, b.neighbour);
  EXPECT_EQ(a.facePatch, b.facePatch);
  ExpectSamePatches(a.patches, b.patches);
}

int CubesOf(BoxSpec const& spec) { return spec.nx * spec.ny * spec.nz; }

}  // namespace

TEST(BoxMesh, CountsCellsFacesAndNodesAsTheShapesDemand) {
  // A cube of n^3 cubes: nodes (n+1)^3; a quadrilateral between or on cubes: 3 n^2 (n+1).
  int const n = 3, nodes = 64, quadrilaterals = 3 * n * n * (n + 1), cubes = n * n * n;
  std::map<std::string, std::pair<int, int>> const expected = {
      {"hex", {cubes, quadrilaterals}},
      {"tet", {6 * cubes, 6 * cubes + 2 * quadrilaterals}},
      {"prism", {2 * cubes, cubes + quadrilaterals + n * n * (n + 1)}}};
  for (auto const& [shape, counts] : expected) {
    FaceMesh const mesh = MakeBox(ParseBoxSpec("box:3,3,3:" + shape));
    EXPECT_EQ(mesh.points.size(), static_cast<std::size_t>(nodes));
    EXPECT_EQ(mesh.nCells, counts.first);
    EXPECT_EQ(mesh.nFaces(), counts.second);
  }
}

TEST(BoxMesh, CellsAreClosedAndOfEqualPositiveVolume) {
  for (std::string const& text : kSpecs) {
    BoxSpec const spec = ParseBoxSpec(text);
    FaceMesh const mesh = MakeBox(spec);
    CellGeometry const cells = ComputeCellGeometry(mesh, mesh.nCells);
    double const edge = 1.0 / std::max({spec.nx, spec.ny, spec.nz});
    double const total = edge * edge * edge * CubesOf(spec);
    EXPECT_NEAR(std::accumulate(cells.volume.begin(), cells.volume.end(), 0.0), total, 1e-14) << text;
    for (double const volume : cells.volume) {
      EXPECT_GT(volume, 0.0) << text;
      if (spec.perturb == 0.0 && spec.stretch == 1.0 && spec.shape != BoxSpec::Shape::Dual) {
        EXPECT_NEAR(volume, total / mesh.nCells, 1e-15) << text;
      }
    }

    std::vector<Point> sum(static_cast<std::size_t>(mesh.nCells), Point{});
    for (int f = 0; f < mesh.nFaces(); ++f) {
      auto const begin = mesh.faceStart[static_cast<std::size_t>(f)];
      auto const end = mesh.faceStart[static_cast<std::size_t>(f) + 1];
      Point const area =
          ComputeFaceGeometry(mesh.points, mesh.faceNode.data() + begin, static_cast<int>(end - begin)).area;
      int const owner = mesh.owner[static_cast<std::size_t>(f)],
                other = mesh.neighbour[static_cast<std::size_t>(f)];
      for (std::size_t d = 0; d < 3; ++d) {
        sum[static_cast<std::size_t>(owner)][d] += area[d];
        if (other >= 0) sum[static_cast<std::size_t>(other)][d] -= area[d];
      }
    }
    for (Point const& s : sum) {
      for (double const component : s) EXPECT_NEAR(0.0, component, 1e-15) << text;
    }
  }
}

TEST(BoxMesh, FacesAscendByOwnerAndJoinEachPairOfCellsOnce) {
  for (std::string const& text : kSpecs) {
    FaceMesh const mesh = MakeBox(ParseBoxSpec(text));
    EXPECT_TRUE(std::is_sorted(mesh.owner.begin(), mesh.owner.end())) << text;
    std::set<std::pair<int, int>> pairs;
    for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
      EXPECT_EQ(mesh.neighbour[f] < 0, mesh.facePatch[f] >= 0) << text;
      if (mesh.neighbour[f] < 0) continue;
      EXPECT_LT(mesh.owner[f], mesh.neighbour[f]) << text;
      EXPECT_TRUE(pairs.insert({mesh.owner[f], mesh.neighbour[f]}).second) << text;
    }
  }
}

TEST(BoxMesh, BoundaryFacesLieOnThePlaneOfTheirPatch) {
  std::map<std::string, std::pair<std::size_t, double>> const planes = {
      {"inlet", {0, 0.0}},      {"outlet", {0, 1.0}},    {"wall_ymin", {1, 0.0}},
      {"wall_ymax", {1, 0.75}}, {"wall_zmin", {2, 0.0}}, {"wall_zmax", {2, 0.5}}};
  for (std::string const shape : {"hex", "tet", "prism", "dual"}) {
    FaceMesh const mesh =
        MakeBox(ParseBoxSpec("box:4,3,2:" + shape + ":perturb=0.2,seed=3,stretch=4,skew=0.05"));
    std::set<std::string> seen;
    for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
      if (mesh.facePatch[f] < 0) continue;
      std::string const& name = mesh.patches[static_cast<std::size_t>(mesh.facePatch[f])].name;
      seen.insert(name);
      auto const [direction, place] = planes.at(name);
      for (std::size_t i = mesh.faceStart[f]; i < mesh.faceStart[f + 1]; ++i) {
        EXPECT_EQ(mesh.points[static_cast<std::size_t>(mesh.faceNode[i])][direction], place);
      }
    }
    EXPECT_EQ(seen.size(), planes.size());
  }
}

TEST(BoxMesh, PerturbationMovesInteriorNodesAloneAndWithinItsBound) {
  double const edge = 0.25, amount = 0.4;
  FaceMesh const plain = MakeBox(ParseBoxSpec("box:4,4,4"));
  FaceMesh const moved = MakeBox(ParseBoxSpec("box:4,4,4:perturb=0.4,seed=9"));
  FaceMesh const again = MakeBox(ParseBoxSpec("box:4,4,4:perturb=0.4,seed=9"));
  FaceMesh const other = MakeBox(ParseBoxSpec("box:4,4,4:perturb=0.4,seed=10"));
  EXPECT_EQ(moved.points, again.points);
  EXPECT_NE(moved.points, other.points);
  double largest = 0.0;
  for (std::size_t p = 0; p < plain.points.size(); ++p) {
    Point const& at = plain.points[p];
    bool const surface = std::any_of(at.begin(), at.end(), [](double x) { return x == 0.0 || x == 1.0; });
    EXPECT_EQ(plain.points[p] == moved.points[p], surface);
    for (std::size_t d = 0; d < 3; ++d)
      largest = std::max(largest, std::abs(moved.points[p][d] - at[d]) / edge);
  }
  EXPECT_LE(largest, amount);
  EXPECT_GT(largest, 0.8 * amount);  // 81 draws from an even distribution
}

TEST(BoxMesh, NodeCountIsThatOfTheBox) {
  for (std::string const& text : kSpecs) {
    BoxSpec const spec = ParseBoxSpec(text);
    EXPECT_EQ(static_cast<std::size_t>(BoxNodeCount(spec)), MakeBox(spec).points.size()) << text;
  }
}

TEST(BoxMesh, PartsEqualTheSplitWholeBox) {
  for (std::string const& text : kSpecs) {
    BoxSpec const spec = ParseBoxSpec(text);
    FaceMesh const mesh = MakeBox(spec);
    for (int const nParts : {1, 2, 3, 4, 5, 7, 8, 23, 24, 27}) {
      if (nParts > CubesOf(spec)) continue;
      SCOPED_TRACE(text + " in " + std::to_string(nParts));
      std::vector<MeshPart> const expected = SplitMesh(mesh, BoxPartOfCell(spec, nParts), nParts);
      for (int part = 0; part < nParts; ++part) {
        ExpectSamePart(MakeBoxPart(spec, part, nParts), expected[static_cast<std::size_t>(part)]);
      }
    }
  }
}

TEST(BoxMesh, EveryPartHasCellsUpToOnePartPerCube) {
  for (std::string const text : {"box:2,2,2", "box:5,3,1", "box:1,1,7", "box:3,4,5"}) {
    BoxSpec const spec = ParseBoxSpec(text);
    for (int nParts = 1; nParts <= CubesOf(spec); ++nParts) {
      std::vector<int> const partOfCell = BoxPartOfCell(spec, nParts);
      std::vector<int> cells(static_cast<std::size_t>(nParts), 0);
      for (int const part : partOfCell) ++cells.at(static_cast<std::size_t>(part));
      EXPECT_GE(*std::min_element(cells.begin(), cells.end()), 1) << text << " in " << nParts;
    }
  }
}

TEST(BoxMesh, PartsAreBalancedBlocks) {
  BoxSpec const spec = ParseBoxSpec("box:20,20,20");
  for (int const nParts : {2, 3, 4, 5, 6, 7, 8, 12, 16}) {
    std::vector<int> cells(static_cast<std::size_t>(nParts), 0);
    for (int const part : BoxPartOfCell(spec, nParts)) ++cells[static_cast<std::size_t>(part)];
    double const mean = 8000.0 / nParts;
    EXPECT_LE(*std::max_element(cells.begin(), cells.end()), 1.25 * mean) << nParts;
  }
  // Eight parts of a cube are its octants.
  EXPECT_EQ(MakeBoxPart(spec, 0, 8).nHalo(), 3 * 100);
}

TEST(BoxMesh, MakesAPartOfABoxOf6e10CellsAlone) {
  std::int64_t const n = 4000;
  int const nParts = 1 << 20;
  for (std::string const shape : {"hex", "tet", "prism", "dual"}) {
    SCOPED_TRACE(shape);
    BoxSpec const spec = ParseBoxSpec("box:4000,4000,4000:" + shape);
    MeshPart const part = MakeBoxPart(spec, nParts - 1, nParts);
    std::int64_t const nInCube = shape == "tet" ? 6 : shape == "prism" ? 2 : 1;
    std::int64_t const side = shape == "dual" ? n + 1 : n;
    EXPECT_EQ(side * side * side * nInCube - 1, part.globalCell[static_cast<std::size_t>(part.nOwned) - 1]);
    EXPECT_EQ(BoxNodeCount(spec) - 1, part.globalNode.back());
    EXPECT_EQ((Point{1.0, 1.0, 1.0}), part.points.back());
    // A block of about 40^3 cubes, with halo cells on the three sides that are inside the box.
    EXPECT_NEAR(part.nOwned, 62000.0 * static_cast<double>(nInCube), 10000.0 * static_cast<double>(nInCube));
    EXPECT_GT(part.nHalo(), 3 * 30 * 30);
    EXPECT_LT(*std::max_element(part.haloPart.begin(), part.haloPart.end()), nParts - 1);
    CellGeometry const cells = ComputeCellGeometry(part, part.nOwned);
    double const cube = 1.0 / static_cast<double>(n * n * n);
    for (double const volume : cells.volume) {
      ASSERT_GT(volume, 0.0);
      ASSERT_LT(volume, 1.001 * cube);
    }
  }
}

TEST(BoxMesh, RefusesPartsThatA32BitNumberCannotCount) {
  auto const errorOf = [](std::string const& text, int nParts) -> std::string {
    BoxSpec const spec = ParseBoxSpec(text);
    try {
      CheckBoxPartsFit(spec, nParts);
    } catch (MeshError const& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ("", errorOf("box:890,890,890", 1));  // 2.117e9 faces
  EXPECT_EQ("box:895,895,895: the box has more cells, faces or nodes than a 32-bit number can count",
            errorOf("box:895,895,895", 1));  // 2.153e9 faces
  EXPECT_EQ("", errorOf("box:895,895,895", 2));
  EXPECT_NE("", errorOf("box:600,600,600:tet", 1));  // 2.6e9 faces
  EXPECT_NE("", errorOf("box:600,600,600:dual", 1));
  EXPECT_EQ("", errorOf("box:600,600,600:dual", 3));
  EXPECT_EQ(
      "box:4000,4000,4000: part 1 of 16 has more cells, faces or nodes than a 32-bit number can count; "
      "more ranks have smaller parts",
      errorOf("box:4000,4000,4000", 16));
  EXPECT_EQ("", errorOf("box:4000,4000,4000", 128));
  EXPECT_THROW(MakeBoxPart(ParseBoxSpec("box:4000,4000,4000:tet"), 3, 16), MeshError);
  EXPECT_THROW(MakeBox(ParseBoxSpec("box:4000,4000,4000:dual")), MeshError);
}

TEST(BoxMesh, RefusesMorePartsThanCubes) {
  BoxSpec const spec = ParseBoxSpec("box:2,1,1:tet");
  EXPECT_NO_THROW(MakeBoxPart(spec, 0, 2));
  EXPECT_THROW(MakeBoxPart(spec, 0, 3), MeshError);
  EXPECT_THROW(BoxPartOfCell(spec, 3), MeshError);
}

}  // namespace reference_host
