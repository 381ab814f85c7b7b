#pragma once

#include <fstream>
#include <ostream>
#include <string>

namespace zyngrad {

/// A file that is written from beginning to end. A full disk, a quota or a limit may cause any write to fail, and
/// for buffered text the failure shows only when the file is closed. The file is therefore complete only after
/// Close.
///
/// Close does not force the content from the system's memory to the disk: a process that is killed loses nothing
/// that was closed, but a machine that loses power may. OutputFolder::Commit forces the results to the disk.
class OutputFile {
 public:
  /// Throws UsageError if the file cannot be created.
  explicit OutputFile(std::string const& file);

  std::ostream& stream() { return out_; }

  /// Throws UsageError with the system's reason if the file did not take everything that went into the stream.
  void Close();

 private:
  [[noreturn]] void Fail() const;

  std::string file_;
  std::ofstream out_;
};

/// Writes a file with this content. Throws UsageError.
void WriteText(std::string const& file, std::string const& text);

}  // namespace zyngrad
