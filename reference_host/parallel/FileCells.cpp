#include "reference_host/parallel/FileCells.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "reference_host/parallel/MeshSource.h"

namespace reference_host {
namespace {

/// Turns numbers of the whole mesh, from 0, into those of the processor folder.
void MakeNumbersOfFolder(std::vector<std::int64_t> const& wholeCell, std::vector<std::int64_t>& cells) {
  std::vector<std::pair<std::int64_t, std::int64_t>> folderCell;  // by number in the whole mesh
  folderCell.reserve(wholeCell.size());
  for (std::size_t c = 0; c < wholeCell.size(); ++c)
    folderCell.emplace_back(wholeCell[c], static_cast<std::int64_t>(c));
  std::sort(folderCell.begin(), folderCell.end());
  for (std::size_t c = 1; c < cells.size(); ++c)
    cells[c] =
        std::lower_bound(folderCell.begin(), folderCell.end(), std::pair(cells[c], std::int64_t{0}))->second;
}

}  // namespace

std::vector<std::int64_t> CellsInFile(LoadedMesh const& mesh) {
  HostPartition& partition = *mesh.partition;
  std::vector<std::int64_t> cells(partition.globalCell().begin(),
                                  partition.globalCell().begin() + partition.mesh()->NInnerCells + 1);
  for (std::int64_t& cell : cells) --cell;
  if (mesh.source->isDecomposed) MakeNumbersOfFolder(mesh.source->wholeCell, cells);
  return cells;
}

}  // namespace reference_host
