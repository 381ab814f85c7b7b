#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/GroupRules.h"

namespace reference_host {

/// "inlet", "outlet", "symmetry" or "wall".
std::string NameOfGroup(BoundaryGroup group);

/// The group of that name, upper or lower case; empty for anything else.
std::optional<BoundaryGroup> GroupFromWord(std::string const& word);

/// The group of a patch by its type, or else by its name.
///
/// Types: those of OpenFOAM for a missing dimension and for planes of symmetry (empty, wedge, symmetry,
/// symmetryPlane) are walls. Files have the values of the cells at them, and with those the wall group gives every
/// method the right gradient; the symmetry group would spoil the radial-basis gradient, whose ghost cells of symmetry
/// faces have no position. Conditions of CGNS begin with BCWall, BCInflow, BCTunnelInflow, BCOutflow, BCTunnelOutflow,
/// BCSymmetryPlane. Any other type is read like a name: "mappedWall" is a wall.
///
/// Names are divided into words at characters that are no letters and before capitals ("lowerWall", "inlet_2"). A word
/// that begins or ends with inlet, outlet or wall, in upper or lower case, or begins with symmetry, tells the group.
/// Words of different groups ("inletWall") tell none, and neither does a word after no, non, not or anti.
///
/// Empty for types that begin with cyclic or processor, whatever the name.
std::optional<BoundaryGroup> GroupByName(std::string const& name, std::string const& type);

/// Assigns a group to every patch: the user's, or else its own (GroupByName), or else the user's fallback. A patch that
/// the mesh file continues elsewhere (Patch::partners) needs no group. If the user assigns one to it, its partners get
/// the same: neither side is periodic then.
/// @param[in,out] patches       their `group` and `reason` are overwritten
/// @param[in]     facesOfPatch  number of faces of each patch in the whole mesh; a patch without faces may
///                              stay without a group
/// @param[in]     byUser        the user's rules
/// @param[in]     meshName      what messages begin with, such as the file; may be empty
/// @throws MeshError  rules of `byUser` that apply to no patch, or patches with faces but without a group; the message
///   lists them, or the first of many
void AssignBoundaryGroups(std::vector<Patch>& patches, std::vector<std::int64_t> const& facesOfPatch,
                          GroupRules const& byUser, std::string const& meshName = {});

}  // namespace reference_host
