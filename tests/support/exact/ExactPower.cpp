#include "tests/support/exact/ExactPower.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace zyn_test {
namespace {

/// A natural number of up to 640 bits; what is compared here has up to 480.
class Natural {
 public:
  explicit Natural(std::uint64_t value) {
    digits_[0] = static_cast<std::uint32_t>(value);
    digits_[1] = static_cast<std::uint32_t>(value >> 32);
  }

  friend Natural operator*(Natural const& a, Natural const& b) {
    Natural product(0);
    for (std::size_t i = 0; i < kDigits; ++i) {
      if (a.digits_[i] == 0) continue;
      std::uint64_t carry = 0;
      for (std::size_t j = 0; i + j < kDigits; ++j) {
        carry += std::uint64_t{a.digits_[i]} * b.digits_[j] + product.digits_[i + j];
        product.digits_[i + j] = static_cast<std::uint32_t>(carry);
        carry >>= 32;
      }
    }
    return product;
  }

  Natural TimesPowerOfTwo(int n) const {
    Natural factor(0);
    factor.digits_[static_cast<std::size_t>(n / 32)] = std::uint32_t{1} << (n % 32);
    return *this * factor;
  }

  /// Negative, 0 or positive as this is less, the same or more.
  int ComparedWith(Natural const& other) const {
    for (std::size_t i = kDigits; i-- > 0;) {
      if (digits_[i] != other.digits_[i]) return digits_[i] < other.digits_[i] ? -1 : 1;
    }
    return 0;
  }

 private:
  static constexpr std::size_t kDigits = 20;
  std::array<std::uint32_t, kDigits> digits_{};
};

/// natural * 2^exponent
struct Scaled {
  Natural natural;
  int exponent;

  int ComparedWith(Scaled const& other) const {
    if (exponent < other.exponent) return -other.ComparedWith(*this);
    return natural.TimesPowerOfTwo(exponent - other.exponent).ComparedWith(other.natural);
  }
};

/// x = significand * 2^exponent, with the exponent of the last digit of x.
struct Parts {
  std::uint64_t significand;
  int exponent;

  explicit Parts(double x) {
    int leading;
    std::frexp(x, &leading);
    exponent = x == 0.0 ? -1074 : std::max(leading - 53, -1074);
    significand = static_cast<std::uint64_t>(std::ldexp(x, -exponent));
  }
};

/// Half-way between y and the next number above, as if numbers had no end.
Scaled Middle(double y) {
  Parts const parts(y);
  return {Natural(2 * parts.significand + 1), parts.exponent - 1};
}

double NearestTo(Scaled const& exact, double guess) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  double y = guess;
  for (;;) {
    int const above = exact.ComparedWith(Middle(y));
    if (above > 0 || (above == 0 && Parts(y).significand % 2 == 1)) {
      if (y == std::numeric_limits<double>::max()) return kInfinity;
      y = std::nextafter(y, kInfinity);
      continue;
    }
    if (y == 0.0) return y;
    double const next = std::nextafter(y, 0.0);
    int const below = exact.ComparedWith(Middle(next));
    if (below > 0 || (below == 0 && Parts(y).significand % 2 == 0)) return y;
    y = next;
  }
}

/// Not so under valgrind, which computes with 53 digits whatever the type says.
bool LongDoubleHas64Digits() {
  long double volatile one = 1.0L, tiny = 0x1p-63L;
  return std::numeric_limits<long double>::digits >= 64 && one + tiny != one;
}

/// magnitude^n if products of 64 digits settle it, else NaN. Each of them is off by 2^-64 at most, and numbers between
/// two that round to the same number round to it, too.
double PowerByLongProducts(double magnitude, int n) {
  static bool const areLong = LongDoubleHas64Digits();
  if (!areLong) return std::numeric_limits<double>::quiet_NaN();
  auto const base = static_cast<long double>(magnitude);
  long double power = base;
  for (int i = 1; i < n; ++i) power *= base;
  long double const error = power * (0x1p-63L * static_cast<long double>(n));
  auto const low = static_cast<double>(power - error), high = static_cast<double>(power + error);
  return low == high ? low : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

double ExactPower(double x, int n) {
  if (std::isnan(x) || std::isinf(x) || x == 0.0) return std::pow(x, n);
  double const sign = x < 0.0 && n % 2 == 1 ? -1.0 : 1.0, magnitude = std::fabs(x);
  double const octaves = n * std::log2(magnitude);
  if (octaves > 1025.0) return sign * std::numeric_limits<double>::infinity();
  if (octaves < -1077.0) return sign * 0.0;

  Parts parts(magnitude);
  while (parts.significand % 2 == 0) {
    parts.significand /= 2;
    ++parts.exponent;
  }
  Scaled exact{Natural(parts.significand), n * parts.exponent};
  for (int i = 1; i < n; ++i) exact.natural = exact.natural * Natural(parts.significand);
  return sign * NearestTo(exact, std::fmin(std::pow(magnitude, n), std::numeric_limits<double>::max()));
}

double QuicklyExactPower(double x, int n) {
  double const power = PowerByLongProducts(std::fabs(x), n);
  if (!std::isfinite(power) || power == 0.0) return ExactPower(x, n);
  return x < 0.0 && n % 2 == 1 ? -power : power;
}

}  // namespace zyn_test
