#pragma once

#include <optional>
#include <string>

#include "cli/base/Ranks.h"
#include "gradient/COperatorGradient.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Whether least squares stops at an interior cell with these moments: the first or second pivot is exactly 0 in the
/// operator's own elimination.
bool LeastSquaresStopsAt(double sxx, double sxy, double syy);

/// Looks for a cell at which least squares would stop. At a zero pivot the operator returns without its exchange, and
/// the other ranks would wait for it for ever, so all ranks have to know before they call it.
/// Collective, after Initialize with gradient type 1.
/// @return "least squares stops at cell N on rank R (zero pivot)" with the lowest such cell of the mesh, the same
///         on every rank; nothing when the method runs through
std::optional<std::string> LeastSquaresObstacle(Ranks const& ranks, COperatorGradient& op,
                                                reference_host::HostPartition& partition);

}  // namespace zyngrad
