#include "reference_host/CellGeometry.h"

#include <utility>

#include "reference_host/Vector3.h"

namespace reference_host {

FaceTable::FaceTable(const FaceMesh& mesh)
    : points(mesh.points),
      faceStart(mesh.faceStart),
      faceNode(mesh.faceNode),
      owner(mesh.owner),
      neighbour(mesh.neighbour) {}

FaceTable::FaceTable(const MeshPart& part)
    : points(part.points),
      faceStart(part.faceStart),
      faceNode(part.faceNode),
      owner(part.owner),
      neighbour(part.neighbour) {}

CellGeometryBuilder::CellGeometryBuilder(int nCells)
    : nCells_(nCells), top_(nCells, Point{0.0, 0.0, 0.0}), nFacesOfCell_(nCells, 0) {}

void CellGeometryBuilder::AddFaceCentre(int owner, int neighbour, const Point& centre) {
  for (const int cell : {owner, neighbour}) {
    if (!IsCell(cell)) continue;
    top_[cell] = Sum(top_[cell], centre);
    ++nFacesOfCell_[cell];
  }
}

void CellGeometryBuilder::FinishTops() {
  for (std::size_t c = 0; c < top_.size(); ++c) {
    if (nFacesOfCell_[c] > 0) top_[c] = Scaled(1.0 / nFacesOfCell_[c], top_[c]);
  }
  nFacesOfCell_ = {};
  cells_.centre.assign(top_.size(), Point{0.0, 0.0, 0.0});
  cells_.volume.assign(top_.size(), 0.0);
}

void CellGeometryBuilder::AddPyramids(int owner, int neighbour, const FaceFan& fan) {
  if (IsCell(owner)) AddPyramidsOfSide(owner, 1.0, fan);
  if (IsCell(neighbour)) AddPyramidsOfSide(neighbour, -1.0, fan);
}

void CellGeometryBuilder::AddPyramidsOfSide(int cell, double sign, const FaceFan& fan) {
  // h leads from the top to the fan's apex, which lies in the plane of every triangle t, so the pyramid over
  // t has the volume S_t . h / 3 and its base centroid seen from the top is h + r_t: 3 V = sum over t of S_t
  // . h = S . h,   sum over t of (S_t . h) (h + r_t) = 3 V h + spread h.
  const Point h = Difference(fan.apex, top_[cell]);
  const double volume3 = sign * Dot(fan.area, h);
  const Point spreadH = {Dot(fan.spread[0], h), Dot(fan.spread[1], h), Dot(fan.spread[2], h)};
  cells_.volume[cell] += volume3;
  cells_.centre[cell] = Sum(cells_.centre[cell], Sum(Scaled(volume3, h), Scaled(sign, spreadH)));
}

CellGeometry CellGeometryBuilder::Finish() {
  for (std::size_t c = 0; c < top_.size(); ++c) {
    const double volume3 = cells_.volume[c];
    // A pyramid's centroid lies at three quarters of the way from its top to the centroid of its base.
    cells_.centre[c] = volume3 > 0.0 ? Sum(top_[c], Scaled(0.75 / volume3, cells_.centre[c])) : top_[c];
    cells_.volume[c] = volume3 / 3.0;
  }
  top_ = {};
  return std::move(cells_);
}

CellGeometry ComputeCellGeometry(const FaceTable& faces, int nCells) {
  CellGeometryBuilder builder(nCells);
  for (int f = 0; f < faces.nFaces(); ++f) {
    const FaceGeometry face = ComputeFaceGeometry(faces.points, faces.Nodes(f), faces.NodeCount(f));
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
