#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// "inlet", "outlet", "symmetry" or "wall".
std::string NameOfGroup(BoundaryGroup group);

/// The group of that name, upper or lower case; empty for anything else.
std::optional<BoundaryGroup> GroupFromWord(std::string const& word);

/// The group of a patch by its type or else its name: "inletWall" of type wall is a wall. Either must begin
/// with inlet, outlet, symmetry or wall, in upper or lower case ("symmetryPlane", "Wall_left"), or be the
/// type of a CGNS condition for one of them ("BCWallViscous", "BCInflow", "BCTunnelOutflow",
/// "BCSymmetryPlane"). Empty for patches that are not boundaries of the flow, whatever their name: those of
/// the types empty and wedge, and of types that begin with cyclic or processor.
std::optional<BoundaryGroup> GroupByName(std::string const& name, std::string const& type);

/// Assigns a group to every patch: the user's, or else its own (GroupByName).
/// @param[in,out] patches       their `group` is overwritten
/// @param[in]     facesOfPatch  number of faces of each patch in the whole mesh; a patch without faces may
///                              stay without a group
/// @param[in]     byUser        groups by patch name
/// @param[in]     meshName      what messages begin with, such as the file; may be empty
/// @throws MeshError  patches of `byUser` that the mesh does not have, or patches with faces but without a
///   group; the message lists them, or the first of many
void AssignBoundaryGroups(std::vector<Patch>& patches, std::vector<std::int64_t> const& facesOfPatch,
                          std::map<std::string, BoundaryGroup> const& byUser,
                          std::string const& meshName = {});

}  // namespace reference_host
