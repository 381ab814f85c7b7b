#pragma once

#include "reference_host/box/BoxBlocks.h"
#include "reference_host/box/BoxSpec.h"
#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshPart.h"

namespace reference_host {

/// The part that owns the cells in a block of cubes. Its halo cells are said to be those of part 0, as itself.
/// @pre the box is no dual, and an int counts what the block and the layer around it have
MeshPart MakeBoxBlock(BoxSpec const& spec, GridBlock const& cubes);

/// A part as if it was a whole mesh. Its halo cells become cells that do not have all their faces.
FaceMesh WholeOf(MeshPart&& part);

}  // namespace reference_host
