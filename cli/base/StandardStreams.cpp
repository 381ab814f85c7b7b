#include "cli/base/StandardStreams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <iostream>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

bool callerIgnoresClosedPipes = false;

/// Whether the reader of standard output has gone. The error code of the failed write may be overwritten by now, but a
/// pipe stays closed. A pair of sockets, which some programs use instead of a pipe, shows POLLHUP.
bool IsClosedPipe() {
  pollfd output = {STDOUT_FILENO, POLLOUT, 0};
  return poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0;
}

}  // namespace

void SecureStandardStreams() {
  for (int const descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF) continue;
    // open() takes the lowest free number, which is this one. It is opened for the wrong direction, so that using it
    // fails, as using a closed stream does.
    [[maybe_unused]] int const opened = open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
  }
  callerIgnoresClosedPipes = std::signal(SIGPIPE, SIG_IGN) == SIG_IGN;
}

void FlushStandardOutput(Ranks const& ranks) {
  std::cout.flush();
  bool const isWhole = std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
  bool const isClosed = !isWhole && !callerIgnoresClosedPipes && IsClosedPipe();
  if (ranks.Max(isClosed ? 1.0 : 0.0) > 0.0) throw ClosedPipe();
  ranks.Together([isWhole] {
    if (!isWhole) throw UsageError("cannot write to standard output");
  });
}

void EndByClosedPipe() {
  if (callerIgnoresClosedPipes) return;
  std::signal(SIGPIPE, SIG_DFL);
  std::raise(SIGPIPE);
}

}  // namespace zyngrad
