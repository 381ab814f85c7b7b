#pragma once

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace zyn_test {

/// Stands in for the buffer of std::cout for its lifetime and keeps what is flushed together apart from what is flushed
/// next.
class FlushRecord : private std::stringbuf {
 public:
  FlushRecord() : former_(std::cout.rdbuf(this)) {}
  ~FlushRecord() override { std::cout.rdbuf(former_); }
  FlushRecord(FlushRecord const&) = delete;
  FlushRecord& operator=(FlushRecord const&) = delete;

  /// What was written, flush by flush. Text that no flush followed is not among it.
  std::vector<std::string> const& Pieces() const { return pieces_; }

 private:
  int sync() override {
    pieces_.push_back(str());
    str("");
    return 0;
  }

  std::streambuf* former_;
  std::vector<std::string> pieces_;
};

}  // namespace zyn_test
