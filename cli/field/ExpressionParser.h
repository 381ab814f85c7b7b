#pragma once

#include <string>

#include "cli/field/ExpressionTree.h"

namespace zyngrad {

/// Parses the syntax of a formula without looking up names. The tree points into `text`, which must outlive it.
/// Throws UsageError that names the column.
tree::Sum ParseExpression(std::string const& text);

/// Throws UsageError: expression "TEXT": column N: WHAT. `at` points into `text`.
[[noreturn]] void FailAt(std::string const& text, std::string::const_iterator at, std::string const& what);

}  // namespace zyngrad
