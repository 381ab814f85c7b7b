#pragma once

#include <functional>
#include <vector>

#include "reference_host/gmsh/GmshContent.h"
#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Adds the periods of a Gmsh file to the mesh made of it: pairs the boundary faces on periodic surfaces by their
/// nodes, and tells patches whose faces are all in pairs their partners. Faces without a counterpart stay as they
/// are; so do surfaces inside the mesh.
/// @param[in] nodeOfTag  number of a node in the mesh; -1: no cell uses it
void AddGmshPeriods(std::vector<GmshPeriodicSurface> const& surfaces,
                    std::function<int(std::int64_t)> const& nodeOfTag, FaceMesh& mesh);

}  // namespace reference_host
