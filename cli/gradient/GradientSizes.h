#pragma once

#include <array>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/gradient/GradientErrors.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Measures of a gradient whose exact value is not known.
struct GradientSizes {
  GradientErrors norms;  ///< norms of the gradient's own length instead of an error

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
