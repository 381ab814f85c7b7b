#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/points/UsableCells.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The search method for faces and for points that goes through nodes.
constexpr int kMethodByNodes = 3;

/// With this many cells or more around one node, a command says what that costs before it begins.
constexpr int kLongRow = 500;

/// The nodes with many cells around them. Search method 3 for faces and points interpolates to nodes; for each node
/// it solves a dense system with one unknown for every cell around the node.
struct LongRows {
  std::int64_t nNodes = 0;         ///< nodes with long rows on all ranks; a node at a cut counts on each side
  double nOperations = 0.0;        ///< additions and multiplications to factor their systems, 2/3 n^3 each
  std::int64_t mostCells = 0;      ///< the largest number of cells around one node
  std::int64_t node = 0;           ///< that node: 1-based number in the mesh, the lowest among equals
  double at[3] = {0.0, 0.0, 0.0};  ///< L
};

/// Collective. Linear in the mesh; the same on every rank.
/// @param[in] usable   the cells that count, as for points; null counts all, ghost cells included, as for faces
/// @param[in] atLeast  number of cells from which a row is long
LongRows FindLongRows(Ranks const& ranks, reference_host::HostPartition& partition, UsableCells const* usable,
                      int atLeast = kLongRow);

/// The same for this partition alone; not collective.
LongRows OwnLongRows(reference_host::HostPartition& partition, UsableCells const* usable,
                     int atLeast = kLongRow);

/// The line that warns of such nodes; empty if there are none.
std::string InWords(LongRows const& rows, int placeDigits, std::string const& option);

/// Collective. The line that warns of such nodes before the work; empty if there are none.
/// @param[in] option  that chooses another method, such as "--search-method 2"
std::string LongRowWarning(Ranks const& ranks, reference_host::HostPartition& partition,
                           UsableCells const* usable, std::string const& option, int atLeast = kLongRow);

/// Collective. Prints that line on the first rank's standard output and flushes it, so that the user can read it
/// while the work can still be stopped.
void PrintLongRowWarning(Ranks const& ranks, reference_host::HostPartition& partition,
                         UsableCells const* usable, std::string const& option);

}  // namespace zyngrad
