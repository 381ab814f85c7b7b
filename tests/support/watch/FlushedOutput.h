#pragma once

#include <unistd.h>

#include <cstdio>
#include <string>

namespace zyn_test {

/// Sends standard output to a file for its lifetime and tells what has arrived there, so that text which
/// still waits in a buffer of the program is not seen.
class FlushedOutput {
 public:
  FlushedOutput() : file_(std::tmpfile()) {
    std::fflush(stdout);
    formerOutput_ = dup(STDOUT_FILENO);
    dup2(fileno(file_), STDOUT_FILENO);
  }
  ~FlushedOutput() {
    std::fflush(stdout);
    dup2(formerOutput_, STDOUT_FILENO);
    close(formerOutput_);
    std::fclose(file_);
  }
  FlushedOutput(FlushedOutput const&) = delete;
  FlushedOutput& operator=(FlushedOutput const&) = delete;

  std::string Arrived() const {
    std::string text(1 << 16, '\0');
    ssize_t const length = pread(fileno(file_), text.data(), text.size(), 0);
    text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    return text;
  }

 private:
  std::FILE* file_;
  int formerOutput_ = -1;
};

}  // namespace zyn_test
