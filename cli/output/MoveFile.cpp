#include "cli/output/MoveFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

namespace zyngrad {

bool MoveToFreePlace(char const* from, char const* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  struct stat ignored = {};  // this file system cannot check and move in one step
  if (lstat(to, &ignored) == 0) {
    errno = EEXIST;
    return false;
  }
  return std::rename(from, to) == 0;
}

bool ExchangeFiles(char const* one, char const* other) {
  return renameat2(AT_FDCWD, one, AT_FDCWD, other, RENAME_EXCHANGE) == 0;
}

}  // namespace zyngrad
