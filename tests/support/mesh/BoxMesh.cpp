#include "tests/support/mesh/BoxMesh.h"

#include <algorithm>

namespace zyn_test {
namespace {

std::size_t At(int i) { return static_cast<std::size_t>(i); }

/// The nodes and cells of a box.
class BoxGrid {
 public:
  BoxGrid(std::vector<double> const& x, std::vector<double> const& y, std::vector<double> const& z)
      : lines_{&x, &y, &z} {}

  int Cells(int axis) const { return static_cast<int>(lines_[At(axis)]->size()) - 1; }
  double Line(int axis, int i) const { return (*lines_[At(axis)])[At(i)]; }
  double Middle(int axis, int i) const { return 0.5 * (Line(axis, i) + Line(axis, i + 1)); }
  double Width(int axis, int i) const { return Line(axis, i + 1) - Line(axis, i); }

  int Node(int i, int j, int k) const { return 1 + i + (Cells(0) + 1) * (j + (Cells(1) + 1) * k); }
  int Cell(int i, int j, int k) const { return 1 + i + Cells(0) * (j + Cells(1) * k); }
  Point Centre(int i, int j, int k) const { return {Middle(0, i), Middle(1, j), Middle(2, k)}; }

  std::vector<int> CellNodes(int i, int j, int k) const {
    return {Node(i, j, k),     Node(i + 1, j, k),     Node(i + 1, j + 1, k),     Node(i, j + 1, k),
            Node(i, j, k + 1), Node(i + 1, j, k + 1), Node(i + 1, j + 1, k + 1), Node(i, j + 1, k + 1)};
  }

  /// The side of cell (i, j, k) across `axis`, low or high, with the area vector out of the cell.
  Face Side(int axis, bool high, int i, int j, int k) const {
    static constexpr int kCorners[6][4] = {{0, 4, 7, 3}, {1, 2, 6, 5}, {0, 1, 5, 4},
                                           {3, 7, 6, 2}, {0, 3, 2, 1}, {4, 5, 6, 7}};
    int const index[3] = {i, j, k};
    int const u = (axis + 1) % 3, v = (axis + 2) % 3;
    double const area = Width(u, index[u]) * Width(v, index[v]) * (high ? 1.0 : -1.0);
    double const plane = Line(axis, index[axis] + (high ? 1 : 0));
    Face face;
    face.cv = Cell(i, j, k);
    face.centre = Centre(i, j, k);
    (axis == 0 ? face.centre.x : axis == 1 ? face.centre.y : face.centre.z) = plane;
    (axis == 0 ? face.area.x : axis == 1 ? face.area.y : face.area.z) = area;
    std::vector<int> const corners = CellNodes(i, j, k);
    for (int const corner : kCorners[2 * axis + (high ? 1 : 0)]) face.nodes.push_back(corners[At(corner)]);
    return face;
  }

 private:
  std::array<std::vector<double> const*, 3> lines_;
};

template <typename Action>
void ForEachCell(BoxGrid const& grid, Action action) {
  for (int k = 0; k < grid.Cells(2); ++k)
    for (int j = 0; j < grid.Cells(1); ++j)
      for (int i = 0; i < grid.Cells(0); ++i) action(i, j, k);
}

Point MirroredAt(Point centre, Point p) {
  return {2.0 * centre.x - p.x, 2.0 * centre.y - p.y, 2.0 * centre.z - p.z};
}

double Component(Vector3 const& v, int axis) { return axis == 0 ? v.x : axis == 1 ? v.y : v.z; }

/// Weight of the far cell of a face across `axis`, from the distances of the centres to the face.
double WeightByDistance(Point const& near, Point const& face, Point const& far, int axis) {
  return (Component(face, axis) - Component(near, axis)) / (Component(far, axis) - Component(near, axis));
}

void AddFacesAcross(TestMesh& mesh, BoxGrid const& grid, Sides const& sides, Beyond beyond, int axis, int i,
                    int j, int k) {
  int const step[3] = {axis == 0, axis == 1, axis == 2};
  int const index = axis == 0 ? i : axis == 1 ? j : k;
  Point const centre = grid.Centre(i, j, k);
  auto const addSide = [&](bool high) {
    Face side = grid.Side(axis, high, i, j, k);
    side.other =
        mesh.AddOuterCell(beyond == Beyond::OnTheFace ? side.centre : MirroredAt(side.centre, centre));
    mesh.AddFace(sides[At(2 * axis + (high ? 1 : 0))], side);
  };
  if (index == 0) addSide(false);
  if (index + 1 == grid.Cells(axis)) return addSide(true);
  Face inner = grid.Side(axis, true, i, j, k);
  inner.other = grid.Cell(i + step[0], j + step[1], k + step[2]);
  inner.weight = WeightByDistance(centre, inner.centre, mesh.Centre(inner.other), axis);
  mesh.AddFace(kInner, inner);
}

}  // namespace

TestMesh Box(std::vector<double> const& x, std::vector<double> const& y, std::vector<double> const& z,
             Sides const& sides, Beyond beyond) {
  BoxGrid const grid(x, y, z);
  TestMesh mesh;
  for (double const zn : z)
    for (double const yn : y)
      for (double const xn : x) mesh.AddNode({xn, yn, zn});
  ForEachCell(grid, [&](int i, int j, int k) {
    mesh.AddCell(grid.Centre(i, j, k), grid.CellNodes(i, j, k));
    mesh.volumes.back() = grid.Width(0, i) * grid.Width(1, j) * grid.Width(2, k);
  });
  for (int axis = 0; axis < 3; ++axis)
    ForEachCell(grid, [&](int i, int j, int k) { AddFacesAcross(mesh, grid, sides, beyond, axis, i, j, k); });
  mesh.ListCellsAroundNodes();
  return mesh;
}

TestMesh ClosedBox(std::vector<double> const& x, std::vector<double> const& y, std::vector<double> const& z) {
  return Box(x, y, z, {kInlet, kOutlet, kWall, kWall, kSymmetry, kSymmetry}, Beyond::OnTheFace);
}

TestMesh TwoCubes() { return Box({-1.0, 0.0, 1.0}, {-0.5, 0.5}, {-0.5, 0.5}); }

TestMesh CubesOfAllGroups() {
  std::vector<double> const lines = {0.0, 1.0, 2.0, 3.0};
  return Box(lines, lines, lines);
}

TestMesh SkewedCubesOfAllGroups() {
  TestMesh const box = Box({0.0, 1.0, 1.75, 3.0}, {0.0, 0.875, 2.25, 3.0}, {0.0, 0.625, 1.5, 2.25});
  return box.Mapped([](Point p) {
    return Point{p.x + 0.25 * p.y, p.y - 0.125 * p.z + 0.0625 * p.x, p.z + 0.1875 * p.x};
  });
}

}  // namespace zyn_test
