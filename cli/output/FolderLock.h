#pragma once

#include <fcntl.h>

#include <string>

namespace zyngrad {

/// The sign on a folder that a run works in it: a lock of the system on a file there, shared by the ranks of
/// the run and refused to any other run. The system takes it back when a process ends, however it ends, so a
/// run that was killed leaves a file but no lock. On file systems without locks the file alone is the sign: a
/// run that was killed cannot be told there from one that works, and only the process that made the file
/// removes it.
///
/// The first process calls Take, then the others of the same run call Join. The file also holds what the
/// first process has to say about the folder, from the moment at which others can see it.
class FolderLock {
 public:
  enum class Outcome {
    Taken,
    InUse,    ///< by another run
    Unknown,  ///< the file was there, and the file system has no locks
    NoPlace   ///< the folder above has gone
  };

  /// As fcntl with F_OFD_SETLK.
  using LockCall = int (*)(int descriptor, struct flock& lock);
  static int LockBySystem(int descriptor, struct flock& lock);

  explicit FolderLock(LockCall lockCall = LockBySystem) : lockCall_(lockCall) {}
  ~FolderLock();
  FolderLock(FolderLock const&) = delete;
  FolderLock& operator=(FolderLock const&) = delete;

  /// Makes the folder `place` if it is missing, and takes its lock; in a folder that is not empty only if the
  /// lock's file is there already. A new file holds `text`. Until Share nobody can join. Unless the folder
  /// was taken, nothing has changed.
  /// Throws UsageError when the folder or the file cannot be made, or when the folder holds other things
  /// alone. A folder that this call has made is then removed again.
  Outcome Take(std::string const& place, std::string const& text);

  /// After Take or Join: what is written in the file.
  std::string Content() const;

  /// After Take: writes the text in the place of what the file held, and lets the other processes of the run
  /// join. The text is on the disk when it returns. Throws UsageError when it cannot be written.
  void Share(std::string const& text);

  /// Throws UsageError when that fails.
  void Join(std::string const& place);

  /// The text of Share of another process, without any lock; empty when there is none.
  static std::string ContentIn(std::string const& place);

  /// After Take or Join: whether the file has been neither removed nor replaced.
  bool IsStillThere() const;

  /// Gives up the lock. Waits a few tenths of a second for the other ranks to do the same.
  /// @return whether this was the last process of the run: then it alone holds the lock, until the end of
  ///         this object, and no other run can begin. Without locks: whether this process has taken the
  ///         folder.
  bool Release();

  /// After Take or Release: gives up the lock and leaves everything as it is.
  void GiveUp() { Close(); }

  /// After Release was true: removes the lock's file. From now on others may begin.
  void Remove();

 private:
  enum class Answer { Granted, Refused, NoLocks };

  Outcome TakeOrMake(std::string const& place, std::string const& text, bool& madePlace);
  bool Open(std::string const& place);
  bool Make(std::string const& place, std::string const& text);
  bool MakeAtOnce(std::string const& place, std::string const& text);
  bool MakeInSteps(std::string const& text);
  void Write(std::string const& text) const;
  Answer SetLock(short type) const;
  void Close();

  LockCall lockCall_;
  std::string file_;
  int descriptor_ = -1;
  bool hasTaken_ = false;
};

/// The name of the lock's file in its folder.
constexpr char kLockFile[] = "lock";

}  // namespace zyngrad
