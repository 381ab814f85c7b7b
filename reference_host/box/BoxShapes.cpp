#include "reference_host/box/BoxShapes.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

namespace reference_host {
namespace {

using Corners = std::vector<int>;

ShapeInCube::Cell MakeCell(std::vector<Corners> const& faces) {
  ShapeInCube::Cell cell;
  for (Corners const& corners : faces) {
    cell.faces.push_back({corners});
    cell.corners.insert(cell.corners.end(), corners.begin(), corners.end());
  }
  std::sort(cell.corners.begin(), cell.corners.end());
  cell.corners.erase(std::unique(cell.corners.begin(), cell.corners.end()), cell.corners.end());
  return cell;
}

std::vector<ShapeInCube::Cell> Hexahedron() {
  return {MakeCell({{0, 4, 6, 2}, {1, 3, 7, 5}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 2, 3, 1}, {4, 5, 7, 6}})};
}

// For each order (a, b, c) of the directions, the tetrahedron on the path 0, e_a, e_a + e_b, 7 along the
// cube's edges (Kuhn's division). All cubes cut their sides along parallel diagonals, so neighbours fit.
std::vector<ShapeInCube::Cell> SixTetrahedra() {
  std::vector<ShapeInCube::Cell> cells;
  std::array<int, 3> order = {0, 1, 2};
  do {
    auto const [a, b, c] = order;
    bool const even = (b - a + 3) % 3 == 1;
    int v1 = 1 << a, v2 = 1 << a | 1 << b;
    if (!even) std::swap(v1, v2);  // the path of an odd order has the opposite orientation
    cells.push_back(MakeCell({{0, v2, v1}, {0, v1, 7}, {v1, v2, 7}, {0, 7, v2}}));
  } while (std::next_permutation(order.begin(), order.end()));
  return cells;
}

std::vector<ShapeInCube::Cell> TwoPrisms() {
  std::vector<ShapeInCube::Cell> cells;
  for (auto const& [a, b, c] : {std::array<int, 3>{0, 1, 3}, std::array<int, 3>{0, 3, 2}}) {
    int const up = 4;
    cells.push_back(MakeCell({{a, c, b},
                              {a + up, b + up, c + up},
                              {a, b, b + up, a + up},
                              {b, c, c + up, b + up},
                              {c, a, a + up, c + up}}));
  }
  return cells;
}

int SideOf(Corners const& corners) {
  for (int d = 0; d < 3; ++d) {
    auto const bit = [d](int corner) { return corner >> d & 1; };
    int const first = bit(corners.front());
    if (std::all_of(corners.begin(), corners.end(), [&](int corner) { return bit(corner) == first; })) {
      return 2 * d + first;
    }
  }
  return -1;
}

/// The face's corners as the cell on the other side sees them, ascending.
Corners SeenFromAcross(ShapeInCube::Face const& face) {
  Corners corners = face.corners;
  if (face.side >= 0) {
    for (int& corner : corners) corner ^= 1 << face.side / 2;
  }
  std::sort(corners.begin(), corners.end());
  return corners;
}

int FindCellAcross(ShapeInCube const& shape, int cell, ShapeInCube::Face const& face) {
  Corners const wanted = SeenFromAcross(face);
  for (int other = 0; other < shape.nCells(); ++other) {
    if (face.side < 0 && other == cell) continue;
    for (ShapeInCube::Face const& candidate : shape.cells[static_cast<std::size_t>(other)].faces) {
      Corners corners = candidate.corners;
      std::sort(corners.begin(), corners.end());
      if (corners == wanted) return other;
    }
  }
  return -1;
}

ShapeInCube Connect(std::vector<ShapeInCube::Cell> cells) {
  ShapeInCube shape;
  shape.cells = std::move(cells);
  for (int c = 0; c < shape.nCells(); ++c) {
    for (ShapeInCube::Face& face : shape.cells[static_cast<std::size_t>(c)].faces) {
      face.side = SideOf(face.corners);
      face.cellAcross = FindCellAcross(shape, c, face);
    }
  }
  return shape;
}

}  // namespace

int ShapeInCube::nFacesOnSide(int side) const {
  int n = 0;
  for (Cell const& cell : cells) {
    n += static_cast<int>(std::count_if(cell.faces.begin(), cell.faces.end(),
                                        [side](Face const& face) { return face.side == side; }));
  }
  return n;
}

int ShapeInCube::nInnerFaces() const { return nFacesOnSide(-1) / 2; }

ShapeInCube const& ShapeTable(BoxSpec::Shape shape) {
  static ShapeInCube const hex = Connect(Hexahedron());
  static ShapeInCube const tet = Connect(SixTetrahedra());
  static ShapeInCube const prism = Connect(TwoPrisms());
  switch (shape) {
    case BoxSpec::Shape::Tet:
      return tet;
    case BoxSpec::Shape::Prism:
      return prism;
    case BoxSpec::Shape::Hex:
    case BoxSpec::Shape::Dual:
      break;
  }
  return hex;
}

}  // namespace reference_host
