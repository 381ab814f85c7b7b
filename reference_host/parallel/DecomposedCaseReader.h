#pragma once

#include <cstdint>
#include <string>

#include "reference_host/mesh/MeshPart.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// One rank's part of a decomposed case.
struct DecomposedPart {
  MeshPart part;            ///< patches without groups
  std::int64_t nNodes = 0;  ///< of the whole mesh
};

/// Collective. Each rank reads the processor folder of its number and fetches from its neighbours what it needs of the
/// cells beyond the cuts; no rank holds more than its own part.
///
/// With the addressing files of the decomposition (cellProcAddressing, pointProcAddressing, faceProcAddressing) cells,
/// nodes and faces are numbered as in the undecomposed mesh: the part is then the one that ExtractPart makes of it.
/// Without them cells and nodes are numbered rank by rank; nodes that faces of a cut share are counted once.
/// @param[in] folder  the case, with processor0, processor1, ...; as many as there are ranks
/// Throws MeshError, with the same text on every rank, for other rank counts, damaged folders, cuts that do not fit
/// together, and cyclic patches that are cut.
DecomposedPart ReadDecomposedCase(MpiCommunicator const& communicator, std::string const& folder);

}  // namespace reference_host
