#pragma once

#include <string>
#include <utility>
#include <vector>

#include "cli/FolderLock.h"
#include "cli/Ranks.h"

namespace zyngrad {

/// The folder that a command writes into. Files are written in a folder of unfinished files inside, and moved to
/// their places together at the end, so that an earlier run's files stay whole until then and a failed run leaves
/// nothing: what was not committed is removed, and so are folders that this run made.
///
/// Meanwhile a second run into the same folder is refused. A run that is killed leaves its unfinished files; the next
/// run removes them. Each file is old or new, never in between; of several, a run that is killed within Commit may
/// leave some of either. That holds for processes that die. Nothing is forced to the disk, so if the machine
/// itself goes down, files that were written in the last seconds may be empty: results can be computed again.
class OutputFolder {
 public:
  /// Collective. Makes the folder and the folders above it as needed.
  /// Throws UsageError when that fails, when a rank cannot write into it, or when another run is in it.
  OutputFolder(const Ranks& ranks, const std::string& folder);
  ~OutputFolder();
  OutputFolder(const OutputFolder&) = delete;
  OutputFolder& operator=(const OutputFolder&) = delete;

  const std::string& path() const { return path_; }

  /// Collective. Makes a folder inside; `name` as for Stage.
  void MakeSubfolder(const std::string& name);

  /// Where to write the file that will be `name` (relative to the folder) after Commit: a file of the same name in
  /// the folder of unfinished files. The rank that calls it owns it.
  std::string Stage(const std::string& name);

  /// Lines that the operators print on this rank: the staged log.rankN.txt.
  const std::string& logFile() const { return logFile_; }

  /// Whether there is a file of that name from an earlier run.
  bool Has(const std::string& name) const;

  /// Collective. After Commit a file or empty folder of that name from an earlier run is gone. The first
  /// rank's list counts.
  void Discard(const std::string& name);

  /// Collective. Moves all staged files to their places; the first rank's last, in the order of staging.
  /// Throws UsageError, before anything has moved, when a folder stands in the place of a file or when a log is
  /// not whole.
  void Commit();

 private:
  void MakeFolder(const std::string& folder);
  void Occupy();
  void CheckPlaces() const;
  void MoveStaged();
  void Leave();

  const Ranks& ranks_;
  std::string path_;
  std::string unfinished_;  ///< the folder of unfinished files
  std::string logFile_;
  FolderLock lock_;
  std::vector<std::string> madeFolders_;                     ///< outermost first; the same on every rank
  std::vector<std::pair<std::string, std::string>> staged_;  ///< of this rank: where it is, where it goes
  std::vector<std::string> discarded_;
};

}  // namespace zyngrad
