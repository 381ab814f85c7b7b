#pragma once

#include <string>
#include <vector>

#include "cli/FolderLock.h"

namespace zyngrad {

/// The folder for the files of a run that are not whole yet, shared by its ranks and by nobody else. Its lock's file
/// begins with a line that only this program writes and lists everything that the run may put there, before it does.
/// What a run has left that was killed is told by that list from what belongs to somebody else; the latter is never
/// touched.
class UnfinishedFolder {
 public:
  /// @param[in] files  all that any rank may put there, relative to the folder, folders on the way included in the
  ///                   names; the same on every rank
  UnfinishedFolder(std::string path, std::vector<std::string> files);

  const std::string& path() const { return path_; }

  /// Of the first process: makes the folder with the folders inside, and clears it of what a run has left that is no
  /// more. Afterwards the others may join.
  /// @return whether the folder is free; if not, nothing has changed
  /// Throws UsageError, and nothing has changed, when something in it is in no list.
  bool Take();

  /// After Take: who has the folder, such as "process 4711 on node3".
  std::string Holder() const;

  /// Of the other processes of the run. Throws UsageError when this is not the folder that the first process has.
  void Join(const std::string& holder);

  /// Who has it at present; "another process" where that cannot be told.
  std::string PresentHolder() const;

  /// Leaves the folder. The process that leaves last removes it with what is listed.
  void Leave();

 private:
  void RemoveListed(const std::vector<std::string>& files, const std::vector<std::string>& folders) const;
  std::string Listing() const;

  std::string path_;
  std::vector<std::string> files_;
  std::vector<std::string> folders_;  ///< on the way to the files, outer ones first
  FolderLock lock_;
};

}  // namespace zyngrad
