#include "cli/points/BodyFile.h"

#include <cstddef>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/bodies/StlReader.h"
#include "cli/points/SurfaceAsPoints.h"

namespace zyngrad {
namespace {

/// Collective. The first rank's points and triangles, on every rank.
void Broadcast(Ranks const& ranks, TriangleSurface& surface) {
  std::vector<double> places, corners;  // numbers of points are exact as double
  for (Vector3 const& point : surface.points) places.insert(places.end(), point.begin(), point.end());
  for (Triangle const& t : surface.triangles)
    for (std::int64_t const corner : t) corners.push_back(static_cast<double>(corner));
  ranks.Broadcast(places);
  ranks.Broadcast(corners);
  surface.points.resize(places.size() / 3);
  surface.triangles.resize(corners.size() / 3);
  for (std::size_t i = 0; i < places.size(); ++i) surface.points[i / 3][i % 3] = places[i];
  for (std::size_t i = 0; i < corners.size(); ++i)
    surface.triangles[i / 3][i % 3] = static_cast<std::int64_t>(corners[i]);
}

}  // namespace

BodyFile::BodyFile(Ranks const& ranks, std::string name) : name_(std::move(name)) {
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    surface_ = WeldTriangles(ReadStl(name_));
    if (surface_.triangles.empty())
      throw UsageError(OneLine(name_) + ": all triangles have two corners at one place");
  });
  Broadcast(ranks, surface_);
  ranks.Together([&] { winding_.emplace(surface_.points, surface_.triangles); });
}

PointSet BodyFile::Points(Ranks const& ranks, double spacing) const {
  PointSet set;
  ranks.Together([&] {
    if (ranks.IsFirst()) set = SurfaceAsPoints(surface_.points, surface_.triangles, spacing);
  });
  return set;
}

}  // namespace zyngrad
