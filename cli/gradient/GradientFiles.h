#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/gradient/GradientRun.h"
#include "cli/output/OutputFolder.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The names of all files that StageGradientGrid stages on all ranks.
std::vector<std::string> GradientGridFiles(Ranks const& ranks);

/// Collective. Stages the grid with the fields and the gradient of each method, and if known, exact gradients and
/// errors: gradient.vtu on one rank; gradient.pvtu and one piece per rank in gradient/ on several ranks.
/// @return the name of the file to open
std::string StageGradientGrid(Ranks const& ranks, reference_host::HostPartition& partition,
                              GradientCase const& theCase, std::vector<MethodResult> const& results,
                              OutputFolder& folder);

}  // namespace zyngrad
