#pragma once

#include <string>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Refuses a mesh that the operators cannot work on: MeshError with the reason and the first node, face or cell in
/// question, called as the file calls it (FaceMesh::names), or else counted from 1 in the order of the mesh.
///
/// Refused are, in this order: a mesh without cells; coordinates that are not finite; faces with fewer than 3
/// nodes or with a node twice; node, cell and patch numbers out of range; faces that join a cell to itself; cells with
/// fewer than 4 faces; faces without area; cells that are not closed; cells whose volume is negative or zero.
/// @param[in] meshName  what the failure begins with, such as the file; may be empty
void CheckMesh(FaceMesh const& mesh, std::string const& meshName = {});

}  // namespace reference_host
