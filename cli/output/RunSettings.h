#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/output/OutputFolder.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The shortest text that reads back as the same number; 500 is "500".
std::string ShortestText(double value);

/// Writes the text of a settings file to `file`, which ends in ".rbf".
/// @return the base file name that makes an operator read this file
/// Throws UsageError when that fails or when the name is too long for the operators.
std::string WriteSettingsText(std::string const& file, std::string const& text);

/// The names of the files that StageRunSettings stages on all ranks.
std::vector<std::string> RunSettingsFiles(Ranks const& ranks);

/// Collective. A settings file for each rank, settings.rankN.rbf, and the base file name of its partition:
/// the operators read the file at the same time, and rewrite what they do not know.
void StageRunSettings(Ranks const& ranks, reference_host::HostPartition& partition, OutputFolder& folder,
                      std::string const& text);

}  // namespace zyngrad
