#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "cli/bodies/Vector3.h"
#include "cli/points/PointSet.h"

namespace zyngrad {

/// The points of a surface, without those that are closer than `spacing` to an earlier one that remains, in their
/// order, and the triangles between those that remain. A spacing of 0 keeps all points.
PointSet SurfaceAsPoints(std::vector<Vector3> const& points,
                         std::vector<std::array<std::int64_t, 3>> const& triangles, double spacing);

}  // namespace zyngrad
