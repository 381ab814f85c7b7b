#pragma once

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/mesh/Vector3.h"
#include "tests/unit/reference_host/TestMeshes.h"

/// Meshes of the unit cube that continue beyond its opposite sides.
namespace test_meshes {

using reference_host::BoundaryGroup;
using reference_host::Patch;
using reference_host::Period;

/// The boundary faces of the cube whose nodes all have this coordinate in that direction.
inline std::vector<int> FacesAt(FaceMesh const& mesh, int direction, double coordinate) {
  std::vector<int> faces;
  for (int f = 0; f < mesh.nFaces(); ++f) {
    if (mesh.neighbour[f] >= 0) continue;
    std::vector<Point> const places = reference_host::PlacesOfFace(mesh, f);
    bool const isThere =
        std::all_of(places.begin(), places.end(), [&](Point const& p) { return p[direction] == coordinate; });
    if (isThere) faces.push_back(f);
  }
  return faces;
}

inline Point CentreOfFace(FaceMesh const& mesh, int f) {
  std::vector<Point> const places = reference_host::PlacesOfFace(mesh, f);
  Point sum = {0.0, 0.0, 0.0};
  for (Point const& place : places) sum = reference_host::Sum(sum, place);
  return reference_host::Scaled(1.0 / static_cast<double>(places.size()), sum);
}

/// Pairs the faces at 0 and at 1 of a direction, which become patches "low_x" and "high_x" without groups. The
/// period is not joined yet.
inline void AddPeriod(FaceMesh& mesh, int direction) {
  std::string const letter(1, static_cast<char>('x' + direction));
  int const low = static_cast<int>(mesh.patches.size());
  mesh.patches.push_back({"low_" + letter, "cyclic", {}, {}, {low + 1}});
  mesh.patches.push_back({"high_" + letter, "cyclic", {}, {}, {low}});
  Period period;
  period.patch = low;
  period.partner = low + 1;
  period.name = "cyclic patch 'low_" + letter + "'";
  std::vector<int> const ends = FacesAt(mesh, direction, 1.0);
  for (int const f : FacesAt(mesh, direction, 0.0)) {
    Point beyond = CentreOfFace(mesh, f);
    beyond[direction] += 1.0;
    auto const partner = std::find_if(ends.begin(), ends.end(), [&](int g) {
      return reference_host::Length(reference_host::Difference(CentreOfFace(mesh, g), beyond)) < 1e-9;
    });
    if (partner == ends.end()) continue;  // a test of patches in pieces
    period.faces.emplace_back(f, *partner);
    mesh.facePatch[f] = low;
    mesh.facePatch[*partner] = low + 1;
  }
  mesh.periods.push_back(period);
}

/// The mesh with joined periods in these directions: "xy".
inline FaceMesh Periodic(FaceMesh mesh, std::string const& directions) {
  for (char const letter : directions) AddPeriod(mesh, letter - 'x');
  reference_host::JoinPeriods(mesh);
  return mesh;
}

/// Hexahedra, tetrahedra, prisms, all types and polyhedra that continue in one, two and three directions. Inner nodes
/// are moved. One and two cells between the sides make a cell its own neighbour, or twice that of another.
inline std::vector<NamedMesh> PeriodicMeshes() {
  return {{"one cell", Periodic(HexBox(1, 1, 1), "xyz")},
          {"a column of single cells", Periodic(HexBox(1, 1, 3), "xyz")},
          {"two cells", Periodic(HexBox(2, 2, 2), "xy")},
          {"hexahedra", Periodic(Perturbed(HexBox(4, 3, 5), 0.05), "xyz")},
          {"tetrahedra", Periodic(Perturbed(TetBox(3), 0.04), "xyz")},
          {"prisms", Periodic(Perturbed(PrismBox(3), 0.04), "z")},
          {"pyramids", Periodic(Perturbed(PyramidBox(2), 0.04), "yz")},
          {"polyhedra", Periodic(Perturbed(PolyBox(2), 0.03), "yz")}};
}

/// `n` copies of a mesh with a single, joined period side by side: copy k is moved by k shifts, and its cells are
/// k * nCells to (k + 1) * nCells - 1. Its outer ends are walls.
inline FaceMesh Repeated(FaceMesh const& mesh, int n) {
  Period const& period = mesh.periods.front();
  int const nPoints = static_cast<int>(mesh.points.size());
  std::vector<int> mate(mesh.points.size(), -1);  // of a node of the second side, on the first
  std::vector<int> pairOfFirst(mesh.owner.size(), -1), pairOfSecond(mesh.owner.size(), -1);
  for (std::size_t i = 0; i < period.faces.size(); ++i) {
    auto const [first, second] = period.faces[i];
    pairOfFirst[first] = pairOfSecond[second] = static_cast<int>(i);
    int const size = static_cast<int>(mesh.faceStart[first + 1] - mesh.faceStart[first]);
    for (int k = 0; k < size; ++k) {
      mate[mesh.faceNode[mesh.faceStart[second] + (period.turn[i] + size - k) % size]] =
          mesh.faceNode[mesh.faceStart[first] + k];
    }
  }
  FaceMesh all;
  all.patches = mesh.patches;
  for (Patch& patch : all.patches) {
    if (!patch.group) patch.group = BoundaryGroup::Wall;
  }
  all.nCells = n * mesh.nCells;
  for (int k = 0; k < n; ++k) {
    for (Point const& point : mesh.points) {
      all.points.push_back(reference_host::Sum(point, reference_host::Scaled(k, period.shift)));
    }
    for (int f = 0; f < mesh.nFaces(); ++f) {
      if (k > 0 && pairOfFirst[f] >= 0) continue;  // the second side of the copy before
      bool const isJoined = k + 1 < n && pairOfSecond[f] >= 0;
      for (std::size_t i = mesh.faceStart[f]; i < mesh.faceStart[f + 1]; ++i) {
        int const node = mesh.faceNode[i];
        bool const isOfNext = k + 1 < n && mate[node] >= 0;
        all.faceNode.push_back(isOfNext ? (k + 1) * nPoints + mate[node] : k * nPoints + node);
      }
      all.faceStart.push_back(all.faceNode.size());
      all.owner.push_back(k * mesh.nCells + mesh.owner[f]);
      int neighbour = mesh.neighbour[f] < 0 ? -1 : k * mesh.nCells + mesh.neighbour[f];
      if (isJoined) neighbour = (k + 1) * mesh.nCells + mesh.owner[period.faces[pairOfSecond[f]].first];
      all.neighbour.push_back(neighbour);
      all.facePatch.push_back(neighbour >= 0 ? -1 : mesh.facePatch[f]);
    }
  }
  return all;
}

}  // namespace test_meshes
