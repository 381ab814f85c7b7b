#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "reference_host/mesh/MeshFile.h"

struct gzFile_s;

namespace reference_host {

/// Reads a file from front to back. What gzip has compressed is unpacked on the way.
///
/// A few compressed bytes can stand for a thousand times as many. Files that unpack to more than 256 MiB and to more
/// than a hundred times their size are therefore rejected where that shows.
class GzipFile {
 public:
  /// Throws MeshError unless it is a regular file that can be opened.
  explicit GzipFile(std::string name);

  std::string const& Name() const { return name_; }

  /// The position in the unpacked content.
  std::size_t Position() const { return position_; }

  /// The most bytes that the unpacked content can have; exact for a file that is not compressed.
  std::size_t MostBytes() const { return mostBytes_; }

  /// Reads `n` bytes, or fewer at the end of the file. Throws MeshError for damaged and truncated files. Memory grows
  /// with what is there, not with n.
  FileContent Read(std::size_t n);

  /// Reads what is left.
  FileContent ReadRest();

  void Skip(std::size_t n);

  /// Reads up to n bytes to a place; fewer at the end of the file.
  std::size_t Fill(char* to, std::size_t n);

 private:
  [[noreturn]] void FailRead() const;

  struct Closer {
    void operator()(gzFile_s* file) const;
  };

  std::string name_;
  std::unique_ptr<gzFile_s, Closer> file_;
  std::size_t position_ = 0;
  std::size_t mostBytes_ = 0;
  std::size_t likelyBytes_ = 0;  ///< of the whole content
};

/// Opens a file for reading its unpacked content in pieces. Unpacks it once to find its size, and reading what is before
/// the last piece means to unpack it again.
std::unique_ptr<FileBytes> OpenGzipFile(std::string const& name);

}  // namespace reference_host
