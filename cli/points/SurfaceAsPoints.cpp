#include "cli/points/SurfaceAsPoints.h"

#include <cstddef>

#include "cli/bodies/Thinning.h"
#include "cli/output/RunSettings.h"

namespace zyngrad {

PointSet SurfaceAsPoints(std::vector<Vector3> const& points,
                         std::vector<std::array<std::int64_t, 3>> const& triangles, double spacing) {
  Thinning const thinning = spacing > 0.0 ? Thin(points, spacing) : Thinning{};
  PointSet set;
  auto const add = [&set](Vector3 const& at) {
    set.x.push_back(at[0]);
    set.y.push_back(at[1]);
    set.z.push_back(at[2]);
    set.rows.push_back(ShortestText(at[0]) + ',' + ShortestText(at[1]) + ',' + ShortestText(at[2]));
  };
  if (spacing > 0.0) {
    for (std::size_t const i : thinning.kept) add(points[i]);
    set.triangles = TrianglesOfKept(thinning, triangles);
  } else {
    for (Vector3 const& at : points) add(at);
    set.triangles = triangles;
  }
  return set;
}

}  // namespace zyngrad
