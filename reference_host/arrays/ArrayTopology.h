#pragma once

#include <array>
#include <vector>

#include "foundation/FaceGroups.h"
#include "reference_host/arrays/ArrayMesh.h"
#include "reference_host/partition/RaggedTable.h"

namespace reference_host {

/// The tables of cells, faces and nodes that the radial-basis operators read, from a solver's own arrays. They count
/// cells, faces and nodes from 1.
struct ArrayTopology {
  std::array<RaggedTable, kFaceKinds>
      faceNodes;  ///< by IndexOf(kind); the first three of a row span the face's plane
  RaggedTable cellCell, cellFace,
      cellFaceType;                 ///< rows 1..interior cells; faces by group, each in its order
  RaggedTable cellNodes;            ///< rows 1..all cells, ascending
  std::vector<int> cellNodeNumber;  ///< [1..all cells]
  RaggedTable nodeCell;             ///< rows 1..nodes, ascending
};

/// @param[in] groups  by IndexOf(kind): the faces with their cells, numbered as the operators do
/// @pre the arrays have nodes
ArrayTopology MakeTopology(ArrayMesh const& arrays, std::array<FaceGroup, kFaceKinds> const& groups,
                           int nCells);

}  // namespace reference_host
