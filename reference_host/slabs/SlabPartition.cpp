#include "reference_host/slabs/SlabPartition.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/parallel/CellGraph.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/ScotchPartition.h"
#include "reference_host/slabs/SlabGraph.h"

namespace reference_host {
namespace {

/// Collective. By METIS on rank 0.
std::vector<int> PartitionOnRank0(MpiCommunicator const& communicator, SlabGraph const& graph) {
  // All items go to rank 0, those of one rank after another.
  auto const toRank0 = [&](std::size_t n, auto const& itemOf) {
    auto const rankOf = [](std::size_t) { return 0; };
    return SwapLists(communicator, ListsByRank<int>(communicator.size(), n, rankOf, itemOf)).items;
  };
  std::size_t const nOwn = graph.rowStart.size() - 1;
  std::vector<int> repeated;  // each neighbour once for each shared face
  std::vector<int> sizes(nOwn);
  for (std::size_t c = 0; c < nOwn; ++c) {
    std::size_t const before = repeated.size();
    for (auto i = static_cast<std::size_t>(graph.rowStart[c]);
         i < static_cast<std::size_t>(graph.rowStart[c + 1]); ++i) {
      repeated.insert(repeated.end(), graph.weights.empty() ? 1 : static_cast<std::size_t>(graph.weights[i]),
                      static_cast<int>(graph.columns[i]));
    }
    sizes[c] = static_cast<int>(repeated.size() - before);
  }
  std::vector<int> const allSizes = toRank0(nOwn, [&](std::size_t i) { return sizes[i]; });
  CellGraph whole;
  whole.columns = toRank0(repeated.size(), [&](std::size_t i) { return repeated[i]; });

  std::vector<int> partOfCell;
  RunTogether(communicator, [&] {
    if (communicator.rank() != 0) return;
    whole.rowStart = {0};
    for (int const size : allSizes)
      whole.rowStart.push_back(whole.rowStart.back() + static_cast<std::size_t>(size));
    partOfCell = PartitionGraph(std::move(whole), communicator.size());
  });
  auto const rankOf = [&](std::size_t cell) { return graph.cells.BlockOf(static_cast<std::int64_t>(cell)); };
  return SwapLists(communicator, ListsByRank<int>(communicator.size(), partOfCell.size(), rankOf,
                                                  [&](std::size_t cell) { return partOfCell[cell]; }))
      .items;
}

/// Collective. What FillEmptyParts does with the parts of all cells.
void FillEmptyPartsOfSlabs(MpiCommunicator const& communicator, BlockRanges const& cells,
                           std::vector<int>& partOfOwn) {
  std::vector<std::int64_t> nCells(static_cast<std::size_t>(communicator.size()), 0);
  for (int const part : partOfOwn) ++nCells[static_cast<std::size_t>(part)];
  MPI_Allreduce(MPI_IN_PLACE, nCells.data(), communicator.size(), MPI_INT64_T, MPI_SUM, communicator.get());
  std::int64_t const first = cells.First(communicator.rank());
  for (std::size_t empty = 0; empty < nCells.size(); ++empty) {
    if (nCells[empty] > 0) continue;
    auto const largest = std::max_element(nCells.begin(), nCells.end());
    auto const own = std::find(partOfOwn.begin(), partOfOwn.end(), largest - nCells.begin());
    std::int64_t const ownCell = own == partOfOwn.end() ? cells.nItems() : first + (own - partOfOwn.begin());
    std::int64_t cell = ownCell;
    MPI_Allreduce(MPI_IN_PLACE, &cell, 1, MPI_INT64_T, MPI_MIN, communicator.get());
    if (cell == ownCell) *own = static_cast<int>(empty);
    --*largest;
    ++nCells[empty];
  }
}

void CheckCellCount(std::int64_t nCells, int nRanks, std::string const& meshName) {
  if (nCells >= nRanks) return;
  throw MeshError((meshName.empty() ? "" : meshName + ": ") + "the mesh has " + std::to_string(nCells) +
                  " cells, fewer than the " + std::to_string(nRanks) + " ranks");
}

}  // namespace

bool CanPartitionSlabs() {
  int level = MPI_THREAD_SINGLE;
  MPI_Query_thread(&level);
  return level >= MPI_THREAD_MULTIPLE;
}

std::vector<int> PartitionSlab(MpiCommunicator const& communicator, MeshSlab const& slab,
                               std::string const& meshName) {
  int const nParts = communicator.size();
  CheckCellCount(slab.cells.nItems(), nParts, meshName);
  if (nParts == 1) return std::vector<int>(static_cast<std::size_t>(slab.cells.nItems()), 0);

  SlabGraph graph = MakeSlabGraph(communicator, slab);
  if (slab.cells.nItems() <= kCellsOfSmallMesh) return PartitionOnRank0(communicator, graph);
  std::vector<int> partOfOwn = PartitionByScotch(communicator, graph);
  FillEmptyPartsOfSlabs(communicator, slab.cells, partOfOwn);
  return partOfOwn;
}

}  // namespace reference_host
