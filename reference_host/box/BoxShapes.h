#pragma once

#include <vector>

#include "reference_host/box/BoxSpec.h"

namespace reference_host {

/// The division of one cube of a box into cells, the same for every cube.
///
/// Corner c of the cube is at (c & 1, c >> 1 & 1, c >> 2 & 1). Side 2*d is the lower and side 2*d + 1 the
/// upper one in direction d.
struct ShapeInCube {
  struct Face {
    std::vector<int> corners;  ///< by the right-hand rule around the normal out of the cell
    int side = -1;             ///< side of the cube that the face lies on, -1 inside the cube
    int cellAcross = -1;       ///< cell on the other side, in this cube or in the neighbour cube
  };
  struct Cell {
    std::vector<int> corners;  ///< ascending, which is also the order of the node numbers
    std::vector<Face> faces;
  };
  std::vector<Cell> cells;

  int nCells() const { return static_cast<int>(cells.size()); }
  int nInnerFaces() const;           ///< faces inside the cube, each once
  int nFacesOnSide(int side) const;  ///< opposite sides have the same number
};

/// @pre shape is not Dual, whose cells extend over several cubes
ShapeInCube const& ShapeTable(BoxSpec::Shape shape);

}  // namespace reference_host
