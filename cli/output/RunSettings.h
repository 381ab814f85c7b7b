#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/output/OutputFolder.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The shortest text that reads back as the same number, such as "500".
std::string ShortestText(double value);

/// Writes the text of a settings file to `file`, which ends in ".rbf".
/// @return the base file name that makes an operator read this file
/// Throws UsageError if that fails or the name is too long for the operators.
std::string WriteSettingsText(std::string const& file, std::string const& text);

/// The names of the files that StageRunSettings stages on all ranks.
std::vector<std::string> RunSettingsFiles(Ranks const& ranks);

/// Collective. Stages a settings file for each rank, settings.rankN.rbf, and sets the base file name of its
/// partition. The ranks cannot share a file: the operators read it at the same time, and may rewrite it.
void StageRunSettings(Ranks const& ranks, reference_host::HostPartition& partition, OutputFolder& folder,
                      std::string const& text);

}  // namespace zyngrad
