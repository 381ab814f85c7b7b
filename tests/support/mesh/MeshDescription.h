#pragma once

#include <functional>
#include <vector>

namespace gradient_test {

struct Vector3 {
  double x = 0.0, y = 0.0, z = 0.0;
};

/// One face. Inner and partition faces use all members, boundary faces the cells and the area vector.
struct Face {
  int cv = 0;           ///< cell that receives the + flux
  int other = 0;        ///< other inner cell, halo cell or ghost cell
  Vector3 area;         ///< out of `cv`
  Vector3 centre;       ///< face centre
  double weight = 0.5;  ///< of the `other` side
  int type = 0;         ///< 1: one-sided
};

/// A mesh partition in words: what a test writes down and what the plain forms read. Cells are numbered
/// from 1.
struct MeshDescription {
  int nInnerCells = 0;
  std::vector<Vector3> centres{Vector3{}};  ///< [1..NCell], element 0 unused
  std::vector<double> volumes{0.0};         ///< [1..nInnerCells], element 0 unused
  std::vector<Face> inner, partition, inlet, outlet, symmetry, wall;

  int NCell() const { return static_cast<int>(centres.size()) - 1; }

  /// Adds an interior cell; all of them come before the first other cell. @return its number
  int AddInteriorCell(Vector3 centre, double volume);

  /// Adds a ghost or halo cell. @return its number
  int AddOuterCell(Vector3 centre);
};

/// What an exchange does to one cell array, given by its element 0.
using Exchange = std::function<void(double*)>;

/// An exchange that leaves the array alone, so that a test sees what the halo cells held before.
Exchange NoExchange();

/// An exchange with this partition as its own neighbour: each halo cell takes the value of a fixed interior
/// cell.
Exchange ExchangeWithItself(MeshDescription const& mesh);

/// Cell 1 (the CV side) and cell 2 with unit volumes at x = 0 and x = 1 and one inner face between them:
///
///       1  |  2        area (1, 2, 4), centre (0.5, 0, 0), weight as given
MeshDescription TwoCells(double weight = 0.5, int faceType = 0);

/// Cell 1 with a unit volume and the CV side of seven faces of area (1, 0, 0) and weight 1, one to each of
/// the cells 2 to 8 in turn: two inner faces and one partition, inlet, outlet, symmetry and wall face. With
/// phi[1] = 0 the faces' values are phi[2] to phi[8], and gx[1] is their sum.
MeshDescription OneCellWithFacesOfAllGroups();

/// A box of nx*ny*nz cells with the given grid lines in each direction. Low x is inlet, high x outlet, the y
/// sides are walls and the z sides symmetry; ghost centres stand on the faces, weights come from the
/// distances.
MeshDescription Box(std::vector<double> const& xLines, std::vector<double> const& yLines,
                    std::vector<double> const& zLines);

}  // namespace gradient_test
