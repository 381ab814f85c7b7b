#include "foundation/Power.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfenv>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "foundation/Processor.h"
#include "tests/support/compare/SameBits.h"
#include "tests/support/exact/ExactPower.h"
#include "tests/support/watch/ArmedTraps.h"

// Powers against exact arithmetic, one alone and many together, with the instructions of this processor and without.

namespace zyn_test::power_test {
namespace {

using Numbers = std::vector<double>;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kUlp = std::numeric_limits<double>::epsilon();

template <int N>
Numbers Raised(Numbers x) {
  RaiseToPower<N>(x.data(), static_cast<int>(x.size()));
  return x;
}

template <int N>
Numbers RaisedPlainly(Numbers const& x) {
  processor::TakenForPlain const plain;
  return Raised<N>(x);
}

/// Each way to raise the numbers gives the exact power.
template <int N>
void ExpectExactPowers(Numbers const& x) {
  Numbers const together = Raised<N>(x), plainly = RaisedPlainly<N>(x);
  for (std::size_t i = 0; i < x.size(); ++i) {
    double const exact = ExactPower(x[i], N);
    ASSERT_TRUE(SameBits(exact, Power<N>(x[i]))) << std::hexfloat << x[i] << "^" << N;
    ASSERT_TRUE(SameBits(exact, together[i])) << std::hexfloat << x[i] << "^" << N;
    ASSERT_TRUE(SameBits(exact, plainly[i])) << std::hexfloat << x[i] << "^" << N;
  }
}

/// Numbers of either sign, with evenly distributed digits and exponents.
Numbers NumbersBetween(int lowestExponent, int highestExponent, int n) {
  std::mt19937_64 random(static_cast<unsigned>(n + highestExponent));
  std::uniform_real_distribution<double> significand(1.0, 2.0);
  std::uniform_int_distribution<int> exponent(lowestExponent, highestExponent);
  Numbers numbers;
  for (int i = 0; i < n; ++i) {
    double const x = std::ldexp(significand(random), exponent(random));
    numbers.push_back(i % 3 == 0 ? -x : x);
  }
  return numbers;
}

/// What the kernels raise: 1 - r / c of points close to each other on the scale of c, and c and c - r.
Numbers Bases(int n) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> digits(0.0, 1.0);
  Numbers numbers;
  for (int i = 0; i < n; ++i) {
    double const c = 500.0 * std::exp2(8.0 * digits(random) - 6.0), r = c * std::exp2(-12.0 * digits(random));
    numbers.push_back(i % 2 == 0 ? 1.0 - r / c : i % 4 == 1 ? c : c - r);
  }
  return numbers;
}

template <int N>
void ExpectExactPowersInRange() {
  ExpectExactPowers<N>(Bases(150000));
  ExpectExactPowers<N>(NumbersBetween(-2, 1, 50000));
  ExpectExactPowers<N>(NumbersBetween(-97, 96, 50000));
}

TEST(Power, IsTheNearestNumberForAMillionArguments) {
  ExpectExactPowersInRange<4>();
  ExpectExactPowersInRange<5>();
  ExpectExactPowersInRange<6>();
  ExpectExactPowersInRange<8>();
}

// What the plain forms of the operators take.
TEST(Power, IsThatOfTheTestsPlainForms) {
  for (Numbers const& numbers : {Bases(50000), NumbersBetween(-1074, 1023, 50000)}) {
    for (double const x : numbers) {
      for (int const n : {4, 5, 6, 8})
        ASSERT_TRUE(SameBits(ExactPower(x, n), QuicklyExactPower(x, n))) << std::hexfloat << x << "^" << n;
    }
  }
}

// All odd numbers whose power has 54 digits, the last of which is odd, too.
template <int N>
void ExpectExactPowersHalfWay() {
  Numbers numbers;
  for (double x = 1.0; x < 16384.0; x += 2.0) {
    double const octaves = N * std::log2(x);
    if (octaves < 53.0 || octaves > 54.0) continue;
    for (double const scale : {1.0, -0.5, 0x1p-90, 0x1p60}) numbers.push_back(scale * x);
  }
  ASSERT_GE(numbers.size(), 16U);
  ExpectExactPowers<N>(numbers);
}

TEST(Power, HalfWayBetweenTwoNumbersIsTheEvenOne) {
  ExpectExactPowersHalfWay<4>();
  ExpectExactPowersHalfWay<5>();
  ExpectExactPowersHalfWay<6>();
  ExpectExactPowersHalfWay<8>();
  EXPECT_EQ(std::pow(511.0, 6.0), Power<6>(511.0)) << "1 - r / c with r / c = 1 / 512 and such are plausible";
}

// Powers from below half of the smallest number to those that just have all digits, and around the largest number.
template <int N>
void ExpectExactPowersAtTheEnds() {
  ExpectExactPowers<N>(NumbersBetween(-1080 / N - 1, -1018 / N, 5000));
  ExpectExactPowers<N>(NumbersBetween(1018 / N, 1024 / N, 5000));
  ExpectExactPowers<N>(NumbersBetween(-1074, 1023, 5000));
  Numbers edges;
  for (double const power :
       {kSmallest / 2, kSmallest, 1.5 * kSmallest, 2.5 * kSmallest, 0x1p-1022, kLargest}) {
    double const root = power == kSmallest / 2 ? std::exp2(-1075.0 / N) : std::pow(power, 1.0 / N);
    for (double below = root, above = root; edges.size() % 100 != 99;) {
      edges.push_back(below = std::nextafter(below, 0.0));
      edges.push_back(above = std::nextafter(above, 2.0 * root));
      edges.push_back(-above);
    }
    edges.push_back(root);
  }
  ExpectExactPowers<N>(edges);
}

TEST(Power, OfNumbersWithPowersOutOfRangeLosesDigitsOrIsInfinite) {
  ExpectExactPowersAtTheEnds<4>();
  ExpectExactPowersAtTheEnds<5>();
  ExpectExactPowersAtTheEnds<6>();
  ExpectExactPowersAtTheEnds<8>();
}

Numbers const& SpecialNumbers() {
  static Numbers const numbers = {0.0,
                                  -0.0,
                                  1.0,
                                  -1.0,
                                  2.0,
                                  -0.5,
                                  1.0 + kUlp,
                                  1.0 - kUlp / 2,
                                  -1.0 - kUlp,
                                  kSmallest,
                                  -kSmallest,
                                  kLargest,
                                  -kLargest,
                                  kInfinity,
                                  -kInfinity,
                                  0x1p-1022,
                                  0x1p-96,
                                  0x1p96,
                                  std::nextafter(0x1p-96, 0.0),
                                  std::nextafter(0x1p96, 0.0)};
  return numbers;
}

template <int N>
void ExpectSpecialPowers() {
  ExpectExactPowers<N>(SpecialNumbers());
  // For these, too, pow rounds to the nearest number.
  for (double const x : SpecialNumbers()) EXPECT_TRUE(SameBits(std::pow(x, N), Power<N>(x))) << x << "^" << N;
  EXPECT_TRUE(std::isnan(Power<N>(kNaN)));
  EXPECT_TRUE(std::isnan(Power<N>(-kNaN)));
}

TEST(Power, OfZerosInfinitiesAndOtherSpecialNumbersIsThatOfTheStandardLibrary) {
  ExpectSpecialPowers<4>();
  ExpectSpecialPowers<5>();
  ExpectSpecialPowers<6>();
  ExpectSpecialPowers<8>();
}

template <int N>
void ExpectOneUlpFromPow() {
  for (double const x : Bases(20000)) {
    double const power = Power<N>(x), ofLibrary = std::pow(x, N);
    EXPECT_TRUE(power == ofLibrary || std::nextafter(power, ofLibrary) == ofLibrary) << std::hexfloat << x;
  }
}

TEST(Power, IsAtMostOneUlpFromThatOfTheStandardLibrary) {
  ExpectOneUlpFromPow<4>();
  ExpectOneUlpFromPow<5>();
  ExpectOneUlpFromPow<6>();
  ExpectOneUlpFromPow<8>();
}

// A number that has to be taken alone, at each place among one to thirteen.
TEST(Power, OfManyNumbersDoesNotDependOnTheirNeighbours) {
  Numbers const ordinary = NumbersBetween(-1, 0, 13);
  for (double const odd : {0.0, -0.0, 511.0 / 512.0, kSmallest, kLargest, kInfinity, kNaN}) {
    for (std::size_t n = 0; n <= ordinary.size(); ++n) {
      for (std::size_t at = 0; at < n; ++at) {
        Numbers x(ordinary.begin(), ordinary.begin() + static_cast<std::ptrdiff_t>(n));
        x[at] = odd;
        Numbers const raised = Raised<6>(x), plainly = RaisedPlainly<6>(x);
        for (std::size_t i = 0; i < n; ++i) {
          double const alone = Power<6>(x[i]);
          ASSERT_TRUE(SameBits(alone, raised[i]) || std::isnan(alone)) << odd << " at " << at << " of " << n;
          ASSERT_TRUE(SameBits(alone, plainly[i]) || std::isnan(alone)) << odd << " at " << at << " of " << n;
          ASSERT_EQ(std::isnan(alone), std::isnan(raised[i]) && std::isnan(plainly[i]));
        }
      }
    }
  }
}

// ------------------------------------------------------------------------------------------------ exceptions

constexpr int kTelling = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW | FE_UNDERFLOW;

template <typename Computation>
int ExceptionsOf(Computation const& compute) {
  std::feclearexcept(FE_ALL_EXCEPT);
  double const volatile result = compute();
  static_cast<void>(result);
  return std::fetestexcept(kTelling);
}

template <int N>
void ExpectExceptionsOfPow() {
  Numbers numbers = SpecialNumbers();
  numbers.push_back(kNaN);
  for (int const exponent : {-1080, -1074, -1060, -1023, -1020, 1020, 1023}) {
    double const root = std::exp2(static_cast<double>(exponent) / N);
    for (double const factor : {0.99, 1.0 - kUlp, 1.0, 1.0 + kUlp, 1.01, 1.2})
      numbers.push_back(factor * root);
  }
  for (double const x : numbers) {
    double const volatile base = x;
    int expected = ExceptionsOf([&] { return std::pow(base, static_cast<double>(N)); });
    // C libraries may report that digits are lost for a power of two, of which no digit is lost.
    int ignored;
    if (std::fabs(std::frexp(x, &ignored)) == 0.5 && Power<N>(x) != 0.0) expected &= ~FE_UNDERFLOW;
    EXPECT_EQ(expected, ExceptionsOf([&] { return Power<N>(base); })) << std::hexfloat << x << "^" << N;
    Numbers four = {0.5, base, 0.25, 0.125};
    EXPECT_EQ(expected, ExceptionsOf([&] { return Raised<N>(four)[1]; })) << std::hexfloat << x << "^" << N;
    EXPECT_EQ(expected, ExceptionsOf([&] { return RaisedPlainly<N>(four)[1]; }))
        << std::hexfloat << x << "^" << N;
  }
}

TEST(Power, RaisesTheExceptionsOfItsResult) {
  ExpectExceptionsOfPow<4>();
  ExpectExceptionsOfPow<5>();
  ExpectExceptionsOfPow<6>();
  ExpectExceptionsOfPow<8>();
}

TEST(Power, SetsOffNoTrapsWhereItIsANumber) {
  Numbers const x = {0.5, 0.0, kNaN, kInfinity, kSmallest, -kInfinity, 0x1p-1022, -0.0, 1e-60, 1e30, 511.0};
  ArmedTraps const armed;
  double volatile sum = 0.0;
  for (double const power : Raised<6>(x)) sum = power;
  for (double const power : RaisedPlainly<6>(x)) sum = power;
  for (double const base : x) sum = Power<6>(base);
  EXPECT_EQ(std::pow(511.0, 6.0), sum);
  EXPECT_TRUE(armed.StillArmed());
}

}  // namespace
}  // namespace zyn_test::power_test
