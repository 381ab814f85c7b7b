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

/// What a run is going to write. The same on every rank.
struct OutputPlan {
  std::string command;             ///< "gradient", ...
  std::vector<std::string> files;  ///< of all ranks, relative to the output folder; logs come on top of them
};

/// The folder that a command writes into. Files are written in a folder of unfinished files inside, and moved
/// to their places together at the end, so that an earlier run's files stay whole until then and a failed run
/// leaves nothing: what was not committed is removed, and so are folders that this run made. The same holds
/// when SIGINT, SIGTERM or SIGHUP ends the run.
///
/// Files are replaced or removed only if they are results of an earlier run of the same command: the folder's
/// manifest names them and they have not changed since. Anything else in the way is refused before the work
/// begins.
///
/// Meanwhile a second run into the same folder is refused. A run that is killed leaves its unfinished files;
/// the next run removes them. Each file is old or new, never in between; of several, a run that is killed
/// within Commit, or for which the system refuses to move a file there, may leave some of either. The
/// manifest then names both, and the next run replaces both. Files are on the disk before they take the place
/// of earlier ones.
class OutputFolder {
 public:
  /// Collective. Makes the folder and the folders above it as needed, and looks whether all places are free.
  /// Throws UsageError when that fails, when a rank cannot write into it, when something is in the way, or
  /// when another run is in it.
  OutputFolder(Ranks const& ranks, std::string const& folder, OutputPlan plan);
  ~OutputFolder();
  OutputFolder(OutputFolder const&) = delete;
  OutputFolder& operator=(OutputFolder const&) = delete;

  std::string const& path() const { return path_; }

  /// Where to write the file that will be `name` after Commit: a file of the same name in the folder of
  /// unfinished files. The rank that calls it owns it.
  /// @param[in] name  one of the plan's
  std::string Stage(std::string const& name);

  /// Lines that the operators print on this rank: the staged log.rankN.txt.
  std::string const& logFile() const { return logFile_; }

  /// Collective. Makes sure that all staged files are whole and on the disk, prints `closingText` on the
  /// first rank, and once all that was printed has arrived moves the files to their places, the first rank's
  /// last. Earlier results that were not replaced go.
  /// Throws UsageError or ClosedPipe, before anything has moved, when a place is not free any more, when a
  /// log is not whole or when standard output has not taken everything. Throws UsageError when the system
  /// refuses to move a file, or when a place is lost at the last moment; what has come there stays.
  void Commit(std::string const& closingText);

 private:
  using Identity = std::pair<std::pair<dev_t, ino_t>, std::vector<long long>>;

  /// A file that this run may replace or remove.
  struct Known {
    Identity identity;
    std::vector<Fingerprint> contents;  ///< each that the manifest has for it
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
  std::vector<std::string> madeFolders_;  ///< by this run, outer ones first
  std::vector<std::string> staged_;       ///< names of this rank's files

  // Of the first rank.
  Manifest earlier_;                    ///< what the folder held when the run began
  std::map<std::string, Known> known_;  ///< earlier files that are still there, and the manifest
  Manifest next_;                       ///< what the folder will hold
  Manifest both_;                       ///< what it may hold while files move

  std::optional<Cleanup> cleanup_;
};

}  // namespace zyngrad
