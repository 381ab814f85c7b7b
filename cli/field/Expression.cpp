#include "cli/field/Expression.h"

#include <array>
#include <boost/variant/apply_visitor.hpp>
#include <boost/variant/static_visitor.hpp>
#include <charconv>
#include <map>
#include <system_error>

#include "cli/base/OneLine.h"
#include "cli/field/ExpressionParser.h"

namespace zyngrad {

/// Turns the tree into postfix instructions and looks up the names.
class ExpressionCompiler : public boost::static_visitor<void> {
 public:
  explicit ExpressionCompiler(Expression& target) : target_(target) {}

  using Op = Expression::Op;
  struct Function {
    Op op;
    int nArguments;
  };
  static std::map<std::string, Function> const& Functions();

  void operator()(tree::Sum const& sum);
  void operator()(tree::Product const& product);
  void operator()(tree::Power const& power);
  void operator()(tree::Text const& number);
  void operator()(tree::Name const& name);

 private:
  void Push(Op op, double number, std::string::const_iterator at);
  void Apply(Op op, int nOperands);
  void ApplySigns(std::string const& signs);
  void Operand(tree::Primary const& primary) { boost::apply_visitor(*this, primary); }
  void VariableOrConstant(tree::Name const& name);
  void Call(tree::Name const& name, Function const& function);

  Expression& target_;
  int depth_ = 0;  ///< operands on the stack
};

std::map<std::string, ExpressionCompiler::Function> const& ExpressionCompiler::Functions() {
  static std::map<std::string, Function> const functions = {
      {"sin", {Op::Sin, 1}},     {"cos", {Op::Cos, 1}},   {"tan", {Op::Tan, 1}},   {"asin", {Op::Asin, 1}},
      {"acos", {Op::Acos, 1}},   {"atan", {Op::Atan, 1}}, {"sinh", {Op::Sinh, 1}}, {"cosh", {Op::Cosh, 1}},
      {"tanh", {Op::Tanh, 1}},   {"exp", {Op::Exp, 1}},   {"log", {Op::Log, 1}},   {"log10", {Op::Log10, 1}},
      {"sqrt", {Op::Sqrt, 1}},   {"cbrt", {Op::Cbrt, 1}}, {"abs", {Op::Abs, 1}},   {"sign", {Op::Sign, 1}},
      {"atan2", {Op::Atan2, 2}}, {"min", {Op::Min, 2}},   {"max", {Op::Max, 2}},   {"pow", {Op::Pow, 2}},
  };
  return functions;
}

void ExpressionCompiler::Push(Op op, double number, std::string::const_iterator at) {
  if (++depth_ > Expression::kStackSize) {
    FailAt(target_.text_, at,
           "more than " + std::to_string(Expression::kStackSize) + " operands are pending here");
  }
  target_.program_.push_back({op, number});
}

void ExpressionCompiler::Apply(Op op, int nOperands) {
  depth_ -= nOperands - 1;
  target_.program_.push_back({op, 0.0});
}

void ExpressionCompiler::ApplySigns(std::string const& signs) {
  for (char const sign : signs) {
    if (sign == '-') Apply(Op::Negate, 1);
  }
}

void ExpressionCompiler::operator()(tree::Sum const& sum) {
  (*this)(sum.first);
  for (tree::Term const& term : sum.rest) {
    (*this)(term.operand);
    Apply(term.op == '+' ? Op::Add : Op::Subtract, 2);
  }
}

void ExpressionCompiler::operator()(tree::Product const& product) {
  (*this)(product.first);
  for (tree::Factor const& factor : product.rest) {
    (*this)(factor.operand);
    Apply(factor.op == '*' ? Op::Multiply : Op::Divide, 2);
  }
}

void ExpressionCompiler::operator()(tree::Power const& power) {
  Operand(power.base.operand);
  for (tree::Signed const& exponent : power.exponents) Operand(exponent.operand);
  // Right-associative: the last exponent takes its signs, becomes the exponent of the one before it, and so on.
  for (auto exponent = power.exponents.rbegin(); exponent != power.exponents.rend(); ++exponent) {
    ApplySigns(exponent->signs);
    Apply(Op::Pow, 2);
  }
  ApplySigns(power.base.signs);
}

void ExpressionCompiler::operator()(tree::Text const& number) {
  std::string const digits(number.begin(), number.end());
  double value = 0.0;
  auto const result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (result.ec != std::errc()) FailAt(target_.text_, number.begin(), "the number is too large or too small");
  Push(Op::Number, value, number.begin());
}

void ExpressionCompiler::operator()(tree::Name const& name) {
  std::string const word(name.name.begin(), name.name.end());
  auto const function = Functions().find(word);
  if (function != Functions().end()) {
    Call(name, function->second);
  } else {
    VariableOrConstant(name);
  }
}

void ExpressionCompiler::VariableOrConstant(tree::Name const& name) {
  constexpr double kPi = 3.14159265358979323846;
  constexpr double kE = 2.71828182845904523536;
  static std::map<std::string, Expression::Instruction> const names = {{"x", {Op::X, 0.0}},
                                                                       {"y", {Op::Y, 0.0}},
                                                                       {"z", {Op::Z, 0.0}},
                                                                       {"pi", {Op::Number, kPi}},
                                                                       {"e", {Op::Number, kE}}};
  std::string const word(name.name.begin(), name.name.end());
  auto const found = names.find(word);
  if (found == names.end()) {
    char const* kind = name.arguments ? "unknown function " : "unknown name ";
    FailAt(target_.text_, name.name.begin(), kind + Quoted(word));
  }
  if (name.arguments) FailAt(target_.text_, name.name.begin(), Quoted(word) + " is not a function");
  Push(found->second.op, found->second.number, name.name.begin());
}

void ExpressionCompiler::Call(tree::Name const& name, Function const& function) {
  std::string const word(name.name.begin(), name.name.end());
  int const nGiven = name.arguments ? static_cast<int>(name.arguments->size()) : 0;
  if (nGiven != function.nArguments) {
    FailAt(target_.text_, name.name.begin(),
           "function \"" + word + "\" takes " + std::to_string(function.nArguments) +
               (function.nArguments == 1 ? " argument, got " : " arguments, got ") + std::to_string(nGiven));
  }
  for (tree::Sum const& argument : *name.arguments) (*this)(argument);
  Apply(function.op, function.nArguments);
}

Expression::Expression(std::string const& text) : text_(text) {
  tree::Sum const sum = ParseExpression(text_);
  ExpressionCompiler compile(*this);
  compile(sum);
}

double Expression::Value(double x, double y, double z) const { return ValueAndGradient(x, y, z).value; }

Dual Expression::ValueAndGradient(double x, double y, double z) const {
  std::array<Dual, kStackSize + 1>
      stack;  // not initialised, which saves time: only elements that were pushed are read, from element 1 on
  Dual* top = stack.data();
  for (Instruction const& instruction : program_) {
    // A binary operator takes its right operand from `right` and replaces the left one by its result.
    Dual const* const right = top;
    switch (instruction.op) {
      // clang-format off
      case Op::Number: *++top = Constant(instruction.number); break;
      case Op::X: *++top = {x, 1.0, 0.0, 0.0}; break;
      case Op::Y: *++top = {y, 0.0, 1.0, 0.0}; break;
      case Op::Z: *++top = {z, 0.0, 0.0, 1.0}; break;
      case Op::Negate: *top = -*top; break;
      case Op::Add: --top; *top = *top + *right; break;
      case Op::Subtract: --top; *top = *top - *right; break;
      case Op::Multiply: --top; *top = *top * *right; break;
      case Op::Divide: --top; *top = *top / *right; break;
      case Op::Pow: --top; *top = Pow(*top, *right); break;
      case Op::Sin: *top = Sin(*top); break;
      case Op::Cos: *top = Cos(*top); break;
      case Op::Tan: *top = Tan(*top); break;
      case Op::Asin: *top = Asin(*top); break;
      case Op::Acos: *top = Acos(*top); break;
      case Op::Atan: *top = Atan(*top); break;
      case Op::Atan2: --top; *top = Atan2(*top, *right); break;
      case Op::Sinh: *top = Sinh(*top); break;
      case Op::Cosh: *top = Cosh(*top); break;
      case Op::Tanh: *top = Tanh(*top); break;
      case Op::Exp: *top = Exp(*top); break;
      case Op::Log: *top = Log(*top); break;
      case Op::Log10: *top = Log10(*top); break;
      case Op::Sqrt: *top = Sqrt(*top); break;
      case Op::Cbrt: *top = Cbrt(*top); break;
      case Op::Abs: *top = Abs(*top); break;
      case Op::Sign: *top = Sign(*top); break;
      case Op::Min: --top; *top = Min(*top, *right); break;
      case Op::Max: --top; *top = Max(*top, *right); break;
        // clang-format on
    }
  }
  return *top;
}

std::string FunctionNames() {
  std::string names[2];
  for (auto const& [name, function] : ExpressionCompiler::Functions()) {
    std::string& list = names[function.nArguments - 1];
    list += (list.empty() ? "" : ", ") + name;
  }
  return names[0] + " (one argument) and " + names[1] + " (two arguments)";
}

}  // namespace zyngrad
