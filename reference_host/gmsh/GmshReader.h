#pragma once

#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Reads a Gmsh mesh: MSH 2.2 or 4.1, text or binary, of tetrahedra, hexahedra, prisms and pyramids.
///
/// All volume elements become cells, in the order of the file, in a physical volume or not; cells given
/// inside out are turned round. The patches are the physical surfaces by ascending number, called "surface_7"
/// if number 7 has no name; faces of the boundary that are in no physical surface form the patch "unnamed".
/// Surfaces between two cells are passed over; so a physical surface may end up without faces. Of several
/// physical surfaces of a face the first in the file counts.
///
/// Throws MeshError for anything else: other versions, other byte order, second-order elements, partitioned
/// files, damaged files. The mesh returned still has to pass CheckMesh.
FaceMesh ReadGmsh(std::string const& file);

}  // namespace reference_host
