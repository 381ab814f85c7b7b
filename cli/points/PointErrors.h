#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cli/field/Expression.h"
#include "cli/points/PointRun.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"

namespace zyngrad {

/// The formula at points, one entry per point.
struct ExactAtPoints {
  std::vector<double> value;       ///< U
  std::vector<double> gx, gy, gz;  ///< U/L
};

/// Throws UsageError that names the point where value or gradient is not finite.
ExactAtPoints ExactValuesAt(PointSet const& points, Expression const& expression);

/// Interpolated minus exact, one entry per point.
struct ErrorsAtPoints {
  std::vector<double> value;     ///< difference of the values, U
  std::vector<double> gradient;  ///< Euclidean length of the difference of the gradients, U/L
};

ErrorsAtPoints ErrorsAt(PointValues const& values, ExactAtPoints const& exact);

/// Norms over all points, which have equal weights. All are NaN if there are no points.
struct PointNorms {
  double l1 = 0.0;              ///< mean of |e|
  double l2 = 0.0;              ///< square root of the mean of e^2
  double relativeL2 = 0.0;      ///< l2 over the l2 of the exact values; NaN if that is 0
  double max = 0.0;             ///< largest |e| among the finite ones
  std::int64_t maxPoint = 0;    ///< 1-based, the first among equals; 0 if there is none
  std::int64_t nNotFinite = 0;  ///< infinite or NaN; l1 and l2 are then not finite
};

PointNorms ValueNorms(ErrorsAtPoints const& errors, ExactAtPoints const& exact);
PointNorms GradientNorms(ErrorsAtPoints const& errors, ExactAtPoints const& exact);

/// A point whose distance from the nearest usable cell exceeds this many mean distances between neighbouring
/// cells lies outside their hull.
constexpr double kFarDistances = 2.0;

/// A gradient in space needs at least four values.
constexpr std::int64_t kLeastMembers = 4;

/// What may be wrong with the result at a point.
enum PointFlag { kIsFar = 1, kHasFewCells = 2, kIsNotFinite = 4, kIsOutside = 8 };
constexpr std::size_t kPointFlags = 4;

/// The points that have a certain flag.
struct FlaggedPoints {
  PointFlag flag = kIsFar;
  std::int64_t count = 0;
  std::vector<std::size_t> worst;  ///< at most five points, from 0, the worst first
};

/// [point] sum of PointFlags.
/// @param[in] aspectRatios  as AspectRatiosAt returns them, 0 outside the mesh; empty: no point is outside
std::vector<std::int32_t> FlagPoints(PointValues const& values, std::vector<PointOwner> const& owners,
                                     double meanDistance, std::vector<double> const& aspectRatios = {});

/// One entry for each flag. The worst points are the farthest ones, those with the fewest members, and the first
/// ones whose row is not finite; among equals, the first.
std::array<FlaggedPoints, kPointFlags> CountFlags(std::vector<std::int32_t> const& flags,
                                                  PointValues const& values,
                                                  std::vector<PointOwner> const& owners);

}  // namespace zyngrad
