#pragma once

#include <algorithm>
#include <vector>

#include "foundation/RowTable.h"
#include "host/Zyn3dGV.h"

/// The usable cells around each mesh node: ragged rows [1..NNode]. Free them with RowTable<int>::Destroy.
///
/// A row begins with the entries of the mesh's NodeCell row in their order. At boundary nodes a mesh lists the ghost
/// cells, with or without the interior cells, so such a row goes on with the interior cells that have the node, in
/// ascending order. No row holds a cell twice.
/// @param isBoundaryNode  bool(int node)
/// @param isUsable        bool(int cell)
template <typename IsBoundaryNode, typename IsUsable>
int** CreateNodeCellRows(CZYN3DFiniteVolumeMesh const& mesh, IsBoundaryNode isBoundaryNode,
                         IsUsable isUsable) {
  auto const forEachBoundaryPair = [&](auto&& action) {
    for (int c = 1; c <= mesh.NInnerCells; ++c) {
      if (!isUsable(c)) continue;
      for (int k = 1; k <= mesh.CellLnodsNumber[c]; ++k) {
        int const node = mesh.CellLnods[c][k];
        if (isBoundaryNode(node)) action(node, c);
      }
    }
  };

  std::vector<int> capacity(static_cast<std::size_t>(mesh.NNode) + 1, 0);
  for (int n = 1; n <= mesh.NNode; ++n) capacity[static_cast<std::size_t>(n)] = mesh.NodeCell[n][0] + 1;
  forEachBoundaryPair([&](int node, int) { ++capacity[static_cast<std::size_t>(node)]; });

  // Made before the rows, which nobody would free if it found no memory.
  std::vector<int> lastNodeOf(static_cast<std::size_t>(mesh.NCell) + 1,
                              0);  // by cell: the last row that took it
  int** const rows = RowTable<int>::Create(mesh.NNode, mesh.NNode,
                                           [&](int n) { return capacity[static_cast<std::size_t>(n)]; });
  for (int n = 1; n <= mesh.NNode; ++n) {
    int const* const listed = mesh.NodeCell[n];
    int* const row = rows[n];
    for (int k = 1; k <= listed[0]; ++k) {
      int const c = listed[k];
      if (!isUsable(c) || lastNodeOf[static_cast<std::size_t>(c)] == n) continue;
      lastNodeOf[static_cast<std::size_t>(c)] = n;
      row[++row[0]] = c;
    }
  }
  forEachBoundaryPair([rows](int node, int c) {
    int* const row = rows[node];
    int* const end = row + 1 + row[0];
    if (std::find(row + 1, end, c) != end) return;
    *end = c;
    ++row[0];
  });
  return rows;
}
