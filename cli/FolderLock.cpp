#include "cli/FolderLock.h"

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

#include "cli/OneLine.h"
#include "cli/OutputNames.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

/// A run that ends may remove the folder between two steps of ours; so often in a row it will not.
constexpr int kMostTries = 100;

constexpr std::chrono::milliseconds kPatience(300);

[[noreturn]] void Fail(const std::string& file, int reason) {
  throw UsageError("cannot write " + Quoted(file) + ": " + std::strerror(reason));
}

/// A folder, not a link to one: what stands in it will be removed.
void MakePlace(const std::string& place) {
  std::error_code error;
  fs::create_directory(place, error);
  if (error) Fail(place, error.value());
  if (fs::symlink_status(place, error).type() != fs::file_type::directory) Fail(place, ENOTDIR);
}

bool IsEmpty(const std::string& place) {
  std::error_code error;
  return fs::is_empty(place, error) && !error;
}

bool Exists(const std::string& file) {
  struct stat ignored = {};
  return lstat(file.c_str(), &ignored) == 0;
}

/// All that can be read there, up to a size that no lock's file has.
std::string ReadAll(int descriptor) {
  constexpr std::size_t kLargest = std::size_t{1} << 26;
  std::string text;
  char block[4096];
  for (;;) {
    const ssize_t size = pread(descriptor, block, sizeof block, static_cast<off_t>(text.size()));
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0 || text.size() > kLargest) return text;
    text.append(block, static_cast<std::size_t>(size));
  }
}

}  // namespace

FolderLock::~FolderLock() { Close(); }

bool FolderLock::Take(const std::string& place) {
  for (int attempt = 0; attempt < kMostTries; ++attempt) {
    MakePlace(place);
    // In a folder of somebody else not even the lock may appear. One that holds nothing is what a run leaves that is
    // killed before it gets any further.
    if (!Open(place, 0) && !(IsEmpty(place) && Open(place, O_CREAT))) {
      if (IsEmpty(place) || Exists(file_) || !Exists(place)) continue;  // a run has come or gone in between
      throw UsageError(
          QuotedPath(place) +
          " is not from a run of zyngrad: move it away, or choose another output folder with -o");
    }
    if (!SetLock(F_WRLCK)) {
      Close();
      return false;
    }
    if (IsStillThere()) return true;
  }
  Fail(place, EBUSY);
}

std::string FolderLock::Content() const { return ReadAll(descriptor_); }

void FolderLock::Share(const std::string& text) {
  errno = 0;
  if (ftruncate(descriptor_, 0) != 0 ||
      pwrite(descriptor_, text.data(), text.size(), 0) != static_cast<ssize_t>(text.size()) ||
      (fsync(descriptor_) != 0 && errno != EINVAL))
    Fail(file_, errno != 0 ? errno : ENOSPC);
  SetLock(F_RDLCK);
}

void FolderLock::Join(const std::string& place) {
  if (!Open(place, 0)) Fail(file_, ENOENT);
  if (!SetLock(F_RDLCK)) Fail(file_, EAGAIN);
}

std::string FolderLock::ContentIn(const std::string& place) {
  FolderLock other;
  return other.Open(place, 0) ? other.Content() : "";
}

bool FolderLock::Release() {
  if (descriptor_ < 0) return false;
  // Not from shared to alone in one step: two processes that try it keep each other from it.
  SetLock(F_UNLCK);
  // The ranks of a run leave within moments of each other. Waiting for the others makes sure that somebody is left to
  // clear up even if they are killed on their way out.
  const auto begin = std::chrono::steady_clock::now();
  while (IsStillThere()) {
    if (SetLock(F_WRLCK)) {
      if (IsStillThere()) return true;
      break;
    }
    if (std::chrono::steady_clock::now() - begin > kPatience) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  Close();
  return false;
}

void FolderLock::Remove() {
  unlink(file_.c_str());
  Close();
}

/// @return false when the folder has gone in the meantime
bool FolderLock::Open(const std::string& place, int flags) {
  Close();
  file_ = (fs::path(place) / kLockFile).string();
  descriptor_ = open(file_.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | flags, 0666);
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

/// Locks of the open file rather than of the process: closing another descriptor does not lose them.
/// @return false when another process holds a lock that excludes this one
bool FolderLock::SetLock(short type) const {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  if (fcntl(descriptor_, F_OFD_SETLK, &lock) == 0) return true;
  return errno != EAGAIN && errno != EACCES;  // else the file system has no locks
}

/// Whether the file that was opened has not been removed, nor replaced, by a run that ended in the meantime.
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
