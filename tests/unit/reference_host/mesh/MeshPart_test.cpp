#include "reference_host/mesh/MeshPart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "reference_host/mesh/MeshError.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace reference_host {
namespace {

using namespace test_meshes;

std::vector<std::int64_t> GlobalNodes(MeshPart const& part, int const* begin, int const* end) {
  std::vector<std::int64_t> nodes;
  for (; begin != end; ++begin) nodes.push_back(part.globalNode[*begin]);
  return nodes;
}

std::set<std::int64_t> NodesOfCell(FaceMesh const& mesh, std::int64_t cell) {
  std::set<std::int64_t> nodes;
  for (int f = 0; f < mesh.nFaces(); ++f) {
    if (mesh.owner[f] != cell && mesh.neighbour[f] != cell) continue;
    nodes.insert(mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
                 mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]));
  }
  return nodes;
}

TEST(MeshPart, SinglePartIsTheWholeMesh) {
  FaceMesh const mesh = MixedBox(3);
  MeshPart const part = ExtractPart(mesh, std::vector<int>(mesh.nCells, 0), 0, 1);
  EXPECT_EQ(part.nOwned, mesh.nCells);
  EXPECT_EQ(0, part.nHalo());
  EXPECT_EQ(part.points, mesh.points);
  EXPECT_EQ(part.faceStart, mesh.faceStart);
  EXPECT_EQ(part.faceNode, mesh.faceNode);
  EXPECT_EQ(part.owner, mesh.owner);
  EXPECT_EQ(part.neighbour, mesh.neighbour);
  EXPECT_EQ(part.facePatch, mesh.facePatch);
}

TEST(MeshPart, TwoHexahedraShareOneFaceAndSeeEachOther) {
  std::vector<MeshPart> const parts = SplitMesh(HexBox(2, 1, 1), {1, 0}, 2);
  for (int p = 0; p < 2; ++p) {
    MeshPart const& part = parts[p];
    EXPECT_EQ(part.part, p);
    EXPECT_EQ(2, part.nParts);
    EXPECT_EQ(1, part.nOwned);
    EXPECT_EQ(6, part.nFaces());
    EXPECT_EQ(12u, part.points.size());  // the halo cell's nodes too
    EXPECT_EQ(part.globalCell, (p == 0 ? std::vector<std::int64_t>{1, 0} : std::vector<std::int64_t>{0, 1}));
    EXPECT_EQ(std::vector<int>{1 - p}, part.haloPart);
    EXPECT_EQ(8u, part.haloNode.size());
  }
}

TEST(MeshPart, KeepsOrderDirectionAndNodesOfEveryFace) {
  for (auto const& [name, mesh] : AllMeshes()) {
    SCOPED_TRACE(name);
    std::vector<int> const partOfCell = RandomParts(mesh.nCells, 3);
    for (MeshPart const& part : SplitMesh(mesh, partOfCell, 3)) {
      int local = 0;
      for (int f = 0; f < mesh.nFaces(); ++f) {
        int const a = mesh.owner[f], b = mesh.neighbour[f];
        if (partOfCell[a] != part.part && (b < 0 || partOfCell[b] != part.part)) continue;
        ASSERT_LT(local, part.nFaces());
        EXPECT_EQ(part.globalCell[part.owner[local]], a);
        EXPECT_EQ(part.neighbour[local] < 0 ? -1 : part.globalCell[part.neighbour[local]], b);
        EXPECT_EQ(part.facePatch[local], mesh.facePatch[f]);
        std::vector<std::int64_t> const nodes(
            mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
            mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]));
        EXPECT_EQ(GlobalNodes(part, part.faceNode.data() + part.faceStart[local],
                              part.faceNode.data() + part.faceStart[local + 1]),
                  nodes);
        ++local;
      }
      EXPECT_EQ(local, part.nFaces());
    }
  }
}

TEST(MeshPart, OwnedAndHaloCellsAscendAndHaloCellsTouchOwnedOnes) {
  FaceMesh const mesh = MixedBox(4);
  std::vector<int> const partOfCell = RandomParts(mesh.nCells, 4);
  for (MeshPart const& part : SplitMesh(mesh, partOfCell, 4)) {
    auto const firstHalo = part.globalCell.begin() + part.nOwned;
    EXPECT_TRUE(std::is_sorted(part.globalCell.begin(), firstHalo));
    EXPECT_TRUE(std::is_sorted(firstHalo, part.globalCell.end()));
    EXPECT_EQ(part.nOwned, std::count(partOfCell.begin(), partOfCell.end(), part.part));

    std::set<std::int64_t> expected;
    for (int f = 0; f < mesh.nFaces(); ++f) {
      int const a = mesh.owner[f], b = mesh.neighbour[f];
      if (b < 0 || (partOfCell[a] == part.part) == (partOfCell[b] == part.part)) continue;
      expected.insert(partOfCell[a] == part.part ? b : a);
    }
    EXPECT_EQ(std::set<std::int64_t>(firstHalo, part.globalCell.end()), expected);
    ASSERT_EQ(static_cast<std::size_t>(part.nHalo()), expected.size());
    for (int h = 0; h < part.nHalo(); ++h) {
      EXPECT_EQ(part.haloPart[h], partOfCell[part.globalCell[part.nOwned + h]]);
    }
  }
}

TEST(MeshPart, HaloCellsComeWithAllTheirNodesAndPointsAreThoseOfTheMesh) {
  for (auto const& [name, mesh] : AllMeshes()) {
    SCOPED_TRACE(name);
    for (MeshPart const& part : SplitMesh(mesh, RunParts(mesh.nCells, 3), 3)) {
      EXPECT_TRUE(std::is_sorted(part.globalNode.begin(), part.globalNode.end()));
      std::set<std::int64_t> nodesOfPart;
      for (int c = 0; c < part.nOwned; ++c) nodesOfPart.merge(NodesOfCell(mesh, part.globalCell[c]));
      for (int h = 0; h < part.nHalo(); ++h) {
        std::vector<std::int64_t> const nodes =
            GlobalNodes(part, part.haloNode.data() + part.haloNodeStart[h],
                        part.haloNode.data() + part.haloNodeStart[h + 1]);
        std::set<std::int64_t> expected = NodesOfCell(mesh, part.globalCell[part.nOwned + h]);
        EXPECT_EQ(nodes, std::vector<std::int64_t>(expected.begin(), expected.end()));
        nodesOfPart.merge(expected);
      }
      EXPECT_EQ(part.globalNode, std::vector<std::int64_t>(nodesOfPart.begin(), nodesOfPart.end()));
      for (std::size_t i = 0; i < part.points.size(); ++i) {
        EXPECT_EQ(part.points[i], mesh.points[part.globalNode[i]]);
      }
    }
  }
}

TEST(MeshPart, ExtractedPartEqualsThatOfTheSplit) {
  FaceMesh const mesh = PolyBox(2);
  std::vector<int> const partOfCell = RandomParts(mesh.nCells, 3);
  std::vector<MeshPart> const parts = SplitMesh(mesh, partOfCell, 3);
  for (int p = 0; p < 3; ++p) {
    MeshPart const part = ExtractPart(mesh, partOfCell, p, 3);
    EXPECT_EQ(part.globalCell, parts[p].globalCell);
    EXPECT_EQ(part.globalNode, parts[p].globalNode);
    EXPECT_EQ(part.faceNode, parts[p].faceNode);
    EXPECT_EQ(part.owner, parts[p].owner);
    EXPECT_EQ(part.neighbour, parts[p].neighbour);
    EXPECT_EQ(part.haloPart, parts[p].haloPart);
    EXPECT_EQ(part.haloNode, parts[p].haloNode);
    EXPECT_EQ(part.haloNodeStart, parts[p].haloNodeStart);
  }
}

TEST(MeshPart, PartWithoutCellsIsEmptyButKnowsThePatches) {
  MeshPart const part = ExtractPart(HexBox(2, 1, 1), {0, 2}, 1, 3);
  EXPECT_EQ(0, part.nOwned);
  EXPECT_EQ(0, part.nHalo());
  EXPECT_EQ(0, part.nFaces());
  EXPECT_TRUE(part.points.empty());
  EXPECT_EQ(4u, part.patches.size());
}

std::string ErrorOf(std::vector<int> const& partOfCell) {
  try {
    SplitMesh(HexBox(2, 1, 1), partOfCell, 2);
  } catch (MeshError const& error) {
    return error.what();
  }
  return "";
}

TEST(MeshPart, WrongPartNumbersAreRefusedWithTheFirstCell) {
  EXPECT_EQ("", ErrorOf({0, 1}));
  EXPECT_EQ("partition has 1 part numbers for 2 cells", ErrorOf({0}));
  EXPECT_EQ("partition puts cell 2 into part 2 of 2 (counted from 0)", ErrorOf({0, 2}));
  EXPECT_EQ("partition puts cell 1 into part -1 of 2 (counted from 0)", ErrorOf({-1, 0}));
}

}  // namespace
}  // namespace reference_host
