#include "cli/field/ExpressionParser.h"

#include <boost/spirit/home/x3.hpp>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace grammar {

namespace x3 = boost::spirit::x3;
using x3::ascii::alnum;
using x3::ascii::alpha;
using x3::ascii::digit;

// Rules are named as in a grammar; the library's macro appends _def to the names.
// NOLINTBEGIN(readability-identifier-naming)
x3::rule<class SumRule, tree::Sum> const sum = "operand";
x3::rule<class PrimaryRule, tree::Primary> const primary = "operand";
x3::rule<class SignedRule, tree::Signed> const signedOperand = "operand";
x3::rule<class PowerRule, tree::Power> const power = "operand";
x3::rule<class ProductRule, tree::Product> const product = "operand";
x3::rule<class NameRule, tree::Name> const name = "a name";

// Matches the digits only; ExpressionCompiler converts them with correct rounding.
auto const tenPower = x3::char_("eE") >> -x3::char_("+-") >> +digit;
auto const number = x3::rule<class NumberRule, tree::Text>{"a number"} =
    x3::raw[x3::lexeme[((+digit >> -('.' >> *digit)) | ('.' >> +digit)) >> -tenPower]];
auto const identifier = x3::rule<class IdentifierRule, tree::Text>{"a name"} =
    x3::raw[x3::lexeme[(alpha | '_') >> *(alnum | '_')]];

auto const signs = x3::rule<class SignsRule, std::string>{"signs"} = +x3::char_("+-");

// An operand must follow an operator or an opening bracket: '>' reports an error at that place if there is none.
auto const arguments = x3::rule<class ArgumentsRule, std::vector<tree::Sum>>{
    "arguments"} = '(' > sum > *(',' > sum) > ')';
auto const name_def = identifier >> -arguments;
auto const primary_def = number | name | ('(' > sum > ')');
auto const signedOperand_def = (signs > primary) | (x3::attr(std::string()) >> primary);
auto const exponents = x3::rule<class ExponentsRule, std::vector<tree::Signed>>{"exponents"} =
    *('^' > signedOperand);
auto const power_def = signedOperand >> exponents;
auto const factor = x3::rule<class FactorRule, tree::Factor>{"a factor"} = x3::char_("*/") > power;
auto const product_def = power >> *factor;
auto const term = x3::rule<class TermRule, tree::Term>{"a term"} = x3::char_("+-") > product;
auto const sum_def = product >> *term;

BOOST_SPIRIT_DEFINE(sum, product, power, signedOperand, primary, name)
// NOLINTEND(readability-identifier-naming)

}  // namespace grammar

namespace {

/// The grammar descends one level per bracket. Counting the brackets before parsing limits its stack for any input.
void CheckNesting(std::string const& text) {
  constexpr int kDeepest = 100;
  int depth = 0;
  for (auto at = text.begin(); at != text.end(); ++at) {
    if (*at == '(' && ++depth > kDeepest) {
      FailAt(text, at, "brackets are nested deeper than " + std::to_string(kDeepest));
    }
    if (*at == ')') --depth;
  }
}

/// What the parser expected: a bracket, or an operand, with which every other rule begins.
std::string Wanted(std::string const& which) {
  return which.find(')') != std::string::npos ? "')'" : "a number, a name or '('";
}

}  // namespace

void FailAt(std::string const& text, std::string::const_iterator at, std::string const& what) {
  while (at != text.end() && (*at == ' ' || *at == '\t')) ++at;
  throw UsageError("expression " + Quoted(text) + ": column " + std::to_string(at - text.begin() + 1) + ": " +
                   what);
}

tree::Sum ParseExpression(std::string const& text) {
  CheckNesting(text);
  tree::Sum result;
  auto at = text.begin();
  try {
    auto const whole = boost::spirit::x3::eps > grammar::sum;
    boost::spirit::x3::phrase_parse(at, text.end(), whole, boost::spirit::x3::ascii::blank, result);
  } catch (boost::spirit::x3::expectation_failure<std::string::const_iterator> const& failure) {
    FailAt(text, failure.where(), "expected " + Wanted(failure.which()));
  }
  if (at != text.end()) FailAt(text, at, "expected an operator or the end of the formula");
  return result;
}

}  // namespace zyngrad
