#pragma once

#include <sys/stat.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/Interruption.h"
#include "cli/base/Ranks.h"
#include "cli/output/Fingerprint.h"
#include "cli/output/Manifest.h"
#include "cli/output/UnfinishedFolder.h"

namespace zyngrad {

/// What a run will write. The same on every rank.
struct OutputPlan {
  std::string command;             ///< "gradient", ...
  std::vector<std::string> files;  ///< of all ranks, relative to the output folder; logs are added to them
};

/// The folder that a command writes into. Files are written into a folder of unfinished files inside it and moved
/// to their places together at the end. Until then the files of an earlier run stay as they are, and a failed run
/// leaves nothing: everything that was not committed is removed, as are folders that this run created. The same
/// holds if SIGINT, SIGTERM or SIGHUP ends the run.
///
/// A file is replaced or removed only if it is a result of an earlier run of the same command: the folder's
/// manifest lists it and it has not changed since. If anything else is in the way, the run is refused before the
/// work begins.
///
/// While a run works, a second run into the same folder is refused. A run that is killed leaves its unfinished
/// files, and the next run removes them. Each file is either old or new, never a mixture. A run that is killed
/// within Commit, or for which the system refuses to move a file, may leave some old and some new files. The
/// manifest then lists both, and the next run replaces both. Files are forced to the disk before they replace
/// earlier ones.
class OutputFolder {
 public:
  /// Collective. Creates the folder and its parents as needed, and checks that all places are free. Throws
  /// UsageError if that fails, if a rank cannot write into the folder, if something is in the way, or if another
  /// run uses the folder.
  OutputFolder(Ranks const& ranks, std::string const& folder, OutputPlan plan);
  ~OutputFolder();
  OutputFolder(OutputFolder const&) = delete;
  OutputFolder& operator=(OutputFolder const&) = delete;

  std::string const& path() const { return path_; }

  /// The path at which to write the file that will be `name` after Commit: a file of the same name in the folder
  /// of unfinished files. The calling rank owns it.
  /// @param[in] name  one of the files in the plan
  std::string Stage(std::string const& name);

  /// Lines that the operators print on this rank: the staged log.rankN.txt.
  std::string const& logFile() const { return logFile_; }

  /// Collective. Makes sure that all staged files are complete and on the disk, prints `closingText` on the first
  /// rank, and once all output has arrived, moves the files to their places, those of the first rank last. Earlier
  /// results that were not replaced are removed.
  /// Throws UsageError or ClosedPipe before anything has moved if a place is no longer free, a log is not complete,
  /// or standard output did not take everything. Throws UsageError if the system refuses to move a file, or if
  /// something appears in a place at the last moment, which is left alone.
  void Commit(std::string const& closingText);

 private:
  using Identity = std::pair<std::pair<dev_t, ino_t>, std::vector<long long>>;

  /// A file that this run may replace or remove.
  struct Known {
    Identity identity;
    std::vector<Fingerprint> contents;  ///< all contents that the manifest lists for it
  };

  void Open();
  FolderLock::Outcome Take();
  bool MakeFolder();
  void Occupy();
  void ShareMadeFolders();
  void ReadEarlierRun();
  void CheckEarlierFiles() const;
  void CheckPlaces() const;
  void CheckFolders() const;
  void Know(std::string const& name, std::vector<Fingerprint> const& contents);
  bool IsUnchanged(std::string const& name) const;
  static std::optional<Identity> IdentityOf(std::string const& file);

  std::string SettleStaged() const;
  void PrepareMove(std::string const& staged);
  void Move(std::string const& name) const;
  void MoveManifest(Manifest const& manifest);
  void MoveStaged();
  void WriteManifest(Manifest const& manifest) const;
  void RemoveOutdated();
  void RenewManifest();
  std::string PathOf(std::string const& name) const;
  std::string UnfinishedPathOf(std::string const& name) const;
  void Leave();

  Ranks const& ranks_;
  std::string path_;
  OutputPlan plan_;
  UnfinishedFolder unfinished_;
  std::string logFile_;
  std::vector<std::string> madeFolders_;  ///< created by this run, outer ones first
  std::vector<std::string> staged_;       ///< names of this rank's files

  // On the first rank only.
  Manifest earlier_;                    ///< what the folder contained when the run began
  std::map<std::string, Known> known_;  ///< earlier files that still exist, and the manifest
  Manifest next_;                       ///< what the folder will contain
  Manifest both_;                       ///< what it may contain while files move

  std::optional<Cleanup> cleanup_;
};

}  // namespace zyngrad
