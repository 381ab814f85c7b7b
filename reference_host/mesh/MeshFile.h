#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace reference_host {

/// Bytes of a file.
struct FileContent {
  std::unique_ptr<char[]> bytes;
  std::size_t size = 0;

  std::string_view View() const { return {bytes.get(), size}; }
};

/// Memory for bytes of a file, with any content. Throws MeshError if there is not enough.
/// @param[in] name  the file
FileContent AllocateContent(std::string const& name, std::size_t size);

/// The content of a mesh file, read at once, and the names of places in it for messages.
class MeshFile {
 public:
  /// Reads the whole file. Throws MeshError if it cannot be read.
  explicit MeshFile(std::string name);

  /// Content that has been read already.
  /// @param[in] firstByte  position of the content in the file, for messages that name the byte
  MeshFile(std::string name, FileContent content, std::size_t firstByte);

  std::string const& Name() const { return name_; }
  std::string_view Content() const { return content_.View(); }

  /// From now on, messages give the byte instead of the line, since lines mean nothing between binary
  /// numbers.
  void NamePlacesByOffset() { placesByOffset_ = true; }

  /// Throws MeshError "NAME:LINE: what", or "NAME: offset N: what" after NamePlacesByOffset.
  [[noreturn]] void Fail(std::size_t offset, std::string const& what) const;

 private:
  std::string name_;
  FileContent content_;
  std::size_t firstByte_ = 0;
  bool placesByOffset_ = false;
};

/// Throws MeshError unless `name` is an existing regular file; the message says what it is instead. Opening a
/// pipe could wait forever, and a device has no end.
void RequireRegularFile(std::string const& name);

}  // namespace reference_host
