#pragma once

#include <string>

#include "cli/ExpressionTree.h"

namespace zyngrad {

/// The syntax of a formula; names are not looked up. The tree points into `text`, which must outlive it.
/// Throws UsageError naming the column.
tree::Sum ParseExpression(const std::string& text);

/// Throws UsageError: expression "TEXT": column N: WHAT. `at` points into `text`.
[[noreturn]] void FailAt(const std::string& text, std::string::const_iterator at, const std::string& what);

}  // namespace zyngrad
