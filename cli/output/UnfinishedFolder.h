#pragma once

#include <string>
#include <vector>

#include "cli/output/FolderLock.h"

namespace zyngrad {

/// The folder for unfinished files of a run, shared by the ranks of the run and nobody else. Its lock's file begins
/// with a line that only this program writes, and lists everything that the run may put there before it does so.
/// If a run was killed, this list tells its files from files that belong to somebody else, which are never
/// touched.
class UnfinishedFolder {
 public:
  /// @param[in] files  all files that any rank may put there, as paths relative to the folder; the same on every
  ///                   rank
  /// @param[in] lockCall  for tests
  UnfinishedFolder(std::string path, std::vector<std::string> files,
                   FolderLock::LockCall lockCall = FolderLock::LockBySystem);

  std::string const& path() const { return path_; }

  /// For the first process: creates the folder and the folders inside, and removes what a dead run left there.
  /// Afterwards the others may join.
  /// @return Taken, InUse or NoPlace; nothing has changed unless the folder was taken
  /// Throws UsageError if something in the folder is not listed, or if the file system has no locks to tell whether
  /// the folder is free; nothing has then changed. Also throws it if something listed cannot be removed; the list
  /// then stays.
  FolderLock::Outcome Take();

  /// After Take: who uses the folder, such as "process 4711 on node3".
  std::string Holder() const;

  /// For the other processes of the run. Throws UsageError if this is not the folder that the first process
  /// uses.
  void Join(std::string const& holder);

  /// Who uses it at present; "another process" if that is unknown.
  std::string PresentHolder() const;

  /// After Take or Join. Throws UsageError if the folder no longer belongs to this run.
  void Check() const;

  /// Leaves the folder. The last process to leave removes it with everything listed; if that fails, the list stays
  /// for the next run.
  void Leave();

 private:
  int RemoveListed(std::vector<std::string> const& files, std::vector<std::string> const& folders) const;
  std::string Listing() const;

  std::string path_;
  std::vector<std::string> files_;
  std::vector<std::string> folders_;  ///< on the way to the files, outer ones first
  FolderLock lock_;
  std::string holder_;  ///< of this run
};

}  // namespace zyngrad
