#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace reference_host {

/// The content of a mesh file, read at once, and the names of places in it for messages.
class MeshFile {
 public:
  /// Reads the whole file. Throws MeshError if it cannot be read.
  explicit MeshFile(std::string name);

  std::string const& Name() const { return name_; }
  std::string_view Content() const { return {content_.get(), size_}; }

  /// From now on, messages give the byte instead of the line, since lines mean nothing between binary
  /// numbers.
  void NamePlacesByOffset() { placesByOffset_ = true; }

  /// Throws MeshError "NAME:LINE: what", or "NAME: offset N: what" after NamePlacesByOffset.
  [[noreturn]] void Fail(std::size_t offset, std::string const& what) const;

 private:
  std::string name_;
  std::unique_ptr<char[]> content_;
  std::size_t size_ = 0;
  bool placesByOffset_ = false;
};

/// Throws MeshError unless `name` is an existing regular file; the message says what it is instead. Opening a
/// pipe could wait forever, and a device has no end.
void RequireRegularFile(std::string const& name);

}  // namespace reference_host
