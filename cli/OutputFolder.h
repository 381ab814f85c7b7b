#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cli/Ranks.h"

namespace zyngrad {

/// The folder that a command writes into. Files are written beside their final place (NAME.part) and moved
/// there together at the end, so that an earlier run's files stay whole until then and a failed run leaves
/// nothing: what was not committed is removed, and so are folders that this run made.
class OutputFolder {
 public:
  /// Collective. Makes the folder and the folders above it as needed.
  /// Throws UsageError when that fails or when a rank cannot write into it.
  OutputFolder(const Ranks& ranks, const std::string& folder);
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  const std::string& path() const { return path_; }

  /// Collective. Makes a folder inside; `name` as for Stage.
  void MakeSubfolder(const std::string& name);

  /// Where to write the file that will be `name` (relative to the folder) after Commit. The rank that calls
  /// it owns it.
  std::string Stage(const std::string& name);

  /// The same for a file that something reads by a name of its own before Commit: until then it is called
  /// `unfinishedName`.
  std::string StageAs(const std::string& name, const std::string& unfinishedName);

  /// Lines that the operators print on this rank: the staged log.rankN.txt.
  const std::string& logFile() const { return logFile_; }

  /// Whether there is a file of that name from an earlier run.
  bool Has(const std::string& name) const;

  /// Collective. After Commit a file or empty folder of that name from an earlier run is gone. The first
  /// rank's list counts.
  void Discard(const std::string& name);

  /// Collective. Moves all staged files to their places; the first rank's last, in the order of staging.
  void Commit();

 private:
  void MakeFolder(const std::string& folder);
  void MoveStaged();
  void RemoveUnfinished();

  const Ranks& ranks_;
  std::string path_;
  std::string logFile_;
  std::vector<std::string> madeFolders_;                     ///< outermost first; the same on every rank
  std::vector<std::pair<std::string, std::string>> staged_;  ///< of this rank: where it is, where it goes
  std::vector<std::string> discarded_;
};

}  // namespace zyngrad
