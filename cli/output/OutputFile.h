#pragma once

#include <fstream>
#include <ostream>
#include <string>

namespace zyngrad {

/// A file that is written from its beginning to its end. A disk that is full, a quota or a limit may show
/// with any write, and for what is still in a buffer only when the file is closed: so the file is good only
/// after Close.
///
/// Close does not force the content from the system's memory to the disk: a process that is killed loses
/// nothing that was closed, a machine that loses power may. OutputFolder::Commit does that for the results.
class OutputFile {
 public:
  /// Throws UsageError when the file cannot be made.
  explicit OutputFile(std::string const& file);

  std::ostream& stream() { return out_; }

  /// Throws UsageError, with the system's reason, when not all that went into the stream is in the file.
  void Close();

 private:
  [[noreturn]] void Fail() const;

  std::string file_;
  std::ofstream out_;
};

/// A file of this content. Throws UsageError.
void WriteText(std::string const& file, std::string const& text);

}  // namespace zyngrad
