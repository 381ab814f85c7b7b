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

/// The bytes of a file, for reading a piece of them at a time. Reading from front to back is cheap.
class FileBytes {
 public:
  virtual ~FileBytes() = default;
  virtual std::size_t Size() const = 0;

  /// Reads n bytes from a position on. Throws MeshError if the file cannot be read. @pre position + n <= Size()
  virtual void Read(std::size_t position, char* to, std::size_t n) = 0;
};

/// Opens a file as it is on disk. Throws MeshError if it cannot be read.
std::unique_ptr<FileBytes> OpenPlainFile(std::string const& name);

/// The content of a mesh file, read at once or in pieces, and the names of places in it for messages.
class MeshFile {
 public:
  static constexpr std::size_t kPiece = std::size_t{1} << 20;

  /// Reads the whole file. Throws MeshError if it cannot be read.
  explicit MeshFile(std::string name);

  /// Content that has been read already.
  /// @param[in] firstByte  position of the content in the file, for messages that name the byte
  MeshFile(std::string name, FileContent content, std::size_t firstByte);

  /// A file that is never held whole.
  /// @param[in] piece  bytes that readers ask for at a time
  MeshFile(std::string name, std::unique_ptr<FileBytes> bytes, std::size_t piece = kPiece);

  std::string const& Name() const { return name_; }
  std::size_t Size() const { return bytes_ ? bytes_->Size() : content_.size; }
  bool IsInPieces() const { return bytes_ != nullptr; }
  std::size_t Piece() const { return piece_; }

  /// The byte that messages call a position.
  std::size_t ByteAt(std::size_t position) const { return firstByte_ + position; }

  /// Copies bytes of the content. @pre position + n <= Size()
  void Read(std::size_t position, char* to, std::size_t n) const;

  /// Empty for a file in pieces.
  std::string_view Content() const { return content_.View(); }

  /// From now on, messages give the byte instead of the line, since lines mean nothing between binary
  /// numbers.
  void NamePlacesByOffset() { placesByOffset_ = true; }

  /// Throws MeshError "NAME:LINE: what", or "NAME: offset N: what" after NamePlacesByOffset.
  [[noreturn]] void Fail(std::size_t offset, std::string const& what) const;

 private:
  std::size_t LineAt(std::size_t offset) const;

  std::string name_;
  FileContent content_;
  std::unique_ptr<FileBytes> bytes_;  ///< null: content_ has them all
  std::size_t piece_ = kPiece;
  std::size_t firstByte_ = 0;
  bool placesByOffset_ = false;
};

/// Throws MeshError unless `name` is an existing regular file; the message says what it is instead. Opening a
/// pipe could wait forever, and a device has no end.
void RequireRegularFile(std::string const& name);

}  // namespace reference_host
