#pragma once

#include <cmath>

#include "foundation/DQVector.h"

/// @file
/// The kernel of the radial-basis systems: the Wendland C4 function of a scaled distance s,
///   kernel(s) = (1 - s)^6 (35 s^2 + 18 s + 3),   d kernel / d d_a = -56 d_a (1 - s)^5 (5 s + 1),
/// with d the scaled offset from the kernel's centre to the evaluation point and s = |d|.  @cite wendland1995
///
/// Nothing tests for the support: beyond s = 1 the same powers are taken. The order of the operations, factors and
/// quotients from left to right, is part of the results.

/// x^N as products in one fixed order: the half power squared, times x for an odd N. Its relative error is at most
/// (N - 1) * 2^-53. It is several times faster than std::pow, which would cost more than anything else about a small
/// system except its solution.
template <int N, typename Value>
constexpr Value IntegerPower(Value x) {
  static_assert(N >= 1, "positive powers only");
  if constexpr (N == 1) {
    return x;
  } else {
    Value const half = IntegerPower<N / 2>(x);
    if constexpr (N % 2 == 0) {
      return half * half;
    } else {
      return half * half * x;
    }
  }
}

/// Powers as fixed products.
struct ProductPowers {
  template <int N, typename Value>
  static constexpr Value Power(Value x) {
    return IntegerPower<N>(x);
  }
};

/// Powers of the standard library, rounded once or nearly so.
struct LibraryPowers {
  template <int N>
  static double Power(double x) {
    return std::pow(x, static_cast<double>(N));
  }
  template <int N>
  static TwoDoubles Power(TwoDoubles x) {
    return TwoDoubles{Power<N>(x[0]), Power<N>(x[1])};
  }
};

/// The plain form: offsets stay in units of length, and s = r / c with the support radius c = span * h, h a length
/// measured on the stencil. Gradients are with respect to the evaluation point, in units of 1/L.
///
/// Nothing guards the divisions: h = 0 gives NaN.
template <typename Powers>
class PlainDQKernelWith {
 public:
  PlainDQKernelWith(double span, double h)
      : c_(span * h), c2_(c_ * span * h), c8_(Powers::template Power<8>(c_)) {}

  /// The offset whose length is the kernel's argument.
  template <typename Number>
  DQVectorOf<Number> Scaled(DQVectorOf<Number> const& offset) const {
    return offset;
  }

  /// kernel(r / c), r the length of an offset.
  template <typename Number>
  Number Value(Number r) const {
    return Powers::template Power<6>(1.0 - r / c_) * (35.0 * r * r / c2_ + 18.0 * r / c_ + 3.0);
  }

  /// -56 d (5 r + c) (c - r)^5 / c^8, the multiplied-out form, with d the offset from the centre to the
  /// evaluation point.
  DQVector Gradient(DQVector const& d) const {
    double const r = Length(d);
    double const linear = 5.0 * r + c_;
    double const power = Powers::template Power<5>(c_ - r);
    return {-(d.x * 56.0 * linear * power / c8_), -(d.y * 56.0 * linear * power / c8_),
            -(d.z * 56.0 * linear * power / c8_)};
  }

 private:
  double c_, c2_, c8_;
};

/// The plain form of the systems of cells and of the cell operator's faces.
using PlainDQKernel = PlainDQKernelWith<ProductPowers>;

/// The plain form of the systems of faces and of free points. Their weights are defined with the powers of the
/// standard library, and the choice of powers shows in the results: with the usual spans the systems are so nearly
/// singular that the last bit of an entry changes the fifth digit of an interpolated value, and on faces the fourth.
using InterpolationDQKernel = PlainDQKernelWith<LibraryPowers>;

/// The shape-normalised form: each component a of an offset is divided by span * e_a, e_a the extent of the stencil
/// along that axis, and s is the length of the result.
///
/// Gradients are with respect to the scaled coordinates. Weights made of them give span * e_a times the derivative;
/// nothing divides that factor out, so a user of this form has to know it. Nothing guards the divisions either: an
/// extent of 0 gives NaN.
class ShapeNormalisedDQKernel {
 public:
  ShapeNormalisedDQKernel(double span, DQVector const& extent)
      : scale_{span * extent.x, span * extent.y, span * extent.z} {}

  /// The offset whose length is the kernel's argument.
  template <typename Number>
  DQVectorOf<Number> Scaled(DQVectorOf<Number> const& offset) const {
    return {offset.x / scale_.x, offset.y / scale_.y, offset.z / scale_.z};
  }

  /// kernel(s), s the length of a scaled offset.
  template <typename Number>
  Number Value(Number s) const {
    return IntegerPower<6>(1.0 - s) * (35.0 * s * s + 18.0 * s + 3.0);
  }

  /// -56 d (5 s + 1) (1 - s)^5, with d the scaled offset from the centre to the evaluation point.
  DQVector Gradient(DQVector const& d) const {
    double const s = Length(d);
    double const linear = 5.0 * s + 1.0;
    double const power = IntegerPower<5>(1.0 - s);
    return {-(d.x * 56.0 * linear * power), -(d.y * 56.0 * linear * power), -(d.z * 56.0 * linear * power)};
  }

 private:
  DQVector scale_;
};
