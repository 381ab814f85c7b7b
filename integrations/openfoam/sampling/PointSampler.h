#pragma once

#include <memory>
#include <vector>

#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "sampling/RadialBasisSettings.h"
#include "sampling/SamplingMesh.h"

namespace Foam {
namespace zyn {

/// Values and gradients of fields at points of this process, each from the cells around it.
class PointSampler {
 public:
  /// What the cells beyond the boundary contribute. Cells beyond coupled patches always do.
  enum class Boundary { kIgnored, kUsed };

  /// @param mesh    borrowed; must outlive the object
  /// @param points  of this process; each should lie in one of its cells
  PointSampler(SamplingMesh& mesh, UList<point> const& points, RadialBasisSettings const& settings,
               Boundary boundary);

  /// Values of a component of the field that `mesh` was filled with, one for each point.
  void Sample(direction component);
  double const* values() const { return &values_[0][1]; }
  /// @param axis  0, 1, 2
  double const* slopes(int axis) const { return &values_[1 + axis][1]; }

  /// How far the sum of a point's weights is from 1. Infinite if it is not a number.
  double ErrorOfOne(int i) const;

 private:
  SamplingMesh& mesh_;
  LentSettings settings_;
  int const nPoints_;
  std::vector<double> x_, y_, z_, values_[4];  // [1..nPoints_]
  CZynIBRBFInternalObject operator_;
};

}  // namespace zyn
}  // namespace Foam
