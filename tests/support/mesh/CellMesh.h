#pragma once

#include <vector>

namespace rbf_cell_test {

struct Point {
  double x = 0.0, y = 0.0, z = 0.0;
};

/// A face between an interior cell and another cell of any kind.
struct CellFace {
  int cv = 0;     ///< interior cell
  int other = 0;  ///< other interior cell, boundary-side cell or halo cell
  Point centre;
  Point area{1.0, 0.0, 0.0};
};

/// What the cell operator reads of a mesh partition, as plain values: a test writes it down, the plain form
/// reads it, and CellHost lends it. Cells and nodes are numbered from 1; faces from 1 within their group, so
/// that face f of a group stands at index f - 1.
struct CellMesh {
  int nInnerCells = 0;
  std::vector<Point> centres{Point{}};           ///< [1..NCell], element 0 unused
  std::vector<std::vector<int>> neighbours{{}};  ///< [1..nInnerCells] members without the cell itself
  std::vector<CellFace> inner, wall, inlet, outlet, symmetry, partition;
  std::vector<std::vector<int>> partitionNodes;  ///< nodes of partition face f at index f - 1
  std::vector<std::vector<int>> nodeCells{{}};   ///< [1..NNode] cells around a node

  int NCell() const { return static_cast<int>(centres.size()) - 1; }
  Point const& Centre(int c) const { return centres[static_cast<std::size_t>(c)]; }
  Point& Centre(int c) { return centres[static_cast<std::size_t>(c)]; }
  std::vector<int> const& Neighbours(int c) const { return neighbours[static_cast<std::size_t>(c)]; }
  std::vector<int>& Neighbours(int c) { return neighbours[static_cast<std::size_t>(c)]; }

  /// Adds an interior cell without neighbours; all of them come before the first other cell. @return number
  int AddInteriorCell(Point centre);

  /// Adds a ghost or halo cell. @return number
  int AddOuterCell(Point centre);

  /// Adds an inner face half-way between two interior cells and makes them neighbours.
  void JoinInterior(int a, int b);

  /// Adds a ghost cell at `ghostCentre`, a face of `group` at `faceCentre` and the ghost to the cell's
  /// neighbours. @return the ghost's number
  int AddSide(std::vector<CellFace>& group, int cell, Point faceCentre, Point ghostCentre);
};

/// One interior cell at `centre` and six halo cells at `distance` along the axes, members of its stencil in
/// the order +x, -x, +y, -y, +z, -z.
///
///            (4)
///             |  (7)
///             | /
///    (3) --- (1) --- (2)     x to the right, y up, z into the page
///           / |
///        (6)  |
///            (5)
CellMesh SevenPoints(double distance = 1.0, Point centre = Point{});

/// One interior cell at `centre` whose neighbours are halo cells at the given points, in that order. A halo
/// cell stands at its own centre.
CellMesh OneStencil(Point centre, std::vector<Point> const& members);

}  // namespace rbf_cell_test
