#include "reference_host/mesh/MeshCheck.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMeshBuilder.h"
#include "tests/unit/reference_host/MeshTestSupport.h"

namespace {

using reference_host::CellShape;
using reference_host::CheckMesh;
using reference_host::FaceMesh;
using reference_host::FaceMeshBuilder;
using reference_host::Point;

// Two unit cubes side by side in x: cells 1 and 2, node i + 3 j + 6 k at (i, j, k), counted from 0. Face 4
// lies between the cells.
FaceMesh TwoCubesSideBySide() {
  std::vector<Point> points;
  for (int k = 0; k < 2; ++k) {
    for (int j = 0; j < 2; ++j) {
      for (int i = 0; i < 3; ++i) points.push_back({double(i), double(j), double(k)});
    }
  }
  FaceMeshBuilder builder("mesh", points, {});
  for (std::array<int, 8> const& cell :
       {std::array<int, 8>{0, 1, 4, 3, 6, 7, 10, 9}, std::array<int, 8>{1, 2, 5, 4, 7, 8, 11, 10}}) {
    builder.AddCell(CellShape::Hexahedron, cell.data());
  }
  return builder.Build();
}

constexpr int kInner = 3;  // the face between the cells, counted from 0

std::string Refusal(FaceMesh const& mesh) {
  return MeshErrorOf([&] { CheckMesh(mesh); });
}

void RemoveFace(FaceMesh& mesh, int f) {
  std::size_t const begin = mesh.faceStart[f];
  std::size_t const n = mesh.faceStart[f + 1] - begin;
  mesh.faceNode.erase(mesh.faceNode.begin() + long(begin), mesh.faceNode.begin() + long(begin + n));
  mesh.faceStart.erase(mesh.faceStart.begin() + f + 1);
  for (std::size_t i = f + 1; i < mesh.faceStart.size(); ++i) mesh.faceStart[i] -= n;
  mesh.owner.erase(mesh.owner.begin() + f);
  mesh.neighbour.erase(mesh.neighbour.begin() + f);
  mesh.facePatch.erase(mesh.facePatch.begin() + f);
}

TEST(MeshCheck, PassesAGoodMesh) {
  FaceMesh const mesh = TwoCubesSideBySide();
  ASSERT_EQ(1, mesh.neighbour[kInner]);
  CheckMesh(mesh);
}

TEST(MeshCheck, PassesWarpedAndFlatCells) {
  FaceMesh warped = TwoCubesSideBySide();
  warped.points[10][0] += 0.3;
  warped.points[7][1] -= 0.2;
  CheckMesh(warped);

  FaceMesh flat = TwoCubesSideBySide();
  for (Point& point : flat.points) point[2] *= 1e-7;
  CheckMesh(flat);

  FaceMesh farAway = TwoCubesSideBySide();
  for (Point& point : farAway.points) point = {point[0] + 1e6, point[1] - 1e6, point[2] + 1e6};
  CheckMesh(farAway);
}

TEST(MeshCheck, BeginsWithTheNameOfTheMesh) {
  EXPECT_EQ("a.msh: the mesh has no cells", MeshErrorOf([] { CheckMesh(FaceMesh(), "a.msh"); }));
}

TEST(MeshCheck, RefusesCoordinatesThatAreNotFinite) {
  for (double const value : {std::nan(""), std::numeric_limits<double>::infinity()}) {
    FaceMesh mesh = TwoCubesSideBySide();
    mesh.points[4][2] = value;
    EXPECT_EQ("node 5 has a coordinate that is not finite", Refusal(mesh));
  }
}

TEST(MeshCheck, RefusesCoordinatesWhoseProductsOverflow) {
  FaceMesh mesh = TwoCubesSideBySide();
  mesh.points[0] = {1e308, -1e308, 1e308};
  ExpectContains(Refusal(mesh), "face 1 has no area");
}

TEST(MeshCheck, RefusesFacesWithFewerThanThreeNodes) {
  FaceMesh mesh = TwoCubesSideBySide();
  mesh.faceStart[3] = mesh.faceStart[2] + 2;
  EXPECT_EQ("face 3 has fewer than 3 nodes", Refusal(mesh));
  mesh.faceStart[3] = mesh.faceStart[2] - 2;
  EXPECT_EQ("face 3 has fewer than 3 nodes", Refusal(mesh));
}

TEST(MeshCheck, RefusesFacesThatHaveANodeTwice) {
  FaceMesh mesh = TwoCubesSideBySide();
  mesh.faceNode[6] = mesh.faceNode[4];
  EXPECT_EQ(Refusal(mesh), "face 2 has node " + std::to_string(mesh.faceNode[4] + 1) + " twice");
}

TEST(MeshCheck, RefusesNodesOutOfRange) {
  FaceMesh mesh = TwoCubesSideBySide();
  mesh.faceNode[9] = 12;
  EXPECT_EQ("face 3 has node 13, but there are 12", Refusal(mesh));
  mesh.faceNode[9] = -1;
  EXPECT_EQ("face 3 has node 0, but there are 12", Refusal(mesh));
  mesh = TwoCubesSideBySide();
  mesh.faceStart.back() += 1;
  EXPECT_EQ("face 11 goes beyond the end of the node table", Refusal(mesh));
}

TEST(MeshCheck, RefusesCellsOutOfRange) {
  FaceMesh mesh = TwoCubesSideBySide();
  mesh.neighbour[kInner] = 2;
  EXPECT_EQ("face 4 has cell 3, but there are 2", Refusal(mesh));
  mesh.neighbour[kInner] = -2;
  EXPECT_EQ("face 4 has cell -1, but there are 2", Refusal(mesh));
  mesh = TwoCubesSideBySide();
  mesh.owner[1] = -1;
  EXPECT_EQ("face 2 has cell 0, but there are 2", Refusal(mesh));
}

TEST(MeshCheck, RefusesFacesThatJoinACellToItself) {
  FaceMesh mesh = TwoCubesSideBySide();
  mesh.neighbour[kInner] = 0;
  EXPECT_EQ("face 4 joins cell 1 to itself", Refusal(mesh));
}

TEST(MeshCheck, RefusesBoundaryFacesWithoutAPatch) {
  for (int const patch : {-1, 1}) {
    FaceMesh mesh = TwoCubesSideBySide();
    mesh.facePatch[5] = patch;
    EXPECT_EQ("face 6 is at the boundary, but in no patch", Refusal(mesh));
  }
}

TEST(MeshCheck, RefusesTablesOfDifferentLength) {
  FaceMesh mesh = TwoCubesSideBySide();
  mesh.neighbour.pop_back();
  EXPECT_EQ("the face tables differ in length", Refusal(mesh));
}

TEST(MeshCheck, RefusesCellsWithFewerThanFourFaces) {
  FaceMesh mesh = TwoCubesSideBySide();
  mesh.nCells = 3;
  EXPECT_EQ("cell 3 has 0 faces; a cell needs 4 or more", Refusal(mesh));
  mesh = TwoCubesSideBySide();
  for (int i = 0; i < 3; ++i) RemoveFace(mesh, mesh.nFaces() - 1);
  EXPECT_EQ("cell 2 has 3 faces; a cell needs 4 or more", Refusal(mesh));
}

TEST(MeshCheck, RefusesFacesWithoutArea) {
  FaceMesh mesh = TwoCubesSideBySide();
  for (int const node : {2, 5, 8, 11}) mesh.points[node] = mesh.points[2];
  ExpectContains(Refusal(mesh), "has no area");
}

TEST(MeshCheck, RefusesCellsThatAreNotClosed) {
  FaceMesh mesh = TwoCubesSideBySide();
  RemoveFace(mesh, mesh.nFaces() - 1);
  ExpectContains(Refusal(mesh), "cell 2 is not closed");
  mesh = TwoCubesSideBySide();
  std::swap(mesh.faceNode[0], mesh.faceNode[2]);  // the first face of cell 1 turns inwards
  ExpectContains(Refusal(mesh), "cell 1 is not closed");
}

TEST(MeshCheck, RefusesNegativeVolumes) {
  FaceMesh mesh = TwoCubesSideBySide();
  for (Point& point : mesh.points) point[0] = -point[0];
  EXPECT_EQ("cell 1 has a negative volume (its faces point inwards)", Refusal(mesh));
  mesh = TwoCubesSideBySide();
  for (int const node : {2, 5, 8, 11}) mesh.points[node][0] = 0.5;
  EXPECT_EQ("cell 2 has a negative volume (its faces point inwards)", Refusal(mesh));
}

TEST(MeshCheck, RefusesZeroVolumes) {
  // Four nodes of one plane, on which no triangle is degenerate; rounding would leave a volume of 1e-17 or
  // so.
  FaceMeshBuilder builder("mesh", {{0, 0, 0}, {0.1, 0.7, 0.2}, {0.9, 0.3, 0.3}, {1.0, 1.0, 0.5}}, {});
  std::array<int, 4> const nodes = {0, 1, 2, 3};
  builder.AddCell(CellShape::Tetrahedron, nodes.data());
  EXPECT_EQ("cell 1 has no volume", Refusal(builder.Build()));
}

}  // namespace
