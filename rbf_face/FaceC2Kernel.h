#pragma once

#include "foundation/DQVector.h"
#include "foundation/Power.h"

/// The kernel of the virtual nodes: the Wendland C2 function
///   kernel(s) = (1 - s)^4 (4 s + 1),   s = r / c,
/// with the support radius c = span * h, h a length measured on the stencil.  @cite wendland1995
///
/// As in the kernels of DQKernel.h, nothing tests for the support, nothing guards the division (h = 0 gives NaN), and the
/// power is rounded once.
class FaceC2Kernel {
 public:
  FaceC2Kernel(double span, double h) : c_(span * h) {}

  /// The offset whose length is the kernel's argument.
  template <typename Number>
  DQVectorOf<Number> Scaled(DQVectorOf<Number> const& offset) const {
    return offset;
  }

  static constexpr int kValueExponent = 4;

  template <typename Number>
  Number ValueBase(Number r) const {
    return 1.0 - r / c_;
  }

  /// kernel(r / c), r the length of an offset. @param power  of ValueBase(r)
  template <typename Number>
  Number Value(Number r, Number power) const {
    return power * (4.0 * (r / c_) + 1.0);
  }

  double Value(double r) const { return Value(r, Power<kValueExponent>(ValueBase(r))); }

 private:
  double c_;
};
