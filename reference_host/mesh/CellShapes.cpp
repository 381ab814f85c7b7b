#include "reference_host/mesh/CellShapes.h"

#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/Vector3.h"

namespace reference_host {
namespace {

/// Uses the triangles of the geometry of the operators, so that the signs agree.
double VolumeOfCell(std::vector<Point> const& points, CellShape shape, int const* nodes) {
  Point const& reference = points[static_cast<std::size_t>(nodes[0])];
  double volume3 = 0.0;
  for (int local = 0; local < FaceCount(shape); ++local) {
    ShortFace<int> const face = FaceOfCell(shape, local, nodes);
    FaceFan const fan = ComputeFaceFan(points, face.data(), NodeCountOfFace(face));
    volume3 += Dot(fan.area, Difference(fan.apex, reference));
  }
  return volume3 / 3.0;
}

}  // namespace

/// A volume that is zero or NaN does not show the orientation; the mesh check rejects the cell.
void OrientCell(std::vector<Point> const& points, CellShape shape, int* nodes) {
  if (!(VolumeOfCell(points, shape, nodes) < 0.0)) return;
  CellShapeTable const& table = TableOfCellShape(shape);
  std::array<int, 8> given{};
  std::copy_n(nodes, table.nNodes, given.begin());
  for (int i = 0; i < table.nNodes; ++i)
    nodes[i] = given[static_cast<std::size_t>(table.mirrored[static_cast<std::size_t>(i)])];
}

}  // namespace reference_host
