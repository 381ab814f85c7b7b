#pragma once

#include <cstdint>
#include <vector>

#include "tests/support/mesh/CellMesh.h"

namespace rbf_ib_test {

using rbf_cell_test::Point;

/// A face with its nodes.
struct Face {
  int cv = 0;     ///< interior cell
  int other = 0;  ///< other interior cell, boundary-side cell or halo cell
  Point centre;
  std::vector<int> nodes;
};

/// What the interpolation to free points reads of a mesh partition, as plain values: a test writes it down and
/// PointHost lends it. Cells and nodes are numbered from 1; faces from 1 within their group, so that face f of a
/// group stands at index f - 1.
struct PointMesh {
  int nInnerCells = 0;
  std::vector<Point> centres{Point{}};          ///< [1..NCell]
  std::vector<std::vector<int>> cellNodes{{}};  ///< [1..NCell] nodes of a cell
  std::vector<Point> nodes{Point{}};            ///< [1..NNode]
  std::vector<std::vector<int>> nodeCells{{}};  ///< [1..NNode] cells around a node, as the host lists them
  std::vector<Face> inner, wall, inlet, outlet, symmetry, partition;

  int NCell() const { return static_cast<int>(centres.size()) - 1; }
  int NNode() const { return static_cast<int>(nodes.size()) - 1; }
  Point const& Centre(int c) const { return centres[static_cast<std::size_t>(c)]; }
  Point& Centre(int c) { return centres[static_cast<std::size_t>(c)]; }
  std::vector<int>& NodeCells(int n) { return nodeCells[static_cast<std::size_t>(n)]; }
  std::vector<int>& CellNodes(int c) { return cellNodes[static_cast<std::size_t>(c)]; }
  std::vector<int> const& CellNodes(int c) const { return cellNodes[static_cast<std::size_t>(c)]; }

  int AddNode(Point p);  ///< without cells. @return number

  /// Adds an interior cell with the given nodes, and itself to their rows; all of them come before the first
  /// other cell. @return number
  int AddInteriorCell(Point centre, std::vector<int> const& itsNodes = {});

  /// Adds a ghost or halo cell likewise. @return number
  int AddOuterCell(Point centre, std::vector<int> const& itsNodes = {});

  /// Adds an inner face between two interior cells. Their distance counts for the mean distance.
  void JoinInterior(int a, int b);

  /// Adds a ghost or halo cell at `ghostCentre` behind a face of `group` at `faceCentre`; both have the nodes.
  /// @return the cell's number
  int AddSide(std::vector<Face>& group, int cell, Point faceCentre, Point ghostCentre,
              std::vector<int> const& itsNodes = {});
};

/// Interior cells at the given points, without nodes, and one inner face between the first two, so that the mean
/// distance is theirs. With a single cell there is no inner face.
PointMesh LooseCells(std::vector<Point> const& centres);

struct HexahedraOptions {
  int nx = 3, ny = 3, nz = 3;
  double edge = 1.0;    ///< of a cube, L
  double jitter = 0.2;  ///< greatest shift of a node in cubes; 0: many cells at one distance
  std::uint64_t seed = 1;
  bool listInteriorCellsAtBoundaryNodes = true;  ///< in the host's rows; either is allowed
};

/// A box of hexahedra with a corner at the origin. Low x is inlet, high x outlet, low y wall, high y partition,
/// low z symmetry, high z wall; the centres of outer cells are mirrored at the face's centre.
PointMesh Hexahedra(HexahedraOptions const& options);

}  // namespace rbf_ib_test
