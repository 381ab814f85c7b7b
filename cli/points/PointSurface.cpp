#include "cli/points/PointSurface.h"

#include <cmath>

#include "cli/bodies/Vector3.h"

namespace zyngrad {
namespace {

std::vector<Vector3> PlacesOf(PointSet const& points) {
  std::vector<Vector3> places;
  places.reserve(points.size());
  for (std::size_t i = 0; i < points.size(); ++i) places.push_back({points.x[i], points.y[i], points.z[i]});
  return places;
}

double Length(Vector3 const& v) { return std::sqrt(Dot(v, v)); }

void AddDirection(Vector3 const& v, std::vector<double>& x, std::vector<double>& y, std::vector<double>& z) {
  double const length = Length(v);
  x.push_back(length > 0.0 ? v[0] / length : 0.0);
  y.push_back(length > 0.0 ? v[1] / length : 0.0);
  z.push_back(length > 0.0 ? v[2] / length : 0.0);
}

}  // namespace

SurfaceNormals NormalsOf(PointSet const& points) {
  SurfaceNormals normals;
  if (points.triangles.empty()) return normals;
  std::vector<Vector3> const places = PlacesOf(points);
  std::vector<Vector3> sums(places.size(), Vector3{});
  for (Triangle const& t : points.triangles) {
    Vector3 const area = AreaVector(places, t);
    normals.area.push_back(Length(area));
    AddDirection(area, normals.tx, normals.ty, normals.tz);
    for (std::int64_t const corner : t)
      for (std::size_t k = 0; k < 3; ++k) sums[static_cast<std::size_t>(corner)][k] += area[k];
  }
  for (Vector3 const& sum : sums) AddDirection(sum, normals.px, normals.py, normals.pz);
  return normals;
}

std::vector<double> SlopeAlongNormal(PointValues const& values, SurfaceNormals const& normals) {
  std::vector<double> slopes(normals.px.size());
  for (std::size_t i = 0; i < slopes.size(); ++i)
    slopes[i] = values.gx[i] * normals.px[i] + values.gy[i] * normals.py[i] + values.gz[i] * normals.pz[i];
  return slopes;
}

TriangleValues AtTriangles(PointSet const& points, PointValues const& values, SurfaceNormals const& normals) {
  TriangleValues at;
  for (std::size_t t = 0; t < points.triangles.size(); ++t) {
    auto const mean = [&](std::vector<double> const& column) {
      double sum = 0.0;
      for (std::int64_t const corner : points.triangles[t]) sum += column[static_cast<std::size_t>(corner)];
      return sum / 3.0;
    };
    at.value.push_back(mean(values.value));
    at.gx.push_back(mean(values.gx));
    at.gy.push_back(mean(values.gy));
    at.gz.push_back(mean(values.gz));
    at.slope.push_back(at.gx[t] * normals.tx[t] + at.gy[t] * normals.ty[t] + at.gz[t] * normals.tz[t]);
  }
  return at;
}

SurfaceIntegrals IntegralsOf(TriangleValues const& values, SurfaceNormals const& normals) {
  SurfaceIntegrals sum;
  for (std::size_t t = 0; t < values.value.size(); ++t) {
    double const weighted = values.value[t] * normals.area[t];
    sum.value += weighted;
    sum.nx += weighted * normals.tx[t];
    sum.ny += weighted * normals.ty[t];
    sum.nz += weighted * normals.tz[t];
    sum.slope += values.slope[t] * normals.area[t];
  }
  return sum;
}

SurfaceSize SizeOf(PointSet const& points) {
  std::vector<Vector3> const places = PlacesOf(points);
  SurfaceSize size;
  size.area = AreaOf(places, points.triangles);
  size.volume = VolumeOf(places, points.triangles);
  size.faults = FaultsOf(places, points.triangles);
  return size;
}

}  // namespace zyngrad
