#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

namespace rbf_ib_test {

/// Sends standard output into a socket that keeps what is written at once apart from what is written next, so
/// that text which was flushed together is told from text which was flushed in pieces.
class FlushedPieces {
 public:
  FlushedPieces() {
    std::fflush(stdout);
    formerOutput_ = dup(STDOUT_FILENO);
    if (socketpair(AF_UNIX, SOCK_DGRAM, 0, ends_) != 0) ADD_FAILURE() << "no sockets";
    // A test that prints more than the socket holds fails and does not hang.
    for (const int end : ends_) fcntl(end, F_SETFL, O_NONBLOCK);
    dup2(ends_[0], STDOUT_FILENO);
  }
  ~FlushedPieces() {
    std::fflush(stdout);
    dup2(formerOutput_, STDOUT_FILENO);
    for (const int descriptor : {formerOutput_, ends_[0], ends_[1]}) close(descriptor);
  }
  FlushedPieces(const FlushedPieces&) = delete;
  FlushedPieces& operator=(const FlushedPieces&) = delete;

  /// What has arrived since the last call, flush by flush.
  std::vector<std::string> Take() const {
    std::vector<std::string> pieces;
    std::string piece(1 << 16, '\0');
    for (ssize_t n; (n = recv(ends_[1], piece.data(), piece.size(), 0)) > 0;)
      pieces.push_back(piece.substr(0, static_cast<std::size_t>(n)));
    return pieces;
  }

 private:
  int formerOutput_ = -1;
  int ends_[2] = {-1, -1};
};

/// What `call` writes to standard output, flush by flush.
template <typename Call>
std::vector<std::string> PrintedPieces(Call call) {
  const FlushedPieces output;
  call();
  return output.Take();
}

/// The lines of a text, each with the empty lines behind it: the library prints these together.
inline std::vector<std::string> LinesWithTheirGaps(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = text.find_first_not_of('\n', text.find('\n', begin));
    lines.push_back(text.substr(begin, end - begin));
    begin = end == std::string::npos ? text.size() : end;
  }
  return lines;
}

}  // namespace rbf_ib_test
