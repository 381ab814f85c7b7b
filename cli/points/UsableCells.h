#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/bodies/WindingNumber.h"
#include "cli/field/Expression.h"
#include "cli/points/PointSet.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The cells that may contribute values at points: interior and halo cells with their centre outside the body.
/// Ghost cells are not used, because the points lie beside the body and not at the walls of the channel.
struct UsableCells {
  std::vector<double> mark;  ///< [1..NCell] as the operator expects it: below 0.0 if and only if usable
  std::int64_t nCells = 0;   ///< usable interior cells of all ranks

  /// [1..NCell] 1 for a usable cell, else 0; element 0 is 0.
  std::vector<char> Flags() const;

  bool Contains(int c) const { return mark[static_cast<std::size_t>(c)] < 0.0; }
};

/// Collective. Throws UsageError if the formula is not finite at a cell or no cell is usable.
/// @param[in] body  negative inside; null if there is no body
UsableCells FindUsableCells(Ranks const& ranks, reference_host::HostPartition& partition,
                            Expression const* body);

/// Collective. The same for a body of triangles: a cell is usable unless its centre is inside it. Throws UsageError
/// if no cell is usable.
/// @param[in] name  of the body, for the message
UsableCells FindUsableCells(Ranks const& ranks, reference_host::HostPartition& partition,
                            WindingNumber const& body, std::string const& name);

/// The rank that serves a point.
struct PointOwner {
  double distance = 0.0;  ///< to the centre of the nearest usable cell of all ranks, L
  int rank = 0;           ///< the rank that owns this cell; the lowest among equals
};

/// Collective. @pre there is a usable cell
/// @param[in] points  the same on every rank
std::vector<PointOwner> FindPointOwners(Ranks const& ranks, reference_host::HostPartition& partition,
                                        UsableCells const& usable, PointSet const& points);

}  // namespace zyngrad
