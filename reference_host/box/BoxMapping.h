#pragma once

#include "reference_host/box/BoxSpec.h"
#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// Maps the points of a uniform box according to stretch and skew. With X, Y, Z = x/lx, y/ly, z/lz in 0..1:
///   y' = ly (exp(b Y) - 1) / (exp(b) - 1),  (exp(b) - 1) / b = stretch
///   x' = lx (X + skew sin(pi X) sin(2 pi Y) sin(2 pi Z))
/// Both are smooth, so that finer boxes sample the same mapping. The sides of the box stay plane.
class BoxMapping {
 public:
  explicit BoxMapping(BoxSpec const& spec);

  Point Map(Point const& uniform) const;

 private:
  Point length_;            // of the box's edges, L
  double exponent_ = 0.0;   // b; 0: y stays
  double slopeMinus1_ = 0;  // exp(b) - 1
  double skew_;
};

}  // namespace reference_host
