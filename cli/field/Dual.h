#pragma once

#include <cmath>

namespace zyngrad {

/// A value and its derivatives with respect to x, y and z, carried through each operation by the chain rule
/// (forward automatic differentiation). The derivatives are exact up to rounding; there is no step size.
///
/// Why not boost::math::differentiation: it computes a power of two variables as exp(y * log(x)), so that x^2 has
/// no value at x <= 0, and for a gradient in three variables it also carries the mixed higher derivatives, eight
/// numbers instead of four.
struct Dual {
  double value;
  double dx, dy, dz;
};

inline Dual Constant(double value) { return {value, 0.0, 0.0, 0.0}; }

/// (f(u), f'(u) grad u). A component of grad u that is exactly 0 stays 0 even if the slope is infinite: u does not
/// depend on that coordinate, so f(u) does not either (sqrt(x) at x = 0 has d/dy = 0).
inline Dual Chain(double value, double slope, Dual const& u) {
  auto const times = [slope](double du) { return du == 0.0 ? 0.0 : slope * du; };
  return {value, times(u.dx), times(u.dy), times(u.dz)};
}

inline Dual operator-(Dual const& u) { return {-u.value, -u.dx, -u.dy, -u.dz}; }

inline Dual operator+(Dual const& u, Dual const& v) {
  return {u.value + v.value, u.dx + v.dx, u.dy + v.dy, u.dz + v.dz};
}

inline Dual operator-(Dual const& u, Dual const& v) {
  return {u.value - v.value, u.dx - v.dx, u.dy - v.dy, u.dz - v.dz};
}

/// (uv)' = u'v + uv'
inline Dual operator*(Dual const& u, Dual const& v) {
  return Chain(0.0, v.value, u) + Chain(u.value * v.value, u.value, v);
}

/// (u/v)' = (u' - (u/v) v') / v
inline Dual operator/(Dual const& u, Dual const& v) {
  double const quotient = u.value / v.value;
  return Chain(quotient, 1.0 / v.value, u - Chain(0.0, quotient, v));
}

inline Dual Sin(Dual const& u) { return Chain(std::sin(u.value), std::cos(u.value), u); }
inline Dual Cos(Dual const& u) { return Chain(std::cos(u.value), -std::sin(u.value), u); }
inline Dual Tan(Dual const& u) {
  double const t = std::tan(u.value);
  return Chain(t, 1.0 + t * t, u);
}

// 1 - u^2 is computed as a product, which avoids cancellation near |u| = 1.
inline Dual Asin(Dual const& u) {
  return Chain(std::asin(u.value), 1.0 / std::sqrt((1.0 - u.value) * (1.0 + u.value)), u);
}
inline Dual Acos(Dual const& u) {
  return Chain(std::acos(u.value), -1.0 / std::sqrt((1.0 - u.value) * (1.0 + u.value)), u);
}
inline Dual Atan(Dual const& u) { return Chain(std::atan(u.value), 1.0 / (1.0 + u.value * u.value), u); }

/// d atan2(u, v) = (v du - u dv) / (u^2 + v^2)
inline Dual Atan2(Dual const& u, Dual const& v) {
  double const r2 = u.value * u.value + v.value * v.value;
  return Chain(std::atan2(u.value, v.value), v.value / r2, u) + Chain(0.0, -u.value / r2, v);
}

inline Dual Sinh(Dual const& u) { return Chain(std::sinh(u.value), std::cosh(u.value), u); }
inline Dual Cosh(Dual const& u) { return Chain(std::cosh(u.value), std::sinh(u.value), u); }
/// tanh' = 1 / cosh^2; the form 1 - tanh^2 would lose all digits where tanh is near 1.
inline Dual Tanh(Dual const& u) {
  double const c = std::cosh(u.value);
  return Chain(std::tanh(u.value), 1.0 / (c * c), u);
}

inline Dual Exp(Dual const& u) {
  double const value = std::exp(u.value);
  return Chain(value, value, u);
}
inline Dual Log(Dual const& u) { return Chain(std::log(u.value), 1.0 / u.value, u); }
inline Dual Log10(Dual const& u) {
  constexpr double kLn10 = 2.302585092994045684;
  return Chain(std::log10(u.value), 1.0 / (u.value * kLn10), u);
}
inline Dual Sqrt(Dual const& u) {
  double const value = std::sqrt(u.value);
  return Chain(value, 0.5 / value, u);
}
inline Dual Cbrt(Dual const& u) {
  double const value = std::cbrt(u.value);
  return Chain(value, 1.0 / (3.0 * value * value), u);
}

inline double SignOf(double value) { return value > 0.0 ? 1.0 : (value < 0.0 ? -1.0 : value); }
/// The sign is constant on either side of 0; its slope at 0 is taken as 0, too.
inline Dual Sign(Dual const& u) { return Chain(SignOf(u.value), 0.0, u); }
/// At 0 the slope of |u| is taken as 0, midway between its one-sided slopes.
inline Dual Abs(Dual const& u) { return Chain(std::fabs(u.value), SignOf(u.value), u); }

/// The smaller operand with its derivatives; the first one at a tie. NaN is passed on.
inline Dual Min(Dual const& u, Dual const& v) { return (v.value < u.value || std::isnan(v.value)) ? v : u; }
inline Dual Max(Dual const& u, Dual const& v) { return (v.value > u.value || std::isnan(v.value)) ? v : u; }

/// d(u^v) = v u^(v-1) du + u^v log(u) dv. A term whose factor is 0 is omitted, which makes the usual cases work:
/// x^2 at x <= 0 (the exponent does not vary), x^0, and 0^v for v > 0.
inline Dual Pow(Dual const& u, Dual const& v) {
  double const value = std::pow(u.value, v.value);
  double const slopeByBase = v.value == 0.0 ? 0.0 : v.value * std::pow(u.value, v.value - 1.0);
  double const slopeByExponent = (u.value == 0.0 && v.value > 0.0) ? 0.0 : value * std::log(u.value);
  return Chain(value, slopeByBase, u) + Chain(0.0, slopeByExponent, v);
}

}  // namespace zyngrad
