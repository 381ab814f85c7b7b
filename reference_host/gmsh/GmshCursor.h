#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/TextCursor.h"

namespace reference_host {

/// Reads a Gmsh file item by item. Its numbers are text or binary; the rest is always text.
class GmshCursor {
 public:
  explicit GmshCursor(MeshFile& file) : file_(file), text_(file, TextCursor::Comments::None) {}

  /// For the parts that are text in any file.
  TextCursor& Text() { return text_; }

  bool IsBinary() const { return binary_; }
  void SetBinary();

  /// A number in the file's encoding; `what` names what is expected, for the message.
  int Int(char const* what);            ///< binary: 4 bytes
  std::int64_t Size(char const* what);  ///< binary: 8 bytes; not negative
  double Real(char const* what);        ///< binary: 8 bytes

  /// Fails unless the rest of the file can hold `count` items of `numbers` numbers, `bytes` bytes each. So
  /// nothing is allocated, and no loop started, for a count that cannot be right.
  void CheckRoom(std::int64_t count, std::size_t numbers, std::size_t bytes, char const* what) const;

  /// Whether the rest of the file has `count` items of `bytes` bytes each.
  bool HasRoom(std::int64_t count, std::size_t bytes) const {
    return static_cast<std::uint64_t>(count) <= text_.Remaining() / bytes;
  }

  /// Passes over binary numbers of that many bytes in all, the last of which has `lastNumber`. @pre HasRoom
  void Skip(std::size_t bytes, std::size_t lastNumber);

  /// Skips the line break before binary numbers.
  void SkipLineBreak();

  /// Expects "$End" + section.
  void EndSection(std::string_view section);

  /// Skips everything up to and including "$End" + section.
  void SkipSection(std::string_view section);

  /// Fails at the beginning of the last item read.
  [[noreturn]] void Fail(std::string const& what) const;

 private:
  template <class Number>
  Number Raw(char const* what);

  MeshFile& file_;
  TextCursor text_;
  bool binary_ = false;
  std::size_t rawStart_ = 0;  // of the binary number read last
};

}  // namespace reference_host
