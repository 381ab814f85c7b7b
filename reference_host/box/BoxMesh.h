#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/box/BoxSpec.h"
#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshPart.h"

namespace reference_host {

/// Number of nodes of the box.
std::int64_t BoxNodeCount(BoxSpec const& spec);

/// In the order of a cube's sides (BoxShapes.h).
std::vector<Patch> BoxPatches();

/// The whole box.
FaceMesh MakeBox(BoxSpec const& spec);

/// One part of the box, made without the rest, equal to SplitMesh(MakeBox(spec), BoxPartOfCell(spec, nParts),
/// nParts)[part]. Throws MeshError if there are more parts than cubes, or if the part is too large for 32-bit numbers.
MeshPart MakeBoxPart(BoxSpec const& spec, int part, int nParts);

/// Throws MeshError if one of the parts is too large for 32-bit numbers, without making it.
void CheckBoxPartsFit(BoxSpec const& spec, int nParts);

/// The part of every cell. Parts are blocks of whole cubes, or of nodes for a dual, which result from cutting
/// the longest side in two until each part has its block.
std::vector<int> BoxPartOfCell(BoxSpec const& spec, int nParts);

}  // namespace reference_host
