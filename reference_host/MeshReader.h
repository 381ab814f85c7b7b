#pragma once

#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

enum class MeshFormat { PolyMesh, Gmsh, Cgns };

/// The format of a mesh: *.msh, *.cgns, or a folder with a polyMesh. Throws MeshError for anything else.
MeshFormat FormatOf(std::string const& path);

/// Reads a mesh in any of the supported formats: a Gmsh file *.msh, a CGNS file *.cgns, an OpenFOAM polyMesh
/// folder, or a folder that contains one as constant/polyMesh or polyMesh. Throws MeshError for anything
/// else. Pass the result to CheckMesh before you use it.
FaceMesh ReadMesh(std::string const& path);

}  // namespace reference_host
