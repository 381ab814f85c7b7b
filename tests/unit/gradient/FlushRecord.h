#pragma once

#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace gradient_test {

/// Stands in for the buffer of std::cout for its lifetime and keeps what had been written at each flush.
class FlushRecord : private std::stringbuf {
 public:
  FlushRecord() : former_(std::cout.rdbuf(this)) {}
  ~FlushRecord() override { std::cout.rdbuf(former_); }
  FlushRecord(const FlushRecord&) = delete;
  FlushRecord& operator=(const FlushRecord&) = delete;

  /// All that had been written, once for each flush.
  const std::vector<std::string>& Texts() const { return texts_; }

 private:
  int sync() override {
    texts_.push_back(str());
    return 0;
  }

  std::streambuf* former_;
  std::vector<std::string> texts_;
};

}  // namespace gradient_test
