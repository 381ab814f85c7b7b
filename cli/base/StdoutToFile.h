#pragma once

#include <string>

namespace zyngrad {

/// Sends everything that is written to standard output into a file while the object lives, whoever writes it
/// and by whatever means: it swaps the file descriptor itself. The operators print lines of their own, which
/// would otherwise land between the rows of a table.
///
/// If the swap fails, output stays where it was. What the file does not take, on a full disk for instance, is
/// lost; standard output itself is none the worse. CheckAll tells of both afterwards. One object at a time.
class StdoutToFile {
 public:
  explicit StdoutToFile(std::string const& file);  ///< appends; the file is made if missing
  ~StdoutToFile();
  StdoutToFile(StdoutToFile const&) = delete;
  StdoutToFile& operator=(StdoutToFile const&) = delete;

  /// Throws UsageError, once, when a file of this process has not taken all that was sent to it.
  static void CheckAll();

 private:
  std::string file_;
  int saved_ = -1;  ///< the original descriptor, -1: nothing was swapped
};

}  // namespace zyngrad
