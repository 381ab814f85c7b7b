#pragma once

#include <string>

namespace zyngrad {

// The values of options. Wrong texts throw UsageError, which names the option.

/// A whole number from `lowest` to the largest int.
int WholeNumber(std::string const& option, std::string const& text, int lowest);

/// A finite number above zero.
double PositiveNumber(std::string const& option, std::string const& text);

}  // namespace zyngrad
