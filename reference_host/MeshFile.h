#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace reference_host {

/// The content of a mesh file, read in one go, and how a failure names a place in it.
class MeshFile {
 public:
  /// Reads the whole file. Throws MeshError if it cannot be read.
  explicit MeshFile(std::string name);

  const std::string& Name() const { return name_; }
  std::string_view Content() const { return {content_.get(), size_}; }

  /// From here on failures name the byte instead of the line: lines mean nothing between binary numbers.
  void NamePlacesByOffset() { placesByOffset_ = true; }

  /// Throws MeshError "NAME:LINE: what", or "NAME: offset N: what" after NamePlacesByOffset.
  [[noreturn]] void Fail(std::size_t offset, const std::string& what) const;

 private:
  std::string name_;
  std::unique_ptr<char[]> content_;
  std::size_t size_ = 0;
  bool placesByOffset_ = false;
};

/// Text from a file as it may stand in a one-line message: in quotes, shortened, printable characters only.
std::string Quoted(std::string_view text);

}  // namespace reference_host
