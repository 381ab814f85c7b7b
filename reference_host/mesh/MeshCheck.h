#pragma once

#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Throws MeshError for a mesh that the operators cannot use, with the reason and the first node, face or
/// cell in question: by its name in the file (FaceMesh::names), or else by its number in the mesh, counted
/// from 1.
///
/// Rejects, in this order: a mesh without cells; coordinates that are not finite; faces with fewer than 3
/// nodes or with a node twice; node, cell and patch numbers out of range; faces that join a cell to itself;
/// cells with fewer than 4 faces; faces without area; cells that are not closed; cells whose volume is
/// negative or zero.
/// @param[in] meshName  what the message begins with, such as the file; may be empty
void CheckMesh(FaceMesh const& mesh, std::string const& meshName = {});

}  // namespace reference_host
