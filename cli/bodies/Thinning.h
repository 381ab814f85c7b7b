#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "cli/bodies/Vector3.h"

namespace zyngrad {

/// Which points of a list remain if those close to an earlier one that remains are left out.
struct Thinning {
  std::vector<std::size_t> kept;        ///< ascending
  std::vector<std::int64_t> standsFor;  ///< [point] position in `kept` of the nearest point that remains
};

/// Two points are close if their distance is below `spacing`, or if they are at one place.
Thinning Thin(std::vector<Vector3> const& points, double spacing);

/// The triangles between the points that remain, their corners as positions in `kept`. Triangles with fewer than three
/// different corners are left out, and so are pairs with the same corners that turn in opposite directions, between
/// which nothing is left. The edges of a closed surface still cancel.
std::vector<std::array<std::int64_t, 3>> TrianglesOfKept(
    Thinning const& thinning, std::vector<std::array<std::int64_t, 3>> const& triangles);

}  // namespace zyngrad
