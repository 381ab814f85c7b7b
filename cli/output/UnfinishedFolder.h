#pragma once

#include <string>
#include <vector>

#include "cli/output/FolderLock.h"

namespace zyngrad {

/// The folder for the files of a run that are not whole yet, shared by its ranks and by nobody else. Its
/// lock's file begins with a line that only this program writes and lists everything that the run may put
/// there, before it does. What a run has left that was killed is told by that list from what belongs to
/// somebody else; the latter is never touched.
class UnfinishedFolder {
 public:
  /// @param[in] files  all that any rank may put there, relative to the folder, folders on the way included
  ///                   in the names; the same on every rank
  /// @param[in] lockCall  for tests
  UnfinishedFolder(std::string path, std::vector<std::string> files,
                   FolderLock::LockCall lockCall = FolderLock::LockBySystem);

  std::string const& path() const { return path_; }

  /// Of the first process: makes the folder with the folders inside, and clears it of what a run has left
  /// that is no more. Afterwards the others may join.
  /// @return Taken, InUse or NoPlace; nothing has changed unless the folder was taken
  /// Throws UsageError when something in it is in no list or when a file system without locks does not tell
  /// whether it is free, and nothing has changed; likewise when something in a list cannot be removed, and
  /// the list stays.
  FolderLock::Outcome Take();

  /// After Take: who has the folder, such as "process 4711 on node3".
  std::string Holder() const;

  /// Of the other processes of the run. Throws UsageError when this is not the folder that the first process
  /// has.
  void Join(std::string const& holder);

  /// Who has it at present; "another process" where that cannot be told.
  std::string PresentHolder() const;

  /// After Take or Join. Throws UsageError when the folder is not that of this run any more.
  void Check() const;

  /// Leaves the folder. The process that leaves last removes it with what is listed; if that fails, the list
  /// stays for the next run.
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
