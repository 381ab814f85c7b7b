#pragma once

#include <string>
#include <vector>

#include "cli/check/CheckedSystem.h"
#include "cli/options/InterpolationSettings.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Checks the systems that interpolate to those points that `rank` serves, in the order of the points, with the rows of
/// weights of value and gradient. Not collective; linear in the points.
/// @param[in] owners   [point]
/// @param[in] logFile  receives what the operator prints
std::vector<CheckedSystem> CheckPoints(reference_host::HostPartition& partition, UsableCells& usable,
                                       PointSet const& points, std::vector<PointOwner> const& owners,
                                       int rank, InterpolationSettings const& settings,
                                       std::string const& logFile);

}  // namespace zyngrad
