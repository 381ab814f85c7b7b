#include "cli/output/FolderLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <thread>

#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

/// A run that ends may remove the folder between two of our steps, but hardly several times in a row.
constexpr int kMostTries = 100;

constexpr std::chrono::milliseconds kPatience(300);

[[noreturn]] void Fail(std::string const& file, int reason) {
  throw UsageError("cannot write " + QuotedPath(file) + ": " + std::strerror(reason));
}

void Pause() { std::this_thread::sleep_for(std::chrono::milliseconds(1)); }

bool IsEmpty(std::string const& place) {
  std::error_code error;
  return fs::is_empty(place, error) && !error;
}

bool Exists(std::string const& file) {
  struct stat ignored = {};
  return lstat(file.c_str(), &ignored) == 0;
}

/// Reads everything, up to a size that no lock's file has.
std::string ReadAll(int descriptor) {
  constexpr std::size_t kLargest = std::size_t{1} << 26;
  std::string text;
  char block[4096];
  for (;;) {
    ssize_t const size = pread(descriptor, block, sizeof block, static_cast<off_t>(text.size()));
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0 || text.size() > kLargest) return text;
    text.append(block, static_cast<std::size_t>(size));
  }
}

}  // namespace

FolderLock::~FolderLock() { Close(); }

FolderLock::Outcome FolderLock::Take(std::string const& place, std::string const& text) {
  bool madePlace = false;
  try {
    Outcome const outcome = TakeOrMake(place, text, madePlace);
    hasTaken_ = outcome == Outcome::Taken;
    if (!hasTaken_) Close();
    return outcome;
  } catch (...) {
    Close();
    if (madePlace) rmdir(place.c_str());
    throw;
  }
}

FolderLock::Outcome FolderLock::TakeOrMake(std::string const& place, std::string const& text,
                                           bool& madePlace) {
  for (int attempt = 0; attempt < kMostTries; ++attempt) {
    if (mkdir(place.c_str(), 0777) == 0) {
      madePlace = true;
    } else if (errno == ENOENT) {
      return Outcome::NoPlace;
    } else if (errno != EEXIST) {
      Fail(place, errno);
    }
    // It must be a folder, not a link to one, because its content will be removed.
    std::error_code error;
    fs::file_type const type = fs::symlink_status(place, error).type();
    if (type == fs::file_type::not_found) continue;
    if (type != fs::file_type::directory) Fail(place, ENOTDIR);

    if (Open(place)) {
      Answer const answer = SetLock(F_WRLCK);
      if (answer == Answer::Refused) return Outcome::InUse;
      if (Content().empty() && attempt + 1 < kMostTries) {  // another process may be about to write it
        Close();
        Pause();
        continue;
      }
      if (!IsStillThere()) continue;
      return answer == Answer::NoLocks ? Outcome::Unknown : Outcome::Taken;
    }
    // In a folder that belongs to somebody else, not even the lock may appear. A run that is killed at this point
    // leaves an empty folder.
    if (IsEmpty(place)) {
      if (Make(place, text)) return Outcome::Taken;
    } else if (!Exists(file_) && Exists(place) && !IsEmpty(place)) {
      throw UsageError(
          QuotedPath(place) +
          " is not from a run of zyngrad: move it away, or choose another output folder with -o");
    }
  }
  Fail(place, EBUSY);
}

/// @return false if another process was faster or the folder has gone
bool FolderLock::Make(std::string const& place, std::string const& text) {
  return MakeAtOnce(place, text) || (!Exists(file_) && MakeInSteps(text));
}

/// The file gets its name when it is complete and locked. A process that is killed before that leaves nothing.
/// @return false also if the system cannot do that
bool FolderLock::MakeAtOnce(std::string const& place, std::string const& text) {
  descriptor_ = open(place.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
  if (descriptor_ < 0) return false;
  Write(text);
  SetLock(F_WRLCK);
  std::string const unnamed = "/proc/self/fd/" + std::to_string(descriptor_);
  if (linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, file_.c_str(), AT_SYMLINK_FOLLOW) == 0) return true;
  Close();
  return false;
}

/// A process that is killed between creating and writing the file leaves one that no run will take over.
bool FolderLock::MakeInSteps(std::string const& text) {
  descriptor_ = open(file_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
  if (descriptor_ < 0) {
    if (errno != EEXIST && errno != ENOENT) Fail(file_, errno);
    return false;
  }
  // A process that sees the empty file releases it at once.
  for (int attempt = 0; SetLock(F_WRLCK) == Answer::Refused; ++attempt) {
    if (attempt == kMostTries) Fail(file_, EBUSY);
    Pause();
  }
  try {
    Write(text);
  } catch (...) {
    unlink(file_.c_str());
    throw;
  }
  return true;
}

std::string FolderLock::Content() const { return ReadAll(descriptor_); }

void FolderLock::Share(std::string const& text) {
  if (Content() != text) Write(text);
  SetLock(F_RDLCK);
}

/// Truncates the file only at the end: an empty file would not be recognised as ours.
void FolderLock::Write(std::string const& text) const {
  errno = 0;
  if (pwrite(descriptor_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()) ||
      ftruncate(descriptor_, static_cast<off_t>(text.size())) != 0 ||
      (fsync(descriptor_) != 0 && errno != EINVAL))
    Fail(file_, errno != 0 ? errno : ENOSPC);
}

void FolderLock::Join(std::string const& place) {
  if (!Open(place)) Fail(file_, ENOENT);
  if (SetLock(F_RDLCK) == Answer::Refused) Fail(file_, EAGAIN);
}

std::string FolderLock::ContentIn(std::string const& place) {
  FolderLock other;
  return other.Open(place) ? other.Content() : "";
}

bool FolderLock::Release() {
  if (descriptor_ < 0) return false;
  // Not from a shared to an exclusive lock in one step: two processes that try this block each other.
  if (SetLock(F_UNLCK) == Answer::NoLocks) {
    if (hasTaken_ && IsStillThere()) return true;
    Close();
    return false;
  }
  // The ranks of a run leave within moments of each other. Waiting for the others makes sure that one process is
  // left to clean up even if they are killed while they leave.
  auto const begin = std::chrono::steady_clock::now();
  while (IsStillThere()) {
    if (SetLock(F_WRLCK) == Answer::Granted) {
      if (IsStillThere()) return true;
      break;
    }
    if (std::chrono::steady_clock::now() - begin > kPatience) break;
    Pause();
  }
  Close();
  return false;
}

void FolderLock::Remove() {
  unlink(file_.c_str());
  Close();
}

/// @return false if there is none
bool FolderLock::Open(std::string const& place) {
  Close();
  file_ = (fs::path(place) / kLockFile).string();
  descriptor_ = open(file_.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor_ < 0) {
    if (errno != ENOENT) Fail(file_, errno);
    return false;
  }
  struct stat status = {};
  if (fstat(descriptor_, &status) != 0 || !S_ISREG(status.st_mode)) {
    Close();
    Fail(file_, EINVAL);
  }
  return true;
}

/// Locks the open file rather than the process, because a process loses its lock when it closes another descriptor.
int FolderLock::LockBySystem(int descriptor, struct flock& lock) {
  return fcntl(descriptor, F_OFD_SETLK, &lock);
}

FolderLock::Answer FolderLock::SetLock(short type) const {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  if (lockCall_(descriptor_, lock) == 0) return Answer::Granted;
  return errno == EAGAIN || errno == EACCES ? Answer::Refused : Answer::NoLocks;
}

/// Whether the opened file has neither been removed nor replaced by a run that ended in the meantime.
bool FolderLock::IsStillThere() const {
  struct stat own = {}, there = {};
  return fstat(descriptor_, &own) == 0 && stat(file_.c_str(), &there) == 0 && own.st_dev == there.st_dev &&
         own.st_ino == there.st_ino;
}

void FolderLock::Close() {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}

}  // namespace zyngrad
