#pragma once

#include <string>
#include <vector>

#include "cli/field/Dual.h"

namespace zyngrad {

/// A formula in x, y and z, such as `sin(x)*y + z^2`, with its exact gradient.
///
/// Grammar, from loosest to tightest: sums (`+ -`), products (`* /`), signs, powers (`^`, right-associative:
/// 2^3^2 = 2^9). A sign binds more loosely than a power: -x^2 = -(x^2). An exponent may have a sign: 2^-1. Names:
/// x y z, pi e, and the functions of FunctionNames(). Numbers: 1, .5, 2e-3. Spaces are ignored.
class Expression {
 public:
  /// Parses `text`, which may hold any bytes. Nesting is limited, so that no input exhausts the stack.
  /// Throws UsageError: `expression "sin(x": column 6: expected ')'` (columns count bytes from 1).
  explicit Expression(std::string const& text);

  double Value(double x, double y, double z) const;

  /// Value and derivatives. Where a function has no derivative (sqrt at 0), the result is infinite or NaN; at the
  /// kinks of abs, sign, min and max it is a convention, see Dual.h.
  Dual ValueAndGradient(double x, double y, double z) const;

  std::string const& text() const { return text_; }

 private:
  friend class ExpressionCompiler;

  // clang-format off
  enum class Op : unsigned char {
    Number, X, Y, Z,
    Negate, Add, Subtract, Multiply, Divide, Pow,
    Sin, Cos, Tan, Asin, Acos, Atan, Atan2, Sinh, Cosh, Tanh, Exp, Log, Log10, Sqrt, Cbrt, Abs, Sign, Min, Max
  };
  // clang-format on
  struct Instruction {
    Op op;
    double number;  ///< of Op::Number
  };

  /// Greatest number of pending operands; the compiler refuses a formula that needs more.
  static constexpr int kStackSize = 512;

  std::string text_;
  std::vector<Instruction> program_;  ///< in postfix order
};

/// The functions, for help texts: "abs, acos, ... (one argument) and atan2, ... (two
/// arguments)".
std::string FunctionNames();

}  // namespace zyngrad
