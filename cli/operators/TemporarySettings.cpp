#include "cli/operators/TemporarySettings.h"

#include "cli/output/RunSettings.h"

namespace zyngrad {

using reference_host::HostPartition;

TemporarySettings::TemporarySettings(HostPartition& partition)
    : partition_(partition), baseFileName_(partition.globals()->BaseFileName) {}

TemporarySettings::TemporarySettings(Ranks const& ranks, HostPartition& partition)
    : partition_(partition), baseFileName_(partition.globals()->BaseFileName), folder_(ranks) {}

TemporarySettings::~TemporarySettings() { partition_.SetBaseFileName(baseFileName_); }

void TemporarySettings::Write(std::string const& text) {
  partition_.SetBaseFileName(WriteSettingsText(folder_.path() + "/settings.rbf", text));
}

}  // namespace zyngrad
