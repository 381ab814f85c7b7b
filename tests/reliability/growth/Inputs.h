#pragma once

#include <array>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "tests/unit/reference_host/gmsh/GmshTestFile.h"

/// Inputs of any size.
namespace growth {

/// n unit cubes in a row along x. Node 4 i + k is corner k of the square at x = i.
inline std::array<int, 8> NodesOfCube(int cube) {
  int const n = 4 * cube;
  return {n, n + 4, n + 5, n + 1, n + 3, n + 7, n + 6, n + 2};
}

inline std::vector<reference_host::Point> PointsOfRow(int nCubes) {
  std::vector<reference_host::Point> points;
  for (int i = 0; i <= nCubes; ++i) {
    for (std::array<double, 2> const& yz : {std::array<double, 2>{0, 0}, {1, 0}, {1, 1}, {0, 1}})
      points.push_back({double(i), yz[0], yz[1]});
  }
  return points;
}

/// The row as a Gmsh mesh; the bottom of each cube is in a physical surface of its own if there are so many names.
inline GmshTestMesh GmshRow(int nCubes, int nNames) {
  GmshTestMesh mesh;
  mesh.points = PointsOfRow(nCubes);
  for (int i = 0; i < nCubes; ++i) {
    int const n = 4 * i;
    mesh.elements.push_back({3, 2 * i + 1, nNames == 0 ? 0 : i % nNames + 1, {}});
    for (int const node : {n, n + 4, n + 5, n + 1})
      mesh.elements.back().nodes.push_back(GmshTestMesh::NodeTag(node));
    mesh.elements.push_back({5, 2 * i + 2, 0, {}});
    for (int const node : NodesOfCube(i)) mesh.elements.back().nodes.push_back(GmshTestMesh::NodeTag(node));
  }
  if (nNames == 0) return mesh;
  mesh.physicalNames = "$PhysicalNames\n" + std::to_string(nNames) + "\n";
  for (int k = 1; k <= nNames; ++k)
    mesh.physicalNames += "2 " + std::to_string(k) + " \"wall " + std::to_string(k) + "\"\n";
  mesh.physicalNames += "$EndPhysicalNames\n";
  return mesh;
}

/// `unit`, n times.
inline std::string Times(int n, std::string const& unit) {
  std::string text;
  for (int i = 0; i < n; ++i) text += unit;
  return text;
}

}  // namespace growth
