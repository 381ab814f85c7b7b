#include "cli/base/StdoutToFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <utility>

#include "cli/base/Interruption.h"
#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

/// What is still in a buffer belongs to the place that was current when it was written.
void FlushStdout() {
  std::cout.flush();
  std::fflush(stdout);
}

/// What the first file that lost something has to say. Standard output is one for the process, and so is
/// this.
std::string& Loss() {
  static std::string loss;
  return loss;
}

void Note(std::string const& file, int reason) {
  if (!Loss().empty()) return;
  Loss() = "cannot write " + QuotedPath(file) + ": " +
           (reason != 0 ? std::strerror(reason) : "not all of it was written");
}

/// Whether something of what was written is lost; the streams forget it.
bool TakeStreamErrors() {
  bool const lost = !std::cout || std::ferror(stdout) != 0;
  std::cout.clear();
  std::clearerr(stdout);
  return lost;
}

}  // namespace

StdoutToFile::StdoutToFile(std::string const& file) : file_(file) {
  FlushStdout();
  // Errors of standard output itself are for its own end to report.
  if (!std::cout || std::ferror(stdout) != 0) return;
  NoInterruption const wait;  // no new file where a signal is just having the old ones removed
  int const target = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (target < 0) {
    Note(file_, errno);
    return;
  }
  saved_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  if (saved_ < 0) {
    if (errno != EBADF) Note(file_, errno);
  } else if (dup2(target, STDOUT_FILENO) < 0) {
    Note(file_, errno);
    close(std::exchange(saved_, -1));
  }
  close(target);
}

StdoutToFile::~StdoutToFile() {
  if (saved_ < 0) return;
  errno = 0;
  FlushStdout();
  int const reason = errno;
  if (TakeStreamErrors()) Note(file_, reason);
  dup2(saved_, STDOUT_FILENO);
  close(saved_);
}

void StdoutToFile::CheckAll() {
  if (!Loss().empty()) throw UsageError(std::exchange(Loss(), ""));
}

}  // namespace zyngrad
