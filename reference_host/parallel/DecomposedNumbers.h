#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/parallel/ProcessorCuts.h"

namespace reference_host {

/// Numbers of a processor's cells and nodes in the whole mesh, counted from 0.
struct DecomposedNumbers {
  std::vector<std::int64_t> cell;
  std::vector<std::int64_t> node;  ///< both sides of a cut number a node alike
  std::int64_t nNodes = 0;         ///< of the whole mesh
};

/// Collective. Takes the numbers of the addressing files, or numbers rank by rank if there are none. Throws
/// MeshError if only some ranks have them, or if they contradict each other.
DecomposedNumbers NumberDecomposedMesh(MpiCommunicator const& communicator, ProcessorMesh const& processor,
                                       ProcessorCuts const& cuts);

}  // namespace reference_host
