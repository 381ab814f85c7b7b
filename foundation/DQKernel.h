#pragma once

#include "foundation/DQVector.h"
#include "foundation/Power.h"

/// @file
/// The kernel of the radial-basis systems: the Wendland C4 function of a scaled distance s,
///   kernel(s) = (1 - s)^6 (35 s^2 + 18 s + 3),   d kernel / d d_a = -56 d_a (1 - s)^5 (5 s + 1),
/// with d the scaled offset from the kernel's centre to the evaluation point and s = |d|.  @cite wendland1995
///
/// Nothing tests for the support: beyond s = 1 the same powers are taken. Powers are rounded once. The order of all other
/// operations, factors and quotients from left to right, is part of the results.
///
/// Most of the work is in the powers, which are fastest for many numbers at once. So a form of the kernel tells what is to
/// be raised to which power, and makes a value or a gradient of the result.

/// The plain form: offsets stay in units of length, and s = r / c with the support radius c = span * h, h a length
/// measured on the stencil. Gradients are with respect to the evaluation point, in units of 1/L.
///
/// Nothing guards the divisions: h = 0 gives NaN.
class PlainDQKernel {
 public:
  PlainDQKernel(double span, double h) : c_(span * h), c2_(c_ * span * h), c8_(Power<8>(c_)) {}

  /// The offset whose length is the kernel's argument.
  template <typename Number>
  DQVectorOf<Number> Scaled(DQVectorOf<Number> const& offset) const {
    return offset;
  }

  static constexpr int kValueExponent = 6;

  template <typename Number>
  Number ValueBase(Number r) const {
    return 1.0 - r / c_;
  }

  /// kernel(r / c), r the length of an offset. @param power  of ValueBase(r)
  template <typename Number>
  Number Value(Number r, Number power) const {
    return power * (35.0 * r * r / c2_ + 18.0 * r / c_ + 3.0);
  }

  double Value(double r) const { return Value(r, Power<kValueExponent>(ValueBase(r))); }

  static constexpr int kGradientExponent = 5;

  double GradientBase(double r) const { return c_ - r; }

  /// -56 d (5 r + c) (c - r)^5 / c^8, the multiplied-out form, with d the offset from the centre to the
  /// evaluation point and r its length. @param power  of GradientBase(r)
  DQVector Gradient(DQVector const& d, double r, double power) const {
    double const linear = 5.0 * r + c_;
    return {-(d.x * 56.0 * linear * power / c8_), -(d.y * 56.0 * linear * power / c8_),
            -(d.z * 56.0 * linear * power / c8_)};
  }

  DQVector Gradient(DQVector const& d) const {
    double const r = Length(d);
    return Gradient(d, r, Power<kGradientExponent>(GradientBase(r)));
  }

 private:
  double c_, c2_, c8_;
};

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

  static constexpr int kValueExponent = 6;

  template <typename Number>
  Number ValueBase(Number s) const {
    return 1.0 - s;
  }

  /// kernel(s), s the length of a scaled offset. @param power  of ValueBase(s)
  template <typename Number>
  Number Value(Number s, Number power) const {
    return power * (35.0 * s * s + 18.0 * s + 3.0);
  }

  double Value(double s) const { return Value(s, Power<kValueExponent>(ValueBase(s))); }

  static constexpr int kGradientExponent = 5;

  double GradientBase(double s) const { return 1.0 - s; }

  /// -56 d (5 s + 1) (1 - s)^5, with d the scaled offset from the centre to the evaluation point and s its length.
  /// @param power  of GradientBase(s)
  DQVector Gradient(DQVector const& d, double s, double power) const {
    double const linear = 5.0 * s + 1.0;
    return {-(d.x * 56.0 * linear * power), -(d.y * 56.0 * linear * power), -(d.z * 56.0 * linear * power)};
  }

  DQVector Gradient(DQVector const& d) const {
    double const s = Length(d);
    return Gradient(d, s, Power<kGradientExponent>(GradientBase(s)));
  }

 private:
  DQVector scale_;
};
