#pragma once

#include <cstdint>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/field/Expression.h"
#include "cli/points/PointSet.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The cells that values at points may come from: interior and halo cells with their centre outside the body.
/// Ghost cells are not used: a body in the mesh is met from the flow, not from the walls of the channel.
struct UsableCells {
  std::vector<double> mark;  ///< [1..NCell] as the operator wants it: below 0.0 if and only if usable
  std::int64_t nCells = 0;   ///< interior ones of all ranks

  bool Contains(int c) const { return mark[static_cast<std::size_t>(c)] < 0.0; }
};

/// Collective. Throws UsageError when the formula is not finite at a cell or no cell is usable.
/// @param[in] body  negative inside; null: there is no body
UsableCells FindUsableCells(Ranks const& ranks, reference_host::HostPartition& partition,
                            Expression const* body);

/// The rank that serves a point.
struct PointOwner {
  double distance = 0.0;  ///< to the centre of the nearest usable cell of all ranks, L
  int rank = 0;           ///< that has this cell; of several the lowest
};

/// Collective. @pre there is a usable cell
/// @param[in] points  the same on every rank
std::vector<PointOwner> FindPointOwners(Ranks const& ranks, reference_host::HostPartition& partition,
                                        UsableCells const& usable, PointSet const& points);

}  // namespace zyngrad
