#include "cli/points/LongRows.h"

#include <cstddef>
#include <iostream>

#include "cli/base/TextTable.h"
#include "cli/output/MeshScale.h"

namespace zyngrad {
namespace {

int CellsAround(CZYN3DFiniteVolumeMesh const& mesh, int node, UsableCells const* usable) {
  int const* const row = mesh.NodeCell[node];
  if (usable == nullptr) return row[0];
  int count = 0;
  for (int k = 1; k <= row[0]; ++k) count += usable->Contains(row[k]) ? 1 : 0;
  return count;
}

double OperationsOf(double n) { return 2.0 / 3.0 * n * n * n; }

bool IsWorse(LongRows const& a, LongRows const& b) {
  return a.mostCells > b.mostCells || (a.mostCells == b.mostCells && a.node < b.node);
}

}  // namespace

LongRows OwnLongRows(reference_host::HostPartition& partition, UsableCells const* usable, int atLeast) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  LongRows own;
  for (int n = 1; n <= mesh.NNode; ++n) {
    int const nCells = CellsAround(mesh, n, usable);
    if (nCells < atLeast) continue;
    ++own.nNodes;
    own.nOperations += OperationsOf(nCells);
    LongRows here;
    here.mostCells = nCells;
    here.node = partition.globalNode()[static_cast<std::size_t>(n)];
    if (!IsWorse(here, own)) continue;
    own.mostCells = here.mostCells;
    own.node = here.node;
    own.at[0] = mesh.xn[n], own.at[1] = mesh.yn[n], own.at[2] = mesh.zn[n];
  }
  return own;
}

LongRows FindLongRows(Ranks const& ranks, reference_host::HostPartition& partition, UsableCells const* usable,
                      int atLeast) {
  LongRows const own = OwnLongRows(partition, usable, atLeast);
  LongRows all;
  for (std::vector<double> const& row :
       ranks.Gather({static_cast<double>(own.nNodes), own.nOperations, static_cast<double>(own.mostCells),
                     static_cast<double>(own.node), own.at[0], own.at[1], own.at[2]})) {
    LongRows one;
    one.mostCells = static_cast<std::int64_t>(row[2]);
    one.node = static_cast<std::int64_t>(row[3]);
    all.nNodes += static_cast<std::int64_t>(row[0]);
    all.nOperations += row[1];
    if (one.node == 0 || !IsWorse(one, all)) continue;
    all.mostCells = one.mostCells;
    all.node = one.node;
    for (std::size_t d = 0; d < 3; ++d) all.at[d] = row[4 + d];
  }
  return all;
}

std::string InWords(LongRows const& rows, int placeDigits, std::string const& option) {
  if (rows.nNodes == 0) return {};
  double const matrix = 8e-6 * static_cast<double>(rows.mostCells) * static_cast<double>(rows.mostCells);
  return "node " + std::to_string(rows.node) + " at " +
         Place(rows.at[0], rows.at[1], rows.at[2], placeDigits) + " has " + Grouped(rows.mostCells) +
         " cells around it, and search method 3 solves a dense system of that order there. Its matrix "
         "takes " +
         Fixed(matrix, 1) + " MB, and " +
         (rows.nNodes == 1 ? "this node" : "all " + Grouped(rows.nNodes) + " such nodes") + " take up to " +
         Scientific(rows.nOperations, 2) + " operations; a core does 1e9 to 1e10 per second. " + option +
         " avoids this";
}

std::string LongRowWarning(Ranks const& ranks, reference_host::HostPartition& partition,
                           UsableCells const* usable, std::string const& option, int atLeast) {
  LongRows const rows = FindLongRows(ranks, partition, usable, atLeast);
  return InWords(rows, PlaceDigits(ranks, partition), option);
}

void PrintLongRowWarning(Ranks const& ranks, reference_host::HostPartition& partition,
                         UsableCells const* usable, std::string const& option) {
  std::string const warning = LongRowWarning(ranks, partition, usable, option);
  if (!warning.empty() && ranks.IsFirst()) std::cout << "  warning: " << warning << "\n\n" << std::flush;
}

}  // namespace zyngrad
