#pragma once

#include <string>

namespace zyngrad {

/// Sends everything that is written to standard output into a file while the object lives. It swaps the file
/// descriptor itself, so that output by any means is included. The operators print lines of their own, which
/// would otherwise appear between the rows of a table.
///
/// If the swap fails, output goes where it went before. What the file does not take, for example on a full disk,
/// is lost; standard output is not affected. CheckAll reports both cases afterwards. One object at a time.
class StdoutToFile {
 public:
  explicit StdoutToFile(std::string const& file);  ///< appends; creates the file if it is missing
  ~StdoutToFile();
  StdoutToFile(StdoutToFile const&) = delete;
  StdoutToFile& operator=(StdoutToFile const&) = delete;

  /// Throws UsageError, once, if a file of this process did not take everything that was sent to it.
  static void CheckAll();

 private:
  std::string file_;
  int saved_ = -1;  ///< the original descriptor; -1 if nothing was swapped
};

}  // namespace zyngrad
