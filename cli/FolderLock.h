#pragma once

#include <string>

namespace zyngrad {

/// The sign on a folder that a run works in it: a lock of the system on a file there, shared by the ranks of the
/// run and refused to any other run. The system takes it back when a process ends, however it ends, so a run that
/// was killed leaves a file but no lock. It says nothing on file systems without locks.
///
/// The first process calls Take, then the others of the same run call Join.
class FolderLock {
 public:
  FolderLock() = default;
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  /// Makes the folder `place` if it is missing, and takes its lock. What stands in the folder is then of a run that
  /// was killed. Until Share nobody can join.
  /// @param[in] place  for the lock and unfinished files alone
  /// @return whether the folder is free; if not, nothing has changed
  /// Throws UsageError when the folder or the file cannot be made.
  bool Take(const std::string& place);

  /// After Take: writes who holds the lock into the file, and lets the other processes of the run join.
  /// Throws UsageError when it cannot be written.
  void Share();

  /// Throws UsageError when that fails.
  void Join(const std::string& place);

  /// Who holds the lock of that folder, such as "process 4711 on node3"; "another process" where it cannot be told.
  static std::string HolderOf(const std::string& place);

  /// Gives up the lock.
  /// @return whether this was the last process of the run: then it alone holds the lock, until the end of this
  ///         object, and no other run can begin
  bool Release();

  /// After Release was true: removes the lock's file. From now on others may begin.
  void Remove();

 private:
  bool Open(const std::string& place, int flags);
  bool SetLock(short type) const;
  bool IsStillThere() const;
  void Close();

  std::string file_;
  int descriptor_ = -1;
};

/// The name of the lock's file in its folder.
constexpr char kLockFile[] = "lock";

}  // namespace zyngrad
