#include "reference_host/mesh/CellGeometry.h"

#include "reference_host/mesh/Vector3.h"

namespace reference_host {

FaceTable::FaceTable(FaceMesh const& mesh)
    : points(mesh.points),
      faceStart(mesh.faceStart),
      faceNode(mesh.faceNode),
      owner(mesh.owner),
      neighbour(mesh.neighbour) {}

FaceTable::FaceTable(MeshPart const& part)
    : points(part.points),
      faceStart(part.faceStart),
      faceNode(part.faceNode),
      owner(part.owner),
      neighbour(part.neighbour) {}

CellGeometryBuilder::CellGeometryBuilder(int nCells) : nCells_(nCells), sums_(nCells) {}

void CellGeometryBuilder::AddFaceCentre(int owner, int neighbour, Point const& centre) {
  for (int const cell : {owner, neighbour}) {
    if (!IsCell(cell)) continue;
    Sums& sums = sums_[cell];
    sums.top = Sum(sums.top, centre);
    ++sums.nFaces;
  }
}

void CellGeometryBuilder::FinishTops() {
  for (Sums& sums : sums_) {
    if (sums.nFaces > 0) sums.top = Scaled(1.0 / sums.nFaces, sums.top);
  }
}

void CellGeometryBuilder::AddPyramids(int owner, int neighbour, FaceFan const& fan) {
  if (IsCell(owner)) AddPyramidsOfSide(owner, 1.0, fan);
  if (IsCell(neighbour)) AddPyramidsOfSide(neighbour, -1.0, fan);
}

void CellGeometryBuilder::AddPyramidsOfSide(int cell, double sign, FaceFan const& fan) {
  Sums& sums = sums_[cell];
  // h points from the top to the fan's apex, which lies in the plane of every triangle t. So the pyramid over
  // t has the volume S_t . h / 3, and its base centroid relative to the top is h + r_t: 3 V = sum over t of
  // S_t . h = S . h, and sum over t of (S_t . h) (h + r_t) = 3 V h + spread h.
  Point const h = Difference(fan.apex, sums.top);
  double const volume3 = sign * Dot(fan.area, h);
  Point const spreadH = {Dot(fan.spread[0], h), Dot(fan.spread[1], h), Dot(fan.spread[2], h)};
  sums.volume3 += volume3;
  sums.moment = Sum(sums.moment, Sum(Scaled(volume3, h), Scaled(sign, spreadH)));
}

CellGeometry CellGeometryBuilder::Finish() {
  CellGeometry cells;
  cells.centre.reserve(sums_.size());
  cells.volume.reserve(sums_.size());
  for (Sums const& sums : sums_) {
    // A pyramid's centroid lies three quarters of the way from its top to the centroid of its base.
    cells.centre.push_back(sums.volume3 > 0.0 ? Sum(sums.top, Scaled(0.75 / sums.volume3, sums.moment))
                                              : sums.top);
    cells.volume.push_back(sums.volume3 / 3.0);
  }
  sums_ = {};
  return cells;
}

CellGeometry ComputeCellGeometry(FaceTable const& faces, int nCells) {
  CellGeometryBuilder builder(nCells);
  for (int f = 0; f < faces.nFaces(); ++f) {
    FaceGeometry const face = ComputeFaceGeometry(faces.points, faces.Nodes(f), faces.NodeCount(f));
    builder.AddFaceCentre(faces.Owner(f), faces.Neighbour(f), face.centre);
  }
  builder.FinishTops();
  for (int f = 0; f < faces.nFaces(); ++f) {
    builder.AddPyramids(faces.Owner(f), faces.Neighbour(f),
                        ComputeFaceFan(faces.points, faces.Nodes(f), faces.NodeCount(f)));
  }
  return builder.Finish();
}

}  // namespace reference_host
