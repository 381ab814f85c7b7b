#include "reference_host/box/BoxMapping.h"

#include <algorithm>
#include <cmath>

namespace reference_host {
namespace {

constexpr double kPi = 3.14159265358979323846;

/// Solves (exp(b) - 1) / b = stretch for b > 0. The left side increases from 1, so bisection finds b.
double ExponentOf(double stretch) {
  double low = 0.0, high = 1.0;
  auto const isBelow = [stretch](double b) { return std::expm1(b) / b < stretch; };
  while (isBelow(high)) high *= 2.0;
  for (double middle = 0.5 * high; middle > low && middle < high; middle = 0.5 * (low + high))
    (isBelow(middle) ? low : high) = middle;
  return high;
}

}  // namespace

BoxMapping::BoxMapping(BoxSpec const& spec) : skew_(spec.skew) {
  double const longest = std::max({spec.nx, spec.ny, spec.nz});
  length_ = {spec.nx / longest, spec.ny / longest, spec.nz / longest};
  if (spec.stretch > 1.0) exponent_ = ExponentOf(spec.stretch);
  slopeMinus1_ = std::expm1(exponent_);
}

Point BoxMapping::Map(Point const& uniform) const {
  Point point = uniform;
  double const y = uniform[1] / length_[1];
  if (exponent_ > 0.0) point[1] = length_[1] * (std::expm1(exponent_ * y) / slopeMinus1_);
  double const x = uniform[0] / length_[0], z = uniform[2] / length_[2];
  // The sines of pi and its multiples are not exactly zero.
  bool const inside = x > 0.0 && x < 1.0 && y > 0.0 && y < 1.0 && z > 0.0 && z < 1.0;
  if (skew_ > 0.0 && inside)
    point[0] = length_[0] * (x + skew_ * std::sin(kPi * x) * std::sin(2 * kPi * y) * std::sin(2 * kPi * z));
  return point;
}

}  // namespace reference_host
