#pragma once

#include "foundation/DQKernel.h"
#include "foundation/DQVector.h"

/// The kernel of the virtual nodes: the Wendland C2 function
///   kernel(s) = (1 - s)^4 (4 s + 1),   s = r / c,
/// with the support radius c = span * h, h a length measured on the stencil.  @cite wendland1995
///
/// As in InterpolationDQKernel, nothing tests for the support and nothing guards the division: h = 0 gives NaN.
class FaceC2Kernel {
 public:
  FaceC2Kernel(double span, double h) : c_(span * h) {}

  /// The offset whose length is the kernel's argument.
  template <typename Number>
  DQVectorOf<Number> Scaled(DQVectorOf<Number> const& offset) const {
    return offset;
  }

  /// kernel(r / c), r the length of an offset.
  template <typename Number>
  Number Value(Number r) const {
    Number const s = r / c_;
    return LibraryPowers::Power<4>(1.0 - s) * (4.0 * s + 1.0);
  }

 private:
  double c_;
};
