#pragma once

#include <cstddef>
#include <vector>

namespace reference_host {

/// The graph of the cells of a mesh: cell c has the neighbours columns[rowStart[c] .. rowStart[c+1]-1], once for each
/// shared face, those beyond periods included, and not itself.
struct CellGraph {
  std::vector<std::size_t> rowStart;
  std::vector<int> columns;

  int nCells() const { return static_cast<int>(rowStart.size()) - 1; }
};

/// The part 0..nParts-1 of every cell, by METIS; PartitionMesh says more. Not collective. @pre there are at least nParts
/// cells
std::vector<int> PartitionGraph(CellGraph&& graph, int nParts);

}  // namespace reference_host
