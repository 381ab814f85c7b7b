#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"

namespace reference_host {

// A partition file is a text with the part of every cell, counted from 0, one a line in the order of the cells: what
// the programs of METIS write.

/// Collective. The parts of the own block of cells. Rank 0 reads the file in pieces.
/// @throws MeshError  on every rank: the file cannot be read, a line is no part 0..nParts-1, the file has another
///   number of lines than the mesh has cells, or a part has no cell
std::vector<int> ReadPartition(MpiCommunicator const& communicator, std::string const& file,
                               BlockRanges const& cells, int nParts);

/// Not collective. The parts of all cells.
/// @throws MeshError  as above
std::vector<int> ReadPartition(std::string const& file, std::int64_t nCells, int nParts);

/// Collective. Rank 0 writes the file in pieces; an older file is replaced when the new one is complete.
/// @param[in] partOfOwn  of the cells of the own block
/// @throws MeshError  on every rank: the file cannot be written
void WritePartition(MpiCommunicator const& communicator, std::string const& file, BlockRanges const& cells,
                    std::vector<int> const& partOfOwn);

/// Not collective. Writes the parts of all cells.
/// @throws MeshError  the file cannot be written
void WritePartition(std::string const& file, std::vector<int> const& partOfCell);

}  // namespace reference_host
