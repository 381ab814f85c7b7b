#include "tests/support/mesh/MeshPlan.h"

#include <algorithm>

namespace rbf_face_test {
namespace {

Point Cross(Point a, Point b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

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

void AddFacesAcross(MeshPlan& plan, BoxGrid const& grid, Sides const& sides, int axis, int i, int j, int k) {
  int const step[3] = {axis == 0, axis == 1, axis == 2};
  int const index = axis == 0 ? i : axis == 1 ? j : k;
  auto const addSide = [&](bool high) {
    Face const side = grid.Side(axis, high, i, j, k);
    plan.AddSide(sides[At(2 * axis + (high ? 1 : 0))], side.cv, side.nodes, side.centre, side.area,
                 MirroredAt(side.centre, grid.Centre(i, j, k)));
  };
  if (index == 0) addSide(false);
  if (index + 1 == grid.Cells(axis)) return addSide(true);
  Face inner = grid.Side(axis, true, i, j, k);
  inner.other = grid.Cell(i + step[0], j + step[1], k + step[2]);
  plan.AddFace(kInner, inner);
}

}  // namespace

int MeshPlan::AddNode(Point point) {
  nodes.push_back(point);
  nodeCells.emplace_back();
  return NNode();
}

int MeshPlan::AddCell(Point centre, std::vector<int> const& nodesOfCell) {
  centres.push_back(centre);
  cellNodes.push_back(nodesOfCell);
  cellFaces.emplace_back();
  return ++nInnerCells;
}

int MeshPlan::AddOuterCell(Point centre) {
  centres.push_back(centre);
  return NCell();
}

int MeshPlan::AddFace(Group group, Face const& face) {
  Of(group).push_back(face);
  int const number = static_cast<int>(Of(group).size());
  cellFaces[At(face.cv)].push_back({group, number});
  if (face.other <= nInnerCells) cellFaces[At(face.other)].push_back({group, number});
  return number;
}

int MeshPlan::AddSide(Group group, int cv, std::vector<int> const& nodesOfFace, Point centre, Point area,
                      Point beyond) {
  Face face;
  face.cv = cv;
  face.other = AddOuterCell(beyond);
  face.nodes = nodesOfFace;
  face.centre = centre;
  face.area = area;
  AddFace(group, face);
  return face.other;
}

void MeshPlan::ListCellsAroundNodes(AtBoundaryNodes which) {
  std::vector<std::vector<int>> outer(nodes.size());
  for (Group const group : {kWall, kInlet, kOutlet, kPartition, kSymmetry})
    for (Face const& face : Of(group))
      for (int const n : face.nodes) outer[At(n)].push_back(face.other);
  nodeCells.assign(nodes.size(), {});
  for (int c = 1; c <= nInnerCells; ++c)
    for (int const n : cellNodes[At(c)])
      if (which == AtBoundaryNodes::AllCells || outer[At(n)].empty()) nodeCells[At(n)].push_back(c);
  for (std::size_t n = 1; n < nodes.size(); ++n)
    nodeCells[n].insert(nodeCells[n].end(), outer[n].begin(), outer[n].end());
}

// Half the cross product of the diagonals, which is the area vector of a triangle and of a plane quadrilateral.
void MeshPlan::MeasureAreas() {
  for (auto& group : faces) {
    for (Face& face : group) {
      Point const &a = nodes[At(face.nodes[0])], &b = nodes[At(face.nodes[1])], &c = nodes[At(face.nodes[2])];
      Point const& d = nodes[At(face.nodes.back())];
      bool const quadrilateral = face.nodes.size() == 4;
      Point const u = {c.x - a.x, c.y - a.y, c.z - a.z};
      Point const v =
          quadrilateral ? Point{d.x - b.x, d.y - b.y, d.z - b.z} : Point{b.x - a.x, b.y - a.y, b.z - a.z};
      Point const s = Cross(u, v);
      double const half = quadrilateral ? 0.5 : -0.5;
      face.area = {half * s.x, half * s.y, half * s.z};
    }
  }
}

MeshPlan BoxPlan(std::vector<double> const& x, std::vector<double> const& y, std::vector<double> const& z,
                 Sides const& sides) {
  BoxGrid const grid(x, y, z);
  MeshPlan plan;
  for (double const zn : z)
    for (double const yn : y)
      for (double const xn : x) plan.AddNode({xn, yn, zn});
  ForEachCell(grid,
              [&](int i, int j, int k) { plan.AddCell(grid.Centre(i, j, k), grid.CellNodes(i, j, k)); });
  for (int axis = 0; axis < 3; ++axis)
    ForEachCell(grid, [&](int i, int j, int k) { AddFacesAcross(plan, grid, sides, axis, i, j, k); });
  plan.ListCellsAroundNodes();
  return plan;
}

MeshPlan TwoCubes() { return BoxPlan({-1.0, 0.0, 1.0}, {-0.5, 0.5}, {-0.5, 0.5}); }

MeshPlan CubesOfAllGroups() {
  std::vector<double> const lines = {0.0, 1.0, 2.0, 3.0};
  return BoxPlan(lines, lines, lines);
}

MeshPlan SkewedCubesOfAllGroups() {
  MeshPlan const box = BoxPlan({0.0, 1.0, 1.75, 3.0}, {0.0, 0.875, 2.25, 3.0}, {0.0, 0.625, 1.5, 2.25});
  return box.Mapped([](Point p) {
    return Point{p.x + 0.25 * p.y, p.y - 0.125 * p.z + 0.0625 * p.x, p.z + 0.1875 * p.x};
  });
}

}  // namespace rbf_face_test
