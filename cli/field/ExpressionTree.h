#pragma once

#include <boost/fusion/include/adapt_struct.hpp>
#include <boost/optional.hpp>
#include <boost/range/iterator_range.hpp>
#include <boost/spirit/home/x3/support/ast/variant.hpp>
#include <string>
#include <vector>

/// The parser's result. Chains of equal precedence are lists, so that the tree is only as deep as the brackets are
/// nested. Texts point into the parsed string, which gives their column.
namespace zyngrad::tree {

namespace x3 = boost::spirit::x3;
using Text = boost::iterator_range<std::string::const_iterator>;

struct Name;
struct Sum;

/// A number, a name (with arguments: a function) or a sum in brackets.
struct Primary : x3::variant<Text, x3::forward_ast<Name>, x3::forward_ast<Sum>> {
  using base_type::base_type;
  using base_type::operator=;
};

struct Signed {
  std::string signs;  ///< any number of '+' and '-'
  Primary operand;
};

/// base ^ exponents[0] ^ exponents[1] ..., right-associative. A sign applies to everything to its right.
struct Power {
  Signed base;
  std::vector<Signed> exponents;
};

struct Factor {
  char op;  ///< '*' or '/'
  Power operand;
};

struct Product {
  Power first;
  std::vector<Factor> rest;
};

struct Term {
  char op;  ///< '+' or '-'
  Product operand;
};

struct Sum {
  Product first;
  std::vector<Term> rest;
};

struct Name {
  Text name;
  boost::optional<std::vector<Sum>> arguments;  ///< none for a variable or constant
};

}  // namespace zyngrad::tree

BOOST_FUSION_ADAPT_STRUCT(zyngrad::tree::Signed, signs, operand)
BOOST_FUSION_ADAPT_STRUCT(zyngrad::tree::Power, base, exponents)
BOOST_FUSION_ADAPT_STRUCT(zyngrad::tree::Factor, op, operand)
BOOST_FUSION_ADAPT_STRUCT(zyngrad::tree::Product, first, rest)
BOOST_FUSION_ADAPT_STRUCT(zyngrad::tree::Term, op, operand)
BOOST_FUSION_ADAPT_STRUCT(zyngrad::tree::Sum, first, rest)
BOOST_FUSION_ADAPT_STRUCT(zyngrad::tree::Name, name, arguments)
