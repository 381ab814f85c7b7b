#pragma once

#include "cli/vtk/VtkCell.h"
#include "cli/vtk/VtuFile.h"
#include "host/Zyn3dGV.h"

namespace zyngrad {

/// The interior cells of one partition as a grid, with the nodes that they use; cell c of the partition becomes
/// cell c-1. It needs only the mesh record, so that a solver could call it with its own.
VtuGrid GridOfInteriorCells(CZYN3DFiniteVolumeMesh const& mesh);

/// The faces of interior cell `cell` (1-based), their nodes numbered as in the mesh.
/// @param[out] faces  overwritten
void FacesOfCell(CZYN3DFiniteVolumeMesh const& mesh, int cell, CellFaces& faces);

}  // namespace zyngrad
