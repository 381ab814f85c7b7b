#pragma once

#include <string>

namespace zyngrad {

/// `text` as a single line that is safe on a terminal: line ends become spaces, other control characters and
/// broken UTF-8 become '?', and trailing spaces are removed. For user input inside messages.
std::string OneLine(std::string const& text);

/// OneLine of `text` in double quotes, cut to 60 characters ("..." marks the cut).
std::string Quoted(std::string const& text);

}  // namespace zyngrad
