#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

/// One rank's share of the graph of the cells of a mesh: the cells of its own block and their neighbours, those beyond
/// periods included. A cell that is its own neighbour beyond a period has no edge to itself.
struct SlabGraph {
  BlockRanges cells;

  /// Own cell c, counted from 0 in the block, has the neighbours columns[rowStart[c] .. rowStart[c+1]-1]: numbers of
  /// the whole mesh, ascending, each once.
  std::vector<std::int64_t> rowStart;
  std::vector<std::int64_t> columns;

  /// By entry of columns: the number of shared faces, those of periodic pairs included. Empty on every rank if no two
  /// cells of the mesh share more than one.
  std::vector<std::int64_t> weights;
};

/// Collective. Of a mesh whose periods are joined.
SlabGraph MakeSlabGraph(MpiCommunicator const& communicator, MeshSlab const& slab);

}  // namespace reference_host
