#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reference_host/mesh/MeshPart.h"
#include "reference_host/openfoam/PolyMeshReader.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// One rank's part of a decomposed case.
struct DecomposedPart {
  MeshPart part;                        ///< patches with the groups that were assigned
  std::int64_t nNodes = 0;              ///< of the whole mesh
  PolyMeshBoundary boundary;            ///< of that folder, without the faces of the cuts
  std::vector<std::int64_t> wholeCell;  ///< [cell of the folder] its number in the whole mesh, from 0
};

/// Collective. Each rank reads the processor folder of its number and gets from its neighbours what it needs
/// of the cells across the cuts. No rank holds more than its own part.
///
/// With the addressing files of the decomposition (cellProcAddressing, pointProcAddressing,
/// faceProcAddressing), cells, nodes and faces are numbered as in the undecomposed mesh, and the part equals
/// that of ExtractPart. Without them, cells and nodes are numbered rank by rank; nodes shared by faces of a
/// cut are counted once.
/// Cyclic patches are joined as by JoinPeriods, where the decomposition has cut them and where it has not.
/// @param[in] assignGroups  called on every rank with the patches and the number of faces of each in the whole mesh;
///   a cyclic patch that gets a group becomes a boundary. Empty: no patch gets one
/// @param[in] folder  the case, with as many folders processor0, processor1, ... as there are ranks
/// @throws MeshError  with the same text on every rank: another number of ranks, damaged folders, cuts that
///   do not match, cyclic patches that are no translation of each other
DecomposedPart ReadDecomposedCase(
    MpiCommunicator const& communicator, std::string const& folder,
    std::function<void(std::vector<Patch>&, std::vector<std::int64_t> const&)> const& assignGroups = {});

}  // namespace reference_host
