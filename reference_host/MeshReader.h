#pragma once

#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Reads a mesh in any of the formats: a Gmsh file *.msh, a CGNS file *.cgns, an OpenFOAM polyMesh folder or a folder that has
/// one in constant/polyMesh or polyMesh. Throws MeshError for anything else. The mesh returned still has to
/// pass CheckMesh.
FaceMesh ReadMesh(std::string const& path);

}  // namespace reference_host
