#pragma once

#include "cli/vtk/VtkCell.h"
#include "cli/vtk/VtuFile.h"
#include "host/Zyn3dGV.h"

namespace zyngrad {

/// The interior cells of one partition as a grid to write, cell c of the partition as cell c-1, with the
/// nodes that they use. Made from the lent records alone: a solver could call it with its own.
VtuGrid GridOfInteriorCells(CZYN3DFiniteVolumeMesh const& mesh);

/// The faces of interior cell `cell` (1-based), their nodes numbered as in the mesh.
/// @param[out] faces  overwritten
void FacesOfCell(CZYN3DFiniteVolumeMesh const& mesh, int cell, CellFaces& faces);

}  // namespace zyngrad
