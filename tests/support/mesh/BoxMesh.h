#pragma once

#include <array>
#include <vector>

#include "tests/support/mesh/TestMesh.h"

namespace zyn_test {

/// Groups of the sides -x, +x, -y, +y, -z, +z of a box.
using Sides = std::array<Group, 6>;
constexpr Sides kAllGroups = {kInlet, kOutlet, kWall, kPartition, kSymmetry, kWall};

/// Where the centre of the cell beyond a boundary face stands.
enum class Beyond { Mirrored, OnTheFace };

/// A box of cells between the given planes, x running fastest, with everything that a mesh has. Inner faces across x
/// come first, then those across y, then z. Weights come from the distances of the centres to the face.
TestMesh Box(std::vector<double> const& x, std::vector<double> const& y, std::vector<double> const& z,
             Sides const& sides = kAllGroups, Beyond beyond = Beyond::Mirrored);

/// A box without partition faces: low x is inlet, high x outlet, the y sides are walls and the z sides symmetry.
/// Ghost centres stand on the faces.
TestMesh ClosedBox(std::vector<double> const& x, std::vector<double> const& y, std::vector<double> const& z);

/// Two unit cubes side by side along x around the origin, with one inner face in the plane x = 0.
///
///     +---------+---------+     y up, z towards the reader; inlet at x = -1, outlet at x = 1,
///     |   (1)   |   (2)   |     wall below, partition above, symmetry behind, wall in front
///     +---------+---------+
TestMesh TwoCubes();

/// 3 x 3 x 3 unit cubes around cell 14, which is in nobody's reach of the boundary; faces of all groups.
TestMesh CubesOfAllGroups();

/// The same with planes and cells out of line and at unequal distances, the faces still plane.
TestMesh SkewedCubesOfAllGroups();

}  // namespace zyn_test
