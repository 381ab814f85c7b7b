#pragma once

#include <cstdint>

#include "tests/support/mesh/TestMesh.h"

namespace zyn_test {

struct HexahedraOptions {
  int nx = 3, ny = 3, nz = 3;
  double edge = 1.0;    ///< of a cube, L
  double jitter = 0.2;  ///< greatest shift of a node in cubes; 0: many cells at one distance
  std::uint64_t seed = 1;
  bool listInteriorCellsAtBoundaryNodes = true;  ///< in the host's rows; either is allowed
};

/// A box of hexahedra with a corner at the origin. Low x is inlet, high x outlet, low y wall, high y partition,
/// low z symmetry, high z wall; the centres of outer cells are mirrored at the face's centre.
TestMesh Hexahedra(HexahedraOptions const& options);

}  // namespace zyn_test
