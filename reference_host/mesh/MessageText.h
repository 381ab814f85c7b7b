#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace reference_host {

/// Text from a file for a one-line message: in quotes, with printable characters only, and shortened to
/// `longest` bytes.
/// @param[in] mark  the quotation mark
std::string Quoted(std::string_view text, std::size_t longest = 40, std::string_view mark = "'");

/// Names for a one-line message: all of a few, or the first of many and the number of the others.
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
