#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Standard cells. Order of their nodes: a triangle and the tip of a tetrahedron; a quadrangle and the tip of
/// a pyramid; one end and then the other of a hexahedron or a prism, with corresponding nodes in the same
/// order. The nodes of the first face go around the direction into the cell.
enum class CellShape : std::uint8_t { Tetrahedron, Hexahedron, Prism, Pyramid };

/// Nodes of a triangle or a quadrangle in order, by their numbers or by their positions in a cell; [3] = -1 for a
/// triangle.
template <class Number>
using ShortFace = std::array<Number, 4>;

/// Nodes of the faces of a standard cell by position in the cell, around the outward normal; -1 ends a
/// triangle.
struct CellShapeTable {
  int nNodes;
  int nFaces;
  std::array<ShortFace<int>, 6> faces;
  std::array<int, 8> mirrored;  ///< the correct order of the nodes of a cell given inside out
};

// clang-format off
inline constexpr std::array<CellShapeTable, 4> kCellShapeTables = {{
    {4, 4, {{{0, 2, 1, -1}, {0, 1, 3, -1}, {1, 2, 3, -1}, {0, 3, 2, -1}}},
     {0, 2, 1, 3}},
    {8, 6, {{{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}}},
     {4, 5, 6, 7, 0, 1, 2, 3}},
    {6, 5, {{{0, 2, 1, -1}, {3, 4, 5, -1}, {0, 1, 4, 3}, {1, 2, 5, 4}, {2, 0, 3, 5}}},
     {3, 4, 5, 0, 1, 2}},
    {5, 5, {{{0, 3, 2, 1}, {0, 1, 4, -1}, {1, 2, 4, -1}, {2, 3, 4, -1}, {3, 0, 4, -1}}},
     {0, 3, 2, 1, 4}},
}};
// clang-format on

inline CellShapeTable const& TableOfCellShape(CellShape shape) {
  return kCellShapeTables[static_cast<std::size_t>(shape)];
}

/// Number of nodes of a standard cell.
inline int NodeCount(CellShape shape) { return TableOfCellShape(shape).nNodes; }

/// Number of faces of a standard cell.
inline int FaceCount(CellShape shape) { return TableOfCellShape(shape).nFaces; }

/// Inverts a cell with negative volume, which some files give inside out.
/// @param[in,out] nodes  [0..NodeCount(shape)-1] into points
void OrientCell(std::vector<Point> const& points, CellShape shape, int* nodes);

template <class Number>
int NodeCountOfFace(ShortFace<Number> const& face) {
  return face[3] < 0 ? 3 : 4;
}

/// The nodes of face `local` of a cell, around the outward normal.
/// @param[in] nodes  [0..NodeCount(shape)-1] of the cell
template <class Number>
ShortFace<Number> FaceOfCell(CellShape shape, int local, Number const* nodes) {
  ShortFace<int> const& positions = TableOfCellShape(shape).faces[static_cast<std::size_t>(local)];
  ShortFace<Number> face{};
  for (std::size_t i = 0; i < face.size(); ++i)
    face[i] = positions[i] < 0 ? Number{-1} : nodes[static_cast<std::size_t>(positions[i])];
  return face;
}

/// Puts the lowest node first and the others in ascending order; a triangle's -1 stays last.
template <class Number>
ShortFace<Number> Sorted(ShortFace<Number> nodes) {
  std::sort(nodes.begin(), nodes.begin() + NodeCountOfFace(nodes));
  return nodes;
}

/// Whether b is a in reverse order, starting at any node.
template <class Number>
bool IsReverse(ShortFace<Number> const& a, ShortFace<Number> const& b) {
  auto const n = static_cast<std::size_t>(NodeCountOfFace(a));
  for (std::size_t shift = 0; shift < n; ++shift) {
    bool same = true;
    for (std::size_t i = 0; i < n; ++i) same = same && a[i] == b[(shift + n - i) % n];
    if (same) return true;
  }
  return false;
}

/// The first node, by its position, that is equal to an earlier one; n: all differ.
template <class Number>
int FirstRepeated(Number const* nodes, int n) {
  int i = 0;
  while (i < n && std::find(nodes, nodes + i, nodes[i]) == nodes + i) ++i;
  return i;
}

}  // namespace reference_host
