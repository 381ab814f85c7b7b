#include "reference_host/mesh/MeshCheck.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

/// |sum of the outward area vectors| / sum of the areas of a cell. It is rounding error for a closed cell,
/// and the share of the face for a cell with a missing or inverted face.
constexpr double kMostOpening = 1e-9;

/// A face is flat if area / circumference^2 is below this, a cell if volume / area^(3/2) is. Rounding of
/// coordinates alone leaves about 1e-16; a boundary-layer cell with an aspect ratio of a million has 1e-6.
constexpr double kFlat = 1e-14;

double Circumference(FaceTable const& faces, int f) {
  int const n = faces.NodeCount(f);
  int const* const nodes = faces.Nodes(f);
  double sum = 0.0;
  for (int i = 0; i < n; ++i) {
    sum += Length(Difference(faces.points[nodes[(i + 1) % n]], faces.points[nodes[i]]));
  }
  return sum;
}

/// Empty: there is none.
char const* ComplaintAboutVolume(double volume, double area) {
  double const flat = kFlat * area * std::sqrt(area);
  if (volume > flat && std::isfinite(volume)) return "";
  if (volume < -flat) return "has a negative volume (its faces point inwards)";
  return "has no volume";
}

class MeshChecker {
 public:
  MeshChecker(FaceMesh const& mesh, std::string const& meshName)
      : mesh_(mesh), prefix_(meshName.empty() ? "" : meshName + ": ") {}

  void CheckAll() const {
    if (mesh_.nCells < 1) Fail("the mesh has no cells");
    CheckPoints();
    CheckFaceTable();
    CheckFaceCounts();
    CheckAreas();
    CheckVolumes();
  }

 private:
  [[noreturn]] void Fail(std::string const& what) const { throw MeshError(prefix_ + what); }

  [[noreturn]] void FailNode(int node, std::string const& what) const {
    Fail(NameOfNode(mesh_, node) + " " + what);
  }
  [[noreturn]] void FailFace(int face, std::string const& what) const {
    Fail(NameOfFace(mesh_, face) + " " + what);
  }
  [[noreturn]] void FailCell(int cell, std::string const& what) const {
    Fail(NameOfCell(mesh_, cell) + " " + what);
  }

  void CheckPoints() const {
    for (std::size_t n = 0; n < mesh_.points.size(); ++n) {
      Point const& p = mesh_.points[n];
      if (!std::isfinite(p[0]) || !std::isfinite(p[1]) || !std::isfinite(p[2])) {
        FailNode(static_cast<int>(n), "has a coordinate that is not finite");
      }
    }
  }

  void CheckFaceTable() const {
    std::size_t const nFaces = mesh_.owner.size();
    if (mesh_.faceStart.size() != nFaces + 1 || mesh_.neighbour.size() != nFaces ||
        mesh_.facePatch.size() != nFaces) {
      Fail("the face tables differ in length");
    }
    std::vector<int> lastFaceOfNode(mesh_.points.size(), -1);
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      CheckNodesOfFace(f, lastFaceOfNode);
      CheckCellsOfFace(f);
    }
  }

  /// @param[in,out] lastFaceOfNode  the last face before f that has the node; -1: none
  void CheckNodesOfFace(int f, std::vector<int>& lastFaceOfNode) const {
    std::size_t const begin = mesh_.faceStart[f];
    std::size_t const end = mesh_.faceStart[f + 1];
    if (end < begin + 3) FailFace(f, "has fewer than 3 nodes");
    if (end > mesh_.faceNode.size()) FailFace(f, "goes beyond the end of the node table");
    for (std::size_t i = begin; i < end; ++i) {
      int const node = mesh_.faceNode[i];
      if (node < 0 || static_cast<std::size_t>(node) >= mesh_.points.size()) {
        FailFace(f, "has node " + std::to_string(node + std::int64_t{1}) + ", but there are " +
                        std::to_string(mesh_.points.size()));
      }
      if (lastFaceOfNode[node] == f) FailFace(f, "has " + NameOfNode(mesh_, node) + " twice");
      lastFaceOfNode[node] = f;
    }
  }

  void CheckCellsOfFace(int f) const {
    int const owner = mesh_.owner[f];
    int const neighbour = mesh_.neighbour[f];
    CheckCellNumber(f, owner);
    if (neighbour != -1) CheckCellNumber(f, neighbour);
    if (owner == neighbour) FailFace(f, "joins " + NameOfCell(mesh_, owner) + " to itself");
    int const patch = mesh_.facePatch[f];
    bool const inPatch = patch >= 0 && static_cast<std::size_t>(patch) < mesh_.patches.size();
    if (neighbour == -1 && !inPatch) FailFace(f, "is at the boundary, but in no patch");
  }

  void CheckCellNumber(int f, int cell) const {
    if (cell >= 0 && cell < mesh_.nCells) return;
    FailFace(f, "has cell " + std::to_string(cell + std::int64_t{1}) + ", but there are " +
                    std::to_string(mesh_.nCells));
  }

  void CheckFaceCounts() const {
    std::vector<int> nFacesOfCell(mesh_.nCells, 0);
    for (int f = 0; f < mesh_.nFaces(); ++f) {
      ++nFacesOfCell[mesh_.owner[f]];
      if (mesh_.neighbour[f] >= 0) ++nFacesOfCell[mesh_.neighbour[f]];
    }
    auto const few = std::find_if(nFacesOfCell.begin(), nFacesOfCell.end(), [](int n) { return n < 4; });
    if (few == nFacesOfCell.end()) return;
    FailCell(static_cast<int>(few - nFacesOfCell.begin()),
             "has " + std::to_string(*few) + " faces; a cell needs 4 or more");
  }

  void CheckAreas() const {
    int const face = FirstFaceWithoutArea(mesh_);
    if (face >= 0) FailFace(face, "has no area");
  }

  void CheckVolumes() const {
    BadCell const bad = FirstBadCell(mesh_, mesh_.nCells);
    if (bad.cell >= 0) FailCell(bad.cell, bad.complaint);
  }

  FaceMesh const& mesh_;
  std::string prefix_;
};

}  // namespace

void CheckMesh(FaceMesh const& mesh, std::string const& meshName) { MeshChecker(mesh, meshName).CheckAll(); }

// The comparisons are written so that a NaN fails, which coordinates near the largest number can produce.
int FirstFaceWithoutArea(FaceTable const& faces) {
  for (int f = 0; f < faces.nFaces(); ++f) {
    double const area = Length(ComputeFaceFan(faces.points, faces.Nodes(f), faces.NodeCount(f)).area);
    double const circumference = Circumference(faces, f);
    if (!(area > kFlat * circumference * circumference)) return f;
  }
  return -1;
}

BadCell FirstBadCell(FaceTable const& faces, int nCells) {
  std::vector<Point> sum(nCells, Point{0.0, 0.0, 0.0});
  std::vector<double> area(nCells, 0.0);
  for (int f = 0; f < faces.nFaces(); ++f) {
    Point const S = ComputeFaceFan(faces.points, faces.Nodes(f), faces.NodeCount(f)).area;
    for (auto const& [cell, side] : {std::pair(faces.Owner(f), 1.0), std::pair(faces.Neighbour(f), -1.0)}) {
      if (cell < 0 || cell >= nCells) continue;
      sum[cell] = Sum(sum[cell], Scaled(side, S));
      area[cell] += Length(S);
    }
  }
  std::vector<double> const volume = ComputeCellGeometry(faces, nCells).volume;
  for (int c = 0; c < nCells; ++c) {
    if (!(Length(sum[c]) <= kMostOpening * area[c])) {
      return {c, "is not closed (the area vectors of its faces do not add up to zero)"};
    }
    std::string const complaint = ComplaintAboutVolume(volume[c], area[c]);
    if (!complaint.empty()) return {c, complaint};
  }
  return {};
}

}  // namespace reference_host
