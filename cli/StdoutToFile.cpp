#include "cli/StdoutToFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <iostream>

namespace zyngrad {
namespace {

/// What is still in a buffer belongs to the place that was current when it was written.
void FlushStdout() {
  std::cout.flush();
  std::fflush(stdout);
}

}  // namespace

StdoutToFile::StdoutToFile(const std::string& file) {
  FlushStdout();
  const int target = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (target < 0) return;
  saved_ = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
  if (saved_ >= 0) dup2(target, STDOUT_FILENO);
  close(target);
}

StdoutToFile::~StdoutToFile() {
  if (saved_ < 0) return;
  FlushStdout();
  dup2(saved_, STDOUT_FILENO);
  close(saved_);
}

}  // namespace zyngrad
