#pragma once

#include <fcntl.h>

#include <string>

namespace zyngrad {

/// Marks a folder as in use by a run: a lock of the system on a file in the folder, shared by the ranks of the run
/// and refused to any other run. The system releases the lock when a process ends for any reason, so a run that
/// was killed leaves a file but no lock. On file systems without locks the file alone is the mark. There, a run
/// that was killed cannot be told from one that is working, and only the process that created the file removes
/// it.
///
/// The first process calls Take, then the other processes of the same run call Join. From the moment at which
/// others can see it, the file also holds a text of the first process.
class FolderLock {
 public:
  enum class Outcome {
    Taken,
    InUse,    ///< by another run
    Unknown,  ///< the file existed, and the file system has no locks
    NoPlace   ///< the parent folder has gone
  };

  /// As fcntl with F_OFD_SETLK.
  using LockCall = int (*)(int descriptor, struct flock& lock);
  static int LockBySystem(int descriptor, struct flock& lock);

  explicit FolderLock(LockCall lockCall = LockBySystem) : lockCall_(lockCall) {}
  ~FolderLock();
  FolderLock(FolderLock const&) = delete;
  FolderLock& operator=(FolderLock const&) = delete;

  /// Creates the folder `place` if it is missing, and takes its lock; in a folder that is not empty, only if the
  /// lock's file exists. A new file holds `text`. Nobody can join before Share. Unless the folder was taken,
  /// nothing has changed.
  /// Throws UsageError if the folder or the file cannot be created, or if the folder contains only other things.
  /// A folder that this call created is then removed.
  Outcome Take(std::string const& place, std::string const& text);

  /// After Take or Join: the content of the file.
  std::string Content() const;

  /// After Take: replaces the content of the file by the text, forces it to the disk, and lets the other processes
  /// of the run join. Throws UsageError if the text cannot be written.
  void Share(std::string const& text);

  /// Joins the run that took the folder. Throws UsageError if that fails.
  void Join(std::string const& place);

  /// The text that another process passed to Share, read without a lock; empty if there is none.
  static std::string ContentIn(std::string const& place);

  /// After Take or Join: whether the file has neither been removed nor replaced.
  bool IsStillThere() const;

  /// Releases the lock. Waits a few tenths of a second for the other ranks to do the same.
  /// @return whether this was the last process of the run. It then holds the lock alone until the end of this
  ///         object, and no other run can begin. Without locks: whether this process took the folder.
  bool Release();

  /// After Take or Release: releases the lock and leaves everything as it is.
  void GiveUp() { Close(); }

  /// After Release returned true: removes the lock's file. From then on, others may begin.
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
