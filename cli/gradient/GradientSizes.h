#pragma once

#include <array>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/gradient/GradientErrors.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// What can be told about a gradient that there is no exact one for.
struct GradientSizes {
  GradientErrors norms;  ///< of the gradient's own length, in place of an error

  /// Smallest and largest finite value of each component over all cells, U/L; NaN if there is none.
  std::array<double, 3> lowest = {};
  std::array<double, 3> highest = {};
};

/// [1..NInnerCells] Euclidean length of the gradient, U/L.
std::vector<double> GradientLengths(CZYN3DFiniteVolumeMesh const& mesh, GradientArrays const& gradient);

/// Collective.
/// @param[in] isBoundaryCell [1..NInnerCells] from BoundaryCells
GradientSizes MeasureGradient(Ranks const& ranks, reference_host::HostPartition& partition,
                              GradientArrays const& gradient, std::vector<char> const& isBoundaryCell);

}  // namespace zyngrad
