#pragma once

#include <string>
#include <vector>

#include "cli/check/CheckedSystem.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/options/InterpolationSettings.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Checks the systems that interpolate to the faces of a group on this rank, in the group's order, with their rows of
/// weights: those of the value, and those of the slope if the method computes one. Not collective; linear in the faces.
///
/// Method 4 solves a system on each side of a face between two cells; the worse one counts. On boundary faces it
/// computes no values, its weights of the value are 0, and only the slope along the normal is checked.
/// @param[in] logFile  receives what the operator prints
std::vector<CheckedSystem> CheckFaces(reference_host::HostPartition& partition, FaceKind group,
                                      InterpolationSettings const& settings, std::string const& logFile);

}  // namespace zyngrad
