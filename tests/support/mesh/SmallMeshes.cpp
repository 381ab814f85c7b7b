#include "tests/support/mesh/SmallMeshes.h"

namespace zyn_test {

TestMesh TwoCells(double weight, int faceType) {
  TestMesh mesh;
  mesh.AddInteriorCell({0.0, 0.0, 0.0});
  mesh.AddInteriorCell({1.0, 0.0, 0.0});
  mesh.inner.push_back({1, 2, {1.0, 2.0, 4.0}, {0.5, 0.0, 0.0}, weight, faceType, {}});
  return mesh;
}

TestMesh OneCellWithFacesOfAllGroups() {
  TestMesh mesh;
  for (int c = 1; c <= 3; ++c) mesh.AddInteriorCell({});
  for (int c = 4; c <= 8; ++c) mesh.AddOuterCell({});
  auto const face = [](int other) { return Face{1, other, {1.0, 0.0, 0.0}, {}, 1.0, 0, {}}; };
  mesh.inner = {face(2), face(3)};
  mesh.partition = {face(4)};
  mesh.inlet = {face(5)};
  mesh.outlet = {face(6)};
  mesh.symmetry = {face(7)};
  mesh.wall = {face(8)};
  return mesh;
}

TestMesh CellsWithWallNeighbours(std::vector<std::vector<Vector3>> const& offsets) {
  TestMesh mesh;
  for (std::size_t c = 0; c < offsets.size(); ++c) mesh.AddInteriorCell({});
  int cell = 0;
  for (std::vector<Vector3> const& ofCell : offsets) {
    ++cell;
    for (Vector3 const& offset : ofCell) mesh.AddSide(kWall, cell, {}, offset);
  }
  return mesh;
}

TestMesh SevenPoints(double distance, Point centre) {
  double const d = distance;
  std::vector<Point> members = {{d, 0, 0}, {-d, 0, 0}, {0, d, 0}, {0, -d, 0}, {0, 0, d}, {0, 0, -d}};
  for (Point& p : members) p = {p.x + centre.x, p.y + centre.y, p.z + centre.z};
  return OneStencil(centre, members);
}

TestMesh OneStencil(Point centre, std::vector<Point> const& members) {
  TestMesh mesh;
  mesh.AddInteriorCell(centre);
  for (Point const& member : members) mesh.AddSide(kPartition, 1, member, member);
  return mesh;
}

TestMesh LooseCells(std::vector<Point> const& centres) {
  TestMesh mesh;
  for (Point const& centre : centres) mesh.AddInteriorCell(centre);
  if (centres.size() > 1) mesh.JoinInterior(1, 2);
  return mesh;
}

}  // namespace zyn_test
