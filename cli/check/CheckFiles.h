#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/check/CheckedSystem.h"
#include "cli/output/OutputFolder.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The names of all files that StageCheckGrid stages on all ranks.
std::vector<std::string> CheckGridFiles(Ranks const& ranks);

/// Collective. Stages the cells with their measures as check.vtu, or as check.pvtu and its pieces.
/// @param[in] cells  of this rank, in the partition's order
/// @return the file to open, relative to the folder
std::string StageCheckGrid(Ranks const& ranks, reference_host::HostPartition& partition,
                           std::vector<CheckedSystem> const& cells, OutputFolder& folder);

}  // namespace zyngrad
