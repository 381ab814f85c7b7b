#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/points/UsableCells.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The search method of faces and of points that goes through nodes.
constexpr int kMethodByNodes = 3;

/// From so many cells around one node on, a command says what that costs before it begins.
constexpr int kLongRow = 500;

/// The nodes with many cells around them. Search method 3 of faces and points interpolates to nodes, each by a
/// dense system with an unknown for every cell around it.
struct LongRows {
  std::int64_t nNodes = 0;         ///< with long rows, of all ranks; at a cut a node counts on each side
  double nOperations = 0.0;        ///< additions and multiplications to factor their systems, 2/3 n^3 each
  std::int64_t mostCells = 0;      ///< around one of them
  std::int64_t node = 0;           ///< that one: 1-based number in the mesh, the lowest of equal ones
  double at[3] = {0.0, 0.0, 0.0};  ///< L
};

/// Collective. Linear in the mesh; the same on every rank.
/// @param[in] usable   the cells that count, as for points; null: all, ghost cells included, as for faces
/// @param[in] atLeast  cells of a long row
LongRows FindLongRows(Ranks const& ranks, reference_host::HostPartition& partition, UsableCells const* usable,
                      int atLeast = kLongRow);

/// Those of this partition alone; not collective.
LongRows OwnLongRows(reference_host::HostPartition& partition, UsableCells const* usable,
                     int atLeast = kLongRow);

/// The line that warns of them; empty when there are none.
std::string InWords(LongRows const& rows, int placeDigits, std::string const& option);

/// Collective. The line that warns of them, for before the work; empty when there are none.
/// @param[in] option  that chooses another method, such as "--search-method 2"
std::string LongRowWarning(Ranks const& ranks, reference_host::HostPartition& partition,
                           UsableCells const* usable, std::string const& option, int atLeast = kLongRow);

/// Collective. Prints it on the first rank's standard output, at once: it has to be read while the work can still
/// be stopped.
void PrintLongRowWarning(Ranks const& ranks, reference_host::HostPartition& partition,
                         UsableCells const* usable, std::string const& option);

}  // namespace zyngrad
