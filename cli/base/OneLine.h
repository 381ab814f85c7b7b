#pragma once

#include <string>

namespace zyngrad {

/// `text` as a single line that is safe on a terminal: line ends become spaces, other control characters and
/// broken UTF-8 become '?', spaces at the end go. For user input inside messages.
std::string OneLine(std::string const& text);

/// `text` as OneLine, in double quotes and cut to 60 characters ("..." shows the cut).
std::string Quoted(std::string const& text);

}  // namespace zyngrad
