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

/// The group of that name, in any case; empty for anything else.
std::optional<BoundaryGroup> GroupFromWord(std::string const& word);

/// The group that a patch has by itself. Its type goes first: "inletWall" of type wall is a wall. Then its
/// name counts. Either must begin with inlet, outlet, symmetry or wall, in any case ("symmetryPlane",
/// "Wall_left"), or be the type of a CGNS condition for one of them ("BCWallViscous", "BCInflow", "BCTunnelOutflow",
/// "BCSymmetryPlane"). Patches that stand for no boundary of the flow (types empty, wedge, and those beginning with
/// cyclic or processor) have no group by themselves, whatever their name.
std::optional<BoundaryGroup> GroupByName(std::string const& name, std::string const& type);

/// Gives every patch its group: the user's, else its own (GroupByName).
/// @param[in,out] patches       their `group` is overwritten
/// @param[in]     facesOfPatch  number of faces of each patch in the whole mesh; a patch without faces may
/// stay
///                              without a group
/// @param[in]     byUser        groups by name of the patch
/// @param[in]     meshName      what the failure begins with, such as the file; may be empty
/// Throws MeshError that lists the patches in question, or the first ones of many: those of `byUser` that the mesh does
/// not have, or those with faces and without a group.
void AssignBoundaryGroups(std::vector<Patch>& patches, std::vector<std::int64_t> const& facesOfPatch,
                          std::map<std::string, BoundaryGroup> const& byUser,
                          std::string const& meshName = {});

}  // namespace reference_host
