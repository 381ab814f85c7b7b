#include "cli/base/StandardStreams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <functional>

namespace zyngrad {
namespace {

/// How a process ends that does `work`: the signal, or minus the exit code.
int EndOf(std::function<int()> const& work) {
  pid_t const child = fork();
  if (child == 0) _exit(work());
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? WTERMSIG(status) : -WEXITSTATUS(status);
}

TEST(StandardStreams, KeepsFilesOffTheDescriptorsThatTheCallerHasClosed) {
  EXPECT_EQ(0, EndOf([] {
              close(STDIN_FILENO);
              close(STDOUT_FILENO);
              close(STDERR_FILENO);
              SecureStandardStreams();
              if (open("/dev/null", O_RDONLY) <= STDERR_FILENO) return 1;
              char byte = 0;
              if (read(STDIN_FILENO, &byte, 1) >= 0 || errno != EBADF) return 2;
              for (int const output : {STDOUT_FILENO, STDERR_FILENO})
                if (write(output, &byte, 1) >= 0 || errno != EBADF) return 3;
              return 0;
            }));
}

TEST(StandardStreams, EndsLikeOthersThatWriteToAClosedPipeUnlessTheCallerIgnoresThat) {
  EXPECT_EQ(EndOf([] {
              SecureStandardStreams();
              int ends[2];
              if (pipe(ends) != 0) return 1;
              close(ends[0]);
              if (write(ends[1], "x", 1) >= 0) return 2;  // not the end of the process
              EndByClosedPipe();
              return 3;
            }),
            SIGPIPE);
  EXPECT_EQ(-3, EndOf([] {
    std::signal(SIGPIPE, SIG_IGN);
    SecureStandardStreams();
    EndByClosedPipe();
    return 3;
  }));
}

}  // namespace
}  // namespace zyngrad
