#pragma once

#include <vector>

#include "reference_host/box/BoxMesh.h"

namespace reference_host {

/// How one cube of a box is divided into cells, the same for every cube.
///
/// Corner c of the cube stands at (c & 1, c >> 1 & 1, c >> 2 & 1). Side 2*d + 0 or 1 is the lower or upper
/// one in direction d.
struct ShapeInCube {
  struct Face {
    std::vector<int> corners;  ///< by the right-hand rule around the normal out of the cell
    int side = -1;             ///< side of the cube that the face lies on, -1 inside the cube
    int cellAcross = -1;       ///< cell on the other side, in this cube or in the one beyond the side
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

/// @pre not a dual, whose cells are in no single cube
ShapeInCube const& ShapeTable(BoxSpec::Shape shape);

}  // namespace reference_host
