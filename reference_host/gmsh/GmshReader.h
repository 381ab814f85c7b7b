#pragma once

#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Reads a Gmsh mesh: MSH 2.2 or 4.1, text or binary, of tetrahedra, hexahedra, prisms and pyramids.
///
/// All volume elements become cells, in the order of the file, whether in a physical volume or not. Cells
/// given inside out are inverted. The patches are the physical surfaces by ascending number, called
/// "surface_7" if number 7 has no name. Boundary faces in no physical surface form the patch "unnamed".
/// Surface elements between two cells are ignored, so a physical surface may end up without faces. If a face
/// is in several physical surfaces, the first in the file counts.
///
/// Partitioned meshes in one file are read as a whole; the partitions are ignored. Periodic surfaces become
/// periods, for JoinPeriods.
///
/// Throws MeshError for other versions, another byte order, second-order elements, single files of a mesh in
/// several files and damaged files. Pass the result to CheckMesh before you use it.
FaceMesh ReadGmsh(std::string const& file);

}  // namespace reference_host
