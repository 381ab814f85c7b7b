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

/// Buffered text must go to the destination that was current when it was written.
void FlushStdout() {
  std::cout.flush();
  std::fflush(stdout);
}

/// The message for the first file that lost something. The process has one standard output and therefore one such
/// message.
std::string& Loss() {
  static std::string loss;
  return loss;
}

void Note(std::string const& file, int reason) {
  if (!Loss().empty()) return;
  Loss() = "cannot write " + QuotedPath(file) + ": " +
           (reason != 0 ? std::strerror(reason) : "it was not written completely");
}

/// Whether written text was lost; resets the streams.
bool TakeStreamErrors() {
  bool const lost = !std::cout || std::ferror(stdout) != 0;
  std::cout.clear();
  std::clearerr(stdout);
  return lost;
}

}  // namespace

StdoutToFile::StdoutToFile(std::string const& file) : file_(file) {
  FlushStdout();
  // FlushStandardOutput reports errors of standard output itself.
  if (!std::cout || std::ferror(stdout) != 0) return;
  NoInterruption const wait;  // a signal may be removing files at this moment; do not create a new one
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
