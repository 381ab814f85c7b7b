#include "tests/support/mesh/TestMesh.h"

#include <cstddef>

namespace zyn_test {
namespace {

std::size_t At(int i) { return static_cast<std::size_t>(i); }

Vector3 Cross(Vector3 a, Vector3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// The groups by IndexOf(kind).
constexpr std::vector<Face> TestMesh::*kMembers[kFaceKinds] = {&TestMesh::inner,     &TestMesh::wall,
                                                               &TestMesh::inlet,     &TestMesh::outlet,
                                                               &TestMesh::partition, &TestMesh::symmetry};

}  // namespace

std::vector<Face>& TestMesh::Of(Group group) { return this->*kMembers[IndexOf(KindOf(group))]; }

std::vector<Face> const& TestMesh::Of(Group group) const { return this->*kMembers[IndexOf(KindOf(group))]; }

int TestMesh::AddNode(Point point) {
  nodes.push_back(point);
  nodeCells.emplace_back();
  return NNode();
}

int TestMesh::AddInteriorCell(Point centre, double volume) {
  centres.push_back(centre);
  volumes.push_back(volume);
  neighbours.emplace_back();
  cellFaces.emplace_back();
  cellNodes.emplace_back();
  return ++nInnerCells;
}

int TestMesh::AddCell(Point centre, std::vector<int> const& itsNodes) {
  int const cell = AddInteriorCell(centre);
  cellNodes.back() = itsNodes;
  for (int const n : itsNodes) NodeCells(n).push_back(cell);
  return cell;
}

int TestMesh::AddOuterCell(Point centre) {
  centres.push_back(centre);
  return NCell();
}

int TestMesh::AddFace(Group group, Face const& face) {
  Of(group).push_back(face);
  int const number = static_cast<int>(Of(group).size());
  cellFaces[At(face.cv)].push_back({group, number});
  Neighbours(face.cv).push_back(face.other);
  if (face.other > nInnerCells) return number;
  cellFaces[At(face.other)].push_back({group, number});
  Neighbours(face.other).push_back(face.cv);
  return number;
}

int TestMesh::JoinInterior(int a, int b) {
  Point const &p = Centre(a), &q = Centre(b);
  Face face;
  face.cv = a;
  face.other = b;
  face.centre = {0.5 * (p.x + q.x), 0.5 * (p.y + q.y), 0.5 * (p.z + q.z)};
  face.area = {q.x - p.x, q.y - p.y, q.z - p.z};
  return AddFace(kInner, face);
}

int TestMesh::AddSide(Group group, int cell, Point faceCentre, Point beyond,
                      std::vector<int> const& itsNodes) {
  Face face;
  face.cv = cell;
  face.other = AddOuterCell(beyond);
  face.centre = faceCentre;
  face.area = {1.0, 0.0, 0.0};
  face.nodes = itsNodes;
  cellNodes.resize(centres.size());
  cellNodes.back() = itsNodes;
  for (int const n : itsNodes) NodeCells(n).push_back(face.other);
  AddFace(group, face);
  return face.other;
}

void TestMesh::ListCellsAroundNodes(AtBoundaryNodes which) {
  std::vector<std::vector<int>> outer(nodes.size());
  for (Group const group : {kWall, kInlet, kOutlet, kPartition, kSymmetry})
    for (Face const& face : Of(group))
      for (int const n : face.nodes) outer[At(n)].push_back(face.other);
  nodeCells.assign(nodes.size(), {});
  for (int c = 1; c <= nInnerCells; ++c)
    for (int const n : CellNodes(c))
      if (which == AtBoundaryNodes::AllCells || outer[At(n)].empty()) NodeCells(n).push_back(c);
  for (std::size_t n = 1; n < nodes.size(); ++n)
    nodeCells[n].insert(nodeCells[n].end(), outer[n].begin(), outer[n].end());
}

// Half the cross product of the diagonals, which is the area vector of a triangle and of a plane quadrilateral.
void TestMesh::MeasureAreas() {
  for (Group const group : kGroups) {
    for (Face& face : Of(group)) {
      Point const &a = nodes[At(face.nodes[0])], &b = nodes[At(face.nodes[1])], &c = nodes[At(face.nodes[2])];
      Point const& d = nodes[At(face.nodes.back())];
      bool const quadrilateral = face.nodes.size() == 4;
      Vector3 const u = {c.x - a.x, c.y - a.y, c.z - a.z};
      Vector3 const v =
          quadrilateral ? Vector3{d.x - b.x, d.y - b.y, d.z - b.z} : Vector3{b.x - a.x, b.y - a.y, b.z - a.z};
      Vector3 const s = Cross(u, v);
      double const half = quadrilateral ? 0.5 : -0.5;
      face.area = {half * s.x, half * s.y, half * s.z};
    }
  }
}

}  // namespace zyn_test
