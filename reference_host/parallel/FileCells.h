#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/parallel/LoadMesh.h"

namespace reference_host {

/// [1..NInnerCells] the number, from 0, of each interior cell of this rank in the mesh file: in the whole mesh, or for
/// a decomposed case in the rank's own processor folder. A field file has its values in the order of these numbers.
/// Element 0 is meaningless.
std::vector<std::int64_t> CellsInFile(LoadedMesh const& mesh);

}  // namespace reference_host
