#pragma once

#include <string>
#include <vector>

#include "cli/check/CheckedSystem.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

// Neither is collective: the systems of this rank. Linear in the faces or points.

/// The systems of the faces of a group, in the group's order, with their rows: of the value, and of the slope
/// that the method has. Method 4 has a system on each side of a face between two cells; the worse one counts.
/// On boundary faces its values are 0 by design, so there only the slope along the normal is checked.
/// @param[in] logFile  takes what the operator prints
std::vector<CheckedSystem> CheckFaces(reference_host::HostPartition& partition, FaceKind group,
                                      InterpolationSettings const& settings, std::string const& logFile);

/// The systems of those points that `rank` serves, in the points' order, with the rows of value and gradient.
/// The partition's base file name is another one afterwards.
/// @param[in] owners   [point]
/// @param[in] logFile  takes what the operator prints
std::vector<CheckedSystem> CheckPoints(reference_host::HostPartition& partition, UsableCells& usable,
                                       PointSet const& points, std::vector<PointOwner> const& owners,
                                       int rank, InterpolationSettings const& settings,
                                       std::string const& logFile);

}  // namespace zyngrad
