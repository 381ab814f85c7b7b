#include "cli/FolderLock.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "cli/OneLine.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

/// A run that ends may remove the folder between two steps of ours; so often in a row it will not.
constexpr int kMostTries = 100;

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

std::string HostName() {
  char host[256] = "";
  gethostname(host, sizeof host - 1);
  return host;
}

}  // namespace

FolderLock::~FolderLock() { Close(); }

bool FolderLock::Take(const std::string& place) {
  for (int attempt = 0; attempt < kMostTries; ++attempt) {
    MakePlace(place);
    if (!Open(place, O_CREAT)) continue;
    if (!SetLock(F_WRLCK)) {
      Close();
      return false;
    }
    if (IsStillThere()) return true;
  }
  Fail(place, EBUSY);
}

void FolderLock::Share() {
  const std::string self = "process " + std::to_string(getpid()) + " on " + HostName() + '\n';
  errno = 0;
  if (ftruncate(descriptor_, 0) != 0 ||
      write(descriptor_, self.data(), self.size()) != static_cast<ssize_t>(self.size()))
    Fail(file_, errno != 0 ? errno : ENOSPC);
  SetLock(F_RDLCK);
}

void FolderLock::Join(const std::string& place) {
  if (!Open(place, 0)) Fail(file_, ENOENT);
  if (!SetLock(F_RDLCK)) Fail(file_, EAGAIN);
}

std::string FolderLock::HolderOf(const std::string& place) {
  std::string holder;
  std::getline(std::ifstream(fs::path(place) / kLockFile), holder);
  return holder.empty() ? "another process" : holder;
}

bool FolderLock::Release() {
  if (descriptor_ < 0) return false;
  // Not from shared to alone in one step: two processes that try it keep each other from it.
  SetLock(F_UNLCK);
  if (SetLock(F_WRLCK) && IsStillThere()) return true;
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
  descriptor_ = open(file_.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | flags, 0666);
  if (descriptor_ >= 0) return true;
  if (errno != ENOENT) Fail(file_, errno);
  return false;
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
