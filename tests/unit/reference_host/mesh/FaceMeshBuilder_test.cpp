#include "reference_host/mesh/FaceMeshBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <string>
#include <vector>

#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/MeshCheck.h"
#include "tests/unit/reference_host/MeshTestSupport.h"

namespace {

using reference_host::CellShape;
using reference_host::CheckMesh;
using reference_host::FaceMesh;
using reference_host::FaceMeshBuilder;
using reference_host::Patch;
using reference_host::Point;

struct ReferenceCell {
  CellShape shape;
  std::vector<Point> points;
  double volume;
  int nFaces;
};

std::vector<ReferenceCell> const kCells = {
    {CellShape::Tetrahedron, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, 1.0 / 6, 4},
    {CellShape::Hexahedron,
     {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}},
     1.0,
     6},
    {CellShape::Prism, {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}}, 0.5, 5},
    {CellShape::Pyramid, {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 1}}, 1.0 / 3, 5},
};

FaceMesh BuildOne(ReferenceCell const& cell) {
  FaceMeshBuilder builder("mesh", cell.points, {});
  std::vector<int> nodes(cell.points.size());
  std::iota(nodes.begin(), nodes.end(), 0);
  builder.AddCell(cell.shape, nodes.data());
  return builder.Build();
}

TEST(FaceMeshBuilder, ClosesEveryStandardCell) {
  for (ReferenceCell const& cell : kCells) {
    EXPECT_EQ(reference_host::NodeCount(cell.shape), static_cast<int>(cell.points.size()));
    FaceMesh const mesh = BuildOne(cell);
    CheckMesh(mesh);
    EXPECT_EQ(mesh.nFaces(), cell.nFaces);
    EXPECT_NEAR(reference_host::ComputeCellGeometry(mesh, 1).volume[0], cell.volume, 1e-15);
  }
}

TEST(FaceMeshBuilder, TurnsRoundCellsGivenInsideOut) {
  for (ReferenceCell cell : kCells) {
    for (Point& point : cell.points) point[0] = -point[0];
    FaceMesh const mesh = BuildOne(cell);
    CheckMesh(mesh);
    EXPECT_NEAR(reference_host::ComputeCellGeometry(mesh, 1).volume[0], cell.volume, 1e-15);
  }
}

// Two unit cubes side by side in x; node i + 3 j + 6 k at (i, j, k).
std::vector<Point> TwoCubes() {
  std::vector<Point> points;
  for (int k = 0; k < 2; ++k) {
    for (int j = 0; j < 2; ++j) {
      for (int i = 0; i < 3; ++i) points.push_back({double(i), double(j), double(k)});
    }
  }
  return points;
}
constexpr std::array<int, 8> kLeft = {0, 1, 4, 3, 6, 7, 10, 9};
constexpr std::array<int, 8> kRight = {1, 2, 5, 4, 7, 8, 11, 10};

TEST(FaceMeshBuilder, BringsEachFaceWithItsFirstCell) {
  FaceMeshBuilder builder("mesh", TwoCubes(), {});
  builder.AddCell(CellShape::Hexahedron, kRight.data());
  builder.AddCell(CellShape::Hexahedron, kLeft.data());
  FaceMesh const mesh = builder.Build();
  EXPECT_EQ((std::vector<int>{0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1}), mesh.owner);
  EXPECT_EQ(1, std::count(mesh.neighbour.begin(), mesh.neighbour.end(), 1));
  CheckMesh(mesh);
}

TEST(FaceMeshBuilder, TakesPatchesFromSurfacesInAnyDirection) {
  FaceMeshBuilder builder("mesh", TwoCubes(), {{"a", "", {}}, {"b", "", {}}});
  builder.AddCell(CellShape::Hexahedron, kLeft.data());
  builder.AddCell(CellShape::Hexahedron, kRight.data());
  std::array<int, 4> const leftSide = {0, 3, 9, 6};
  std::array<int, 4> const rightSideReversed = {8, 11, 5, 2};
  std::array<int, 4> const between = {1, 4, 10, 7};
  std::array<int, 3> const noFace = {0, 1, 2};
  builder.AddSurface(leftSide.data(), 4, 0);
  builder.AddSurface(leftSide.data(), 4, 1);  // the first counts
  builder.AddSurface(rightSideReversed.data(), 4, 1);
  builder.AddSurface(between.data(), 4, 1);
  builder.AddSurface(noFace.data(), 3, 1);
  FaceMesh const mesh = builder.Build();
  EXPECT_EQ(1, FacesInPatch(mesh, "a"));
  EXPECT_EQ(1, FacesInPatch(mesh, "b"));
  EXPECT_EQ(8, FacesInPatch(mesh, "unnamed"));
}

TEST(FaceMeshBuilder, AddsNoUnnamedPatchThatIsNotNeeded) {
  FaceMeshBuilder builder("mesh", kCells[0].points, {{"a", "", {}}});
  std::array<int, 4> const nodes = {0, 1, 2, 3};
  builder.AddCell(CellShape::Tetrahedron, nodes.data());
  for (int left = 0; left < 4; ++left) {
    std::array<int, 3> const face = {(left + 1) % 4, (left + 2) % 4, (left + 3) % 4};
    builder.AddSurface(face.data(), 3, 0);
  }
  FaceMesh const mesh = builder.Build();
  EXPECT_EQ(1U, mesh.patches.size());
  EXPECT_EQ(4, FacesInPatch(mesh, "a"));
}

TEST(FaceMeshBuilder, NamesTheCellsThatOverlap) {
  FaceMeshBuilder builder("mesh", TwoCubes(), {});
  builder.AddCell(CellShape::Hexahedron, kLeft.data());
  builder.AddCell(CellShape::Hexahedron, kLeft.data());
  EXPECT_EQ(
      "mesh: cell 2 lies on the same side of a common face as cell 1 (the cell occurs twice, or "
      "cells overlap)",
      MeshErrorOf([&] { builder.Build(); }));
}

TEST(FaceMeshBuilder, NamesTheCellThatHasANodeTwice) {
  FaceMeshBuilder builder("mesh", TwoCubes(), {});
  builder.SetCellNamer([](int cell) { return "element " + std::to_string(cell + 100); });
  std::array<int, 4> const nodes = {0, 1, 4, 1};
  EXPECT_EQ("mesh: element 100 has a node twice",
            MeshErrorOf([&] { builder.AddCell(CellShape::Tetrahedron, nodes.data()); }));
}

}  // namespace
