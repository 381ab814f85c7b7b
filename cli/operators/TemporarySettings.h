#pragma once

#include <string>

#include "cli/base/Ranks.h"
#include "cli/base/TemporaryFolder.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The settings file of the operators on one partition, for runs that keep no such file: it lives in a temporary folder
/// while the object lives. An operator finds it through the partition's base file name, which is restored at the end.
class TemporarySettings {
 public:
  explicit TemporarySettings(reference_host::HostPartition& partition);

  /// Collective: each rank gets a folder of its own, or all ranks throw the same UsageError.
  TemporarySettings(Ranks const& ranks, reference_host::HostPartition& partition);
  ~TemporarySettings();
  TemporarySettings(TemporarySettings const&) = delete;
  TemporarySettings& operator=(TemporarySettings const&) = delete;

  /// Replaces the file. The next operator that is initialised on the partition reads it. Throws UsageError if the file
  /// cannot be written.
  /// @param[in] text  of the settings: SettingsFileText, FaceSettingsText or PointSettingsText
  void Write(std::string const& text);

 private:
  reference_host::HostPartition& partition_;
  std::string const baseFileName_;  ///< of the partition, before
  TemporaryFolder const folder_;
};

}  // namespace zyngrad
