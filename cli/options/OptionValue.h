#pragma once

#include <cstdint>
#include <string>

namespace zyngrad {

// The values of options. Wrong texts throw UsageError, which names the option.

/// A whole number from `lowest` to the largest int.
int WholeNumber(std::string const& option, std::string const& text, int lowest);

/// The number of a cell in the mesh, from 1.
std::int64_t CellNumber(std::string const& option, std::string const& text);

/// A finite number above zero.
double PositiveNumber(std::string const& option, std::string const& text);

}  // namespace zyngrad
