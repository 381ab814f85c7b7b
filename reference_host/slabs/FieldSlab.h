#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/PolyMeshReader.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"

namespace reference_host {

/// One rank's share of a cell field as its file has it.
struct FieldSlab {
  int nComponents = 1;
  BlockRanges cells;          ///< even
  std::vector<double> value;  ///< [nComponents * cell + component], own cells
  FoamField boundary;         ///< on rank 0: all but the values of cells
};

/// Collective. What ReadField reads, each rank its share, with the same messages. Binary files are read by every rank, its
/// own bytes of them; rank 0 reads text and compressed files in pieces and sends each rank its share.
/// @param[in] polyMesh,boundary  as for ReadField; those of rank 0 count
/// @param[in] nFaces  faces of each patch, the same on every rank
/// @throws MeshError  with the same text on every rank
FieldSlab ReadFieldSlab(MpiCommunicator const& communicator, std::string const& fieldSpec,
                        std::string const& polyMesh, std::int64_t nCells, PolyMeshBoundary const& boundary,
                        std::vector<std::int64_t> const& nFaces);

}  // namespace reference_host
