#pragma once

#include <memory>
#include <string>

#include "python/src/GroupNames.h"
#include "python/src/MeshHost.h"
#include "reference_host/mesh/FaceMesh.h"

namespace zyn_python {

/// Checks the mesh, gives each patch a group, and makes the records: cells in the order of zyngrad on one rank.
/// Throws MeshError.
/// @param[in] name  what messages begin with
std::unique_ptr<MeshHost> HostOf(reference_host::FaceMesh&& mesh, std::string const& name,
                                 GroupsByUser const& groups);

/// Reads a file, a folder or a box, see ReadMesh and ParseBoxSpec. Throws MeshError.
std::unique_ptr<MeshHost> ReadHost(std::string const& meshSpec, GroupsByUser const& groups);

}  // namespace zyn_python
