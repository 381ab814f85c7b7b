#pragma once

#include <string>

namespace zyngrad {

/// The sign on a folder that a run works in it: a lock of the system on a file there, shared by the ranks of the
/// run and refused to any other run. The system takes it back when a process ends, however it ends, so a run that
/// was killed leaves a file but no lock. It says nothing on file systems without locks.
///
/// The first process calls Take, then the others of the same run call Join. The file also holds what the first process
/// has to say about the folder, so that it says so from the moment at which others can see it.
class FolderLock {
 public:
  FolderLock() = default;
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

  /// Makes the folder `place` if it is missing, and takes its lock; in a folder that is not empty only if the lock's
  /// file is there already. Until Share nobody can join.
  /// @return whether the folder is free; if not, nothing has changed
  /// Throws UsageError when the folder or the file cannot be made, or when the folder holds other things alone.
  bool Take(const std::string& place);

  /// After Take or Join: what is written in the file.
  std::string Content() const;

  /// After Take: writes the text in the place of what the file held, and lets the other processes of the run join. The
  /// text is on the disk when it returns. Throws UsageError when it cannot be written.
  void Share(const std::string& text);

  /// Throws UsageError when that fails.
  void Join(const std::string& place);

  /// The text of Share of another process, without any lock; empty when there is none.
  static std::string ContentIn(const std::string& place);

  /// Gives up the lock. Waits a few tenths of a second for the other ranks to do the same.
  /// @return whether this was the last process of the run: then it alone holds the lock, until the end of this
  ///         object, and no other run can begin
  bool Release();

  /// After Take: gives up the lock and leaves everything as it is.
  void GiveUp() { Close(); }

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
