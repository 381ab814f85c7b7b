#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "tests/support/mesh/TestMesh.h"

namespace zyn_test {

using Random = std::mt19937_64;

/// How the cubes of a lattice are cut into cells. All cuts conform from cube to cube.
enum class Cells {
  Hexahedra,     ///< one a cube
  Prisms,        ///< two a cube
  Pyramids,      ///< six a cube, around a node in its middle
  Tetrahedra,    ///< six a cube, around a diagonal
  Polyhedra,     ///< tetrahedra grown together at random; two cells may share several faces
  HexaPyramids,  ///< hexahedra, and pyramids in some of the cubes
};
constexpr Cells kAllCells[] = {Cells::Hexahedra,  Cells::Prisms,    Cells::Pyramids,
                               Cells::Tetrahedra, Cells::Polyhedra, Cells::HexaPyramids};
std::string Name(Cells cells);

struct LatticeOptions {
  Cells cells = Cells::Hexahedra;
  int nx = 3, ny = 3, nz = 2;  ///< cubes in each direction
  double jitter = 0.2;         ///< greatest shift of a node in cubes; 0: many neighbours at one distance
  Point size{1.0, 1.0, 1.0};   ///< of a cube, L
  bool shuffleNeighbours = true;
  std::uint64_t seed = 1;
};

/// A box of cells. Low x is inlet, high x outlet, low y wall, high y partition, low z symmetry, high z wall;
/// ghost centres are mirrored at the face's centre, outer cells are numbered at random.
TestMesh LatticeMesh(LatticeOptions const& options);

/// Adds what a mesh should not have and a solver may bring: neighbours listed twice, a cell that lists
/// itself, a wall's side cell that is also an inlet's, cells without neighbours.
void AddOddities(TestMesh& mesh, Random& random);

}  // namespace zyn_test
