#pragma once

#include <optional>
#include <string>

#include "cli/base/Ranks.h"
#include "gradient/COperatorGradient.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Whether least squares stops at an interior cell with these moments: the first or second pivot of the
/// elimination without row exchange is exactly 0. Same operations in the same order as the operator's own.
bool LeastSquaresStopsAt(double sxx, double sxy, double syy);

/// Collective, after Initialize with gradient type 1. At a zero pivot the operator returns without its
/// exchange, and the other ranks would wait for it for ever: so all ranks have to know before they call it.
/// @return "least squares stops at cell N on rank R (zero pivot)" with the lowest such cell of the mesh, the same
///         on every rank; nothing when the method runs through
std::optional<std::string> LeastSquaresObstacle(Ranks const& ranks, COperatorGradient& op,
                                                reference_host::HostPartition& partition);

}  // namespace zyngrad
