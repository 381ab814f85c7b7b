#pragma once

#include <vector>

#include "tests/support/mesh/TestMesh.h"

/// @file
/// Meshes of a few cells whose results are worked out by hand.

namespace zyn_test {

/// Cell 1 (the CV side) and cell 2 with unit volumes at x = 0 and x = 1 and one inner face between them:
///
///       1  |  2        area (1, 2, 4), centre (0.5, 0, 0), weight as given
TestMesh TwoCells(double weight = 0.5, int faceType = 0);

/// Cell 1 with a unit volume and the CV side of seven faces of area (1, 0, 0) and weight 1, one to each of
/// the cells 2 to 8 in turn: two inner faces and one partition, inlet, outlet, symmetry and wall face. With
/// phi[1] = 0 the faces' values are phi[2] to phi[8], and gx[1] is their sum.
TestMesh OneCellWithFacesOfAllGroups();

/// Cells of unit volume at the origin, each with neighbours at the given offsets behind walls of area (1, 0, 0).
TestMesh CellsWithWallNeighbours(std::vector<std::vector<Vector3>> const& offsets);

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
TestMesh SevenPoints(double distance = 1.0, Point centre = Point{});

/// One interior cell at `centre` whose neighbours are halo cells at the given points, in that order. A halo
/// cell stands at its own centre.
TestMesh OneStencil(Point centre, std::vector<Point> const& members);

/// Interior cells at the given points, without nodes, and one inner face between the first two, so that the mean
/// distance is theirs. With a single cell there is no inner face.
TestMesh LooseCells(std::vector<Point> const& centres);

}  // namespace zyn_test
