#pragma once

#include <string>

#include "reference_host/FaceMesh.h"

namespace reference_host {

/// Reads an OpenFOAM mesh: the text files points, faces, owner, neighbour and boundary of a polyMesh folder,
/// cells of any shape. Faces, cells and patches keep their order.
///
/// A patch keeps its type. Types that stand for no boundary of the flow (empty, wedge, cyclic, processor)
/// have no boundary group by themselves: the user maps such a patch by name, or AssignBoundaryGroups refuses
/// the mesh.
///
/// Throws MeshError for binary and compressed files and for damaged ones. The mesh returned still has to pass
/// CheckMesh.
/// @param[in] folder  the polyMesh folder itself
FaceMesh ReadPolyMesh(const std::string& folder);

}  // namespace reference_host
