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

  std::string const& Name() const { return name_; }
  std::string_view Content() const { return {content_.get(), size_}; }

  /// From here on failures name the byte instead of the line: lines mean nothing between binary numbers.
  void NamePlacesByOffset() { placesByOffset_ = true; }

  /// Throws MeshError "NAME:LINE: what", or "NAME: offset N: what" after NamePlacesByOffset.
  [[noreturn]] void Fail(std::size_t offset, std::string const& what) const;

 private:
  std::string name_;
  std::unique_ptr<char[]> content_;
  std::size_t size_ = 0;
  bool placesByOffset_ = false;
};

/// Throws MeshError that says what `name` is unless it is a regular file that is there: opening a pipe could wait for
/// ever, and a device has no end.
void RequireRegularFile(std::string const& name);

/// Text from a file as it may stand in a one-line message: in quotes, printable characters only, and shortened where it
/// has more than `longest` bytes.
/// @param[in] mark  what stands before and behind it
std::string Quoted(std::string_view text, std::size_t longest = 40, std::string_view mark = "'");

/// Names for a one-line message: all of a few, of many the first ones and how many there are besides.
class NameList {
 public:
  void Add(std::string const& name);
  bool IsEmpty() const { return nNames_ == 0; }

  /// "'a', 'b', 'c' and 7 more"; "none".
  std::string Text() const;

 private:
  static constexpr std::size_t kMost = 10;
  std::string text_;
  std::size_t nNames_ = 0;
};

}  // namespace reference_host
