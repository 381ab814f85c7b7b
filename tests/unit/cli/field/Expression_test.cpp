#include "cli/field/Expression.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

using Complex = std::complex<double>;

double ValueOf(std::string const& text, double x = 0.0, double y = 0.0, double z = 0.0) {
  return Expression(text).Value(x, y, z);
}

/// The error text of a formula that must be refused.
std::string ErrorOf(std::string const& text) {
  try {
    Expression const expression(text);
  } catch (UsageError const& error) {
    return error.what();
  }
  return "no error";
}

/// A few roundings, relative to the larger of 1 and the value.
void ExpectClose(double actual, double expected, std::string const& what) {
  EXPECT_NEAR(actual, expected, 4e-15 * std::max(1.0, std::fabs(expected))) << what;
}

void ExpectGradient(std::string const& text, double x, double y, double z, double dx, double dy, double dz) {
  Dual const result = Expression(text).ValueAndGradient(x, y, z);
  ExpectClose(result.dx, dx, text + " d/dx");
  ExpectClose(result.dy, dy, text + " d/dy");
  ExpectClose(result.dz, dz, text + " d/dz");
}

TEST(Expression, ReadsNumbersAndNames) {
  EXPECT_EQ(1.0, ValueOf("1"));
  EXPECT_EQ(0.5, ValueOf(".5"));
  EXPECT_EQ(5.0, ValueOf("5."));
  EXPECT_EQ(0.002, ValueOf("2e-3"));
  EXPECT_EQ(2000.0, ValueOf("2E+3"));
  EXPECT_EQ(0.1, ValueOf("0.1"));  // correctly rounded
  EXPECT_EQ(1.7976931348623157e308, ValueOf("1.7976931348623157e308"));
  EXPECT_EQ(3.0, ValueOf("x", 3.0, 4.0, 5.0));
  EXPECT_EQ(4.0, ValueOf("y", 3.0, 4.0, 5.0));
  EXPECT_EQ(5.0, ValueOf("z", 3.0, 4.0, 5.0));
  EXPECT_EQ(ValueOf("pi"), std::acos(-1.0));
  EXPECT_EQ(ValueOf("e"), std::exp(1.0));
}

TEST(Expression, BindsProductsTighterThanSumsAndPowersTightest) {
  EXPECT_EQ(14.0, ValueOf("2+3*4"));
  EXPECT_EQ(20.0, ValueOf("(2+3)*4"));
  EXPECT_EQ(18.0, ValueOf("2*3^2"));
  EXPECT_EQ(36.0, ValueOf("(2*3)^2"));
}

TEST(Expression, GroupsSumsAndProductsFromTheLeftAndPowersFromTheRight) {
  EXPECT_EQ(3.0, ValueOf("10-4-3"));
  EXPECT_EQ(3.0, ValueOf("24/4/2"));
  EXPECT_EQ(12.0, ValueOf("24/4*2"));
  EXPECT_EQ(512.0, ValueOf("2^3^2"));
  EXPECT_EQ(64.0, ValueOf("(2^3)^2"));
}

TEST(Expression, AppliesASignAfterThePower) {
  EXPECT_EQ(-9.0, ValueOf("-x^2", 3.0));
  EXPECT_EQ(9.0, ValueOf("(-x)^2", 3.0));
  EXPECT_EQ(0.5, ValueOf("2^-1"));
  EXPECT_EQ(0.0625, ValueOf("2^-2^2"));
  EXPECT_EQ(-6.0, ValueOf("2*-3"));
  EXPECT_EQ(5.0, ValueOf("2--3"));
  EXPECT_EQ(3.0, ValueOf("-+-3"));
}

TEST(Expression, IgnoresBlanks) { EXPECT_EQ(8.0, ValueOf("\t 2 * ( x + 1 ) ", 3.0)); }

struct AnalyticCase {
  std::string text;
  std::function<Complex(Complex, Complex, Complex)> formula;
};

/// The derivative of an analytic f is Im f(x + ih) / h; with h this small it is exact to rounding. An
/// independent way to the same number.
double ComplexStep(AnalyticCase const& c, double x, double y, double z, int direction) {
  constexpr double h = 1e-200;
  Complex const step(0.0, h);
  Complex const result =
      c.formula(direction == 0 ? x + step : x, direction == 1 ? y + step : y, direction == 2 ? z + step : z);
  return result.imag() / h;
}

TEST(Expression, AgreesWithComplexStepForEveryAnalyticFunction) {
  using C = Complex;
  std::vector<AnalyticCase> const cases = {
      {"x+2*y-z", [](C x, C y, C z) { return x + 2.0 * y - z; }},
      {"x*y*z", [](C x, C y, C z) { return x * y * z; }},
      {"x/(y+z)", [](C x, C y, C z) { return x / (y + z); }},
      {"sin(x*y)", [](C x, C y, C) { return std::sin(x * y); }},
      {"cos(x-z)", [](C x, C, C z) { return std::cos(x - z); }},
      {"tan(x*z)", [](C x, C, C z) { return std::tan(x * z); }},
      {"asin(x*y)", [](C x, C y, C) { return std::asin(x * y); }},
      {"acos(x*y)", [](C x, C y, C) { return std::acos(x * y); }},
      {"atan(x/z)", [](C x, C, C z) { return std::atan(x / z); }},
      {"sinh(x+y)", [](C x, C y, C) { return std::sinh(x + y); }},
      {"cosh(x+y)", [](C x, C y, C) { return std::cosh(x + y); }},
      {"tanh(x*z)", [](C x, C, C z) { return std::tanh(x * z); }},
      {"exp(x*y)", [](C x, C y, C) { return std::exp(x * y); }},
      {"log(x+z)", [](C x, C, C z) { return std::log(x + z); }},
      {"log10(x*y)", [](C x, C y, C) { return std::log(x * y) / std::log(10.0); }},
      {"sqrt(x+y)", [](C x, C y, C) { return std::sqrt(x + y); }},
      {"cbrt(x*z)", [](C x, C, C z) { return std::exp(std::log(x * z) / 3.0); }},
      {"x^y", [](C x, C y, C) { return std::exp(y * std::log(x)); }},
      {"pow(z,x+y)", [](C x, C y, C z) { return std::exp((x + y) * std::log(z)); }},
      {"atan2(y,x)", [](C x, C y, C) { return std::atan(y / x); }},  // x > 0
      {"sin(x)*y+z^2", [](C x, C y, C z) { return std::sin(x) * y + z * z; }},
  };
  std::mt19937 random(1);
  std::uniform_real_distribution<double> place(0.1, 0.95);
  for (AnalyticCase const& c : cases) {
    Expression const expression(c.text);
    for (int repeat = 0; repeat < 20; ++repeat) {
      double const x = place(random), y = place(random), z = place(random);
      Dual const result = expression.ValueAndGradient(x, y, z);
      ExpectClose(result.value, c.formula(x, y, z).real(), c.text);
      double const slopes[3] = {result.dx, result.dy, result.dz};
      for (int k = 0; k < 3; ++k) {
        double const expected = ComplexStep(c, x, y, z, k);
        // Both sides round; near the ends of asin, acos the slope magnifies it.
        EXPECT_NEAR(slopes[k], expected, 1e-13 * std::max(1.0, std::fabs(expected)))
            << c.text << " direction " << k;
      }
    }
  }
}

TEST(Expression, HasOneSidedSlopesForTheFunctionsWithKinks) {
  ExpectGradient("abs(x)*y", -2.0, 3.0, 0.0, -3.0, 2.0, 0.0);
  ExpectGradient("sign(x)*y", -2.0, 3.0, 0.0, 0.0, -1.0, 0.0);
  ExpectGradient("min(x,y)", 1.0, 2.0, 0.0, 1.0, 0.0, 0.0);
  ExpectGradient("max(x,y)", 1.0, 2.0, 0.0, 0.0, 1.0, 0.0);
  ExpectGradient("min(x,y)", 1.0, 1.0, 0.0, 1.0, 0.0, 0.0);  // a tie: the first
  ExpectGradient("abs(x)", 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
}

TEST(Expression, DerivesAtan2InAllQuadrants) {
  for (double const x : {-1.5, 1.5}) {
    for (double const y : {-0.5, 0.5}) {
      double const r2 = x * x + y * y;
      ExpectGradient("atan2(y,x)", x, y, 0.0, -y / r2, x / r2, 0.0);
    }
  }
}

TEST(Expression, DerivesPowersOfNegativeNumbersAndZero) {
  ExpectGradient("x^2", -3.0, 0.0, 0.0, -6.0, 0.0, 0.0);
  ExpectGradient("x^2", 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
  ExpectGradient("x^3", -2.0, 0.0, 0.0, 12.0, 0.0, 0.0);
  ExpectGradient("x^1", 0.0, 0.0, 0.0, 1.0, 0.0, 0.0);
  ExpectGradient("x^0", 0.0, 0.0, 0.0, 0.0, 0.0, 0.0);
  ExpectGradient("x^-1", -2.0, 0.0, 0.0, -0.25, 0.0, 0.0);
  ExpectGradient("0^y", 0.0, 2.0, 0.0, 0.0, 0.0, 0.0);
}

TEST(Expression, KeepsZeroSlopesWhereAnotherSlopeIsInfinite) {
  Dual const result = Expression("sqrt(x)+y").ValueAndGradient(0.0, 1.0, 2.0);
  EXPECT_TRUE(std::isinf(result.dx));
  EXPECT_EQ(1.0, result.dy);
  EXPECT_EQ(0.0, result.dz);
}

TEST(Expression, KeepsTanhSlopeAccurateFarOut) {
  double const c = std::cosh(18.0);
  EXPECT_DOUBLE_EQ(Expression("tanh(x)").ValueAndGradient(18.0, 0.0, 0.0).dx, 1.0 / (c * c));
}

TEST(Expression, ReportsTheColumnOfSyntaxErrors) {
  EXPECT_EQ("expression \"sin(x\": column 6: expected ')'", ErrorOf("sin(x"));
  EXPECT_EQ("expression \"(x+y)*(z\": column 9: expected ')'", ErrorOf("(x+y)*(z"));
  EXPECT_EQ("expression \"x+\": column 3: expected a number, a name or '('", ErrorOf("x+"));
  EXPECT_EQ("expression \"x + * y\": column 5: expected a number, a name or '('", ErrorOf("x + * y"));
  EXPECT_EQ("expression \"\": column 1: expected a number, a name or '('", ErrorOf(""));
  EXPECT_EQ("expression \"x)\": column 2: expected an operator or the end of the formula", ErrorOf("x)"));
  EXPECT_EQ("expression \"2 3\": column 3: expected an operator or the end of the formula", ErrorOf("2 3"));
  EXPECT_EQ("expression \"2x\": column 2: expected an operator or the end of the formula", ErrorOf("2x"));
  EXPECT_EQ("expression \"sin(x,)\": column 7: expected a number, a name or '('", ErrorOf("sin(x,)"));
  EXPECT_EQ("expression \"x^\": column 3: expected a number, a name or '('", ErrorOf("x^"));
  EXPECT_EQ("expression \"1e999\": column 1: the number is too large or too small", ErrorOf("1e999"));
}

TEST(Expression, ReportsTheColumnOfUnknownNames) {
  EXPECT_EQ("expression \"x+u\": column 3: unknown name \"u\"", ErrorOf("x+u"));
  EXPECT_EQ("expression \"2*sine(x)\": column 3: unknown function \"sine\"", ErrorOf("2*sine(x)"));
  EXPECT_EQ("expression \"x(1)\": column 1: \"x\" is not a function", ErrorOf("x(1)"));
  EXPECT_EQ("expression \"sin\": column 1: function \"sin\" takes 1 argument, got 0", ErrorOf("sin"));
  EXPECT_EQ("expression \"y*atan2(x)\": column 3: function \"atan2\" takes 2 arguments, got 1",
            ErrorOf("y*atan2(x)"));
}

TEST(Expression, LimitsNestingInsteadOfTheStack) {
  auto const nested = [](int depth) { return std::string(depth, '(') + 'x' + std::string(depth, ')'); };
  EXPECT_EQ(2.0, ValueOf(nested(100), 2.0));
  EXPECT_NE(ErrorOf(nested(101)).find("column 101: brackets are nested deeper than 100"), std::string::npos);
  EXPECT_NE(ErrorOf(std::string(1000000, '(')).find("nested"), std::string::npos);
}

TEST(Expression, EvaluatesLongChains) {
  std::string sum = "x", signs(100001, '-');
  for (int k = 0; k < 100000; ++k) sum += "+x";
  EXPECT_EQ(100001.0, ValueOf(sum, 1.0));
  EXPECT_EQ(-1.0, ValueOf(signs + "x", 1.0));
  std::string powers = "x";
  for (int k = 0; k < 400; ++k) powers += "^x";
  EXPECT_EQ(1.0, ValueOf(powers, 1.0));
  for (int k = 0; k < 200; ++k) powers += "^x";
  EXPECT_NE(ErrorOf(powers).find("more than 512 operands"), std::string::npos);
}

TEST(Expression, EndsOnAnyBytesWithAValueOrOneLine) {
  std::string const letters = "xyze0123456789.+-*/^(),  sincotanlgqrtabmp\n\t\r\xff\x80\xc3\x00";
  std::mt19937 random(7);
  std::uniform_int_distribution<std::size_t> letter(0, letters.size() - 1), length(0, 40);
  std::uniform_int_distribution<int> anyByte(0, 255);
  int nValid = 0;
  for (int round = 0; round < 20000; ++round) {
    std::string text(length(random), ' ');
    for (char& c : text) c = round % 2 == 0 ? letters[letter(random)] : static_cast<char>(anyByte(random));
    try {
      Expression(text).ValueAndGradient(0.3, 0.4, 0.5);
      ++nValid;
    } catch (UsageError const& error) {
      std::string const what = error.what();
      EXPECT_EQ(0U, what.rfind("expression \"", 0));
      EXPECT_EQ(what.find('\n'), std::string::npos);
    }
  }
  EXPECT_GT(nValid, 0);
}

}  // namespace
}  // namespace zyngrad
