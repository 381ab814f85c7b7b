#pragma once

#include <vector>

#include "reference_host/mesh/CellShapes.h"
#include "reference_host/mesh/FaceMesh.h"

namespace reference_host::test {

struct StandardCell {
  CellShape shape = CellShape::Tetrahedron;
  std::vector<int> nodes;
};

struct SurfaceElement {
  ShortFace<int> nodes = {};
  int label = 0;
};

/// Standard cells and surface elements of a whole mesh.
struct StandardCells {
  std::vector<Point> points;
  std::vector<StandardCell> cells;
  std::vector<SurfaceElement> surfaces;
};

/// m x m x m cubes, each divided at random, with cells and nodes in random order, some cells inside out, some nodes
/// that no cell uses. Surfaces lie on faces at the boundary and between cells, some twice, and some on no face.
/// @param[in] kinds  of AddCube
StandardCells RandomCells(int m, std::vector<int> const& kinds, unsigned seed, bool shuffled);

}  // namespace reference_host::test
