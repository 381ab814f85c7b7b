#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"

namespace reference_host {

// A partition file is a text with the part of every cell, counted from 0, in the order of the cells and one a line: what
// the programs of METIS write. A part may have no cell.

/// Collective. The parts of the own block of cells. Rank 0 reads the file in pieces.
/// @throws MeshError  on every rank: the file cannot be read, a number is no part 0..nParts-1, or there are more or
///   fewer numbers than cells
std::vector<int> ReadPartition(MpiCommunicator const& communicator, std::string const& file,
                               BlockRanges const& cells, int nParts);

/// Not collective. The parts of all cells.
/// @throws MeshError  as above
std::vector<int> ReadPartition(std::string const& file, std::int64_t nCells, int nParts);

/// Collective. Rank 0 writes the file in pieces.
/// @param[in] partOfOwn  of the cells of the own block
/// @throws MeshError  on every rank: there is a file of this name, or the new one cannot be written. No part of a file
///   that could not be written stays behind
void WritePartition(MpiCommunicator const& communicator, std::string const& file, BlockRanges const& cells,
                    std::vector<int> const& partOfOwn);

}  // namespace reference_host
