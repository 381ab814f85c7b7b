#include "tests/support/mesh/CellMesh.h"

namespace rbf_cell_test {

int CellMesh::AddInteriorCell(Point centre) {
  centres.push_back(centre);
  neighbours.emplace_back();
  return ++nInnerCells;
}

int CellMesh::AddOuterCell(Point centre) {
  centres.push_back(centre);
  return NCell();
}

void CellMesh::JoinInterior(int a, int b) {
  Point const &p = Centre(a), &q = Centre(b);
  CellFace face;
  face.cv = a;
  face.other = b;
  face.centre = {0.5 * (p.x + q.x), 0.5 * (p.y + q.y), 0.5 * (p.z + q.z)};
  face.area = {q.x - p.x, q.y - p.y, q.z - p.z};
  inner.push_back(face);
  Neighbours(a).push_back(b);
  Neighbours(b).push_back(a);
}

int CellMesh::AddSide(std::vector<CellFace>& group, int cell, Point faceCentre, Point ghostCentre) {
  int const ghost = AddOuterCell(ghostCentre);
  CellFace face;
  face.cv = cell;
  face.other = ghost;
  face.centre = faceCentre;
  group.push_back(face);
  Neighbours(cell).push_back(ghost);
  return ghost;
}

CellMesh SevenPoints(double distance, Point centre) {
  double const d = distance;
  std::vector<Point> members = {{d, 0, 0}, {-d, 0, 0}, {0, d, 0}, {0, -d, 0}, {0, 0, d}, {0, 0, -d}};
  for (Point& p : members) p = {p.x + centre.x, p.y + centre.y, p.z + centre.z};
  return OneStencil(centre, members);
}

CellMesh OneStencil(Point centre, std::vector<Point> const& members) {
  CellMesh mesh;
  mesh.AddInteriorCell(centre);
  for (Point const& member : members) {
    mesh.AddSide(mesh.partition, 1, member, member);
    mesh.partitionNodes.emplace_back();
  }
  return mesh;
}

}  // namespace rbf_cell_test
