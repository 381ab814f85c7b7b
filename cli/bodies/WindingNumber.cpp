#include "cli/bodies/WindingNumber.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

namespace zyngrad {
namespace {

constexpr std::int32_t kLeaf = 8;  // triangles
constexpr double kFar = 3.0;       // radii
constexpr double kPi = 3.14159265358979323846;
constexpr double kOnSurface = 1e-9;

/// Solid angle Omega of a triangle with the corners a, b, c as seen from the origin:
///     tan(Omega/2) = a.(b x c) / (|a||b||c| + (a.b)|c| + (b.c)|a| + (c.a)|b|)      @cite vanoosterom1983
double SolidAngle(Vector3 const& a, Vector3 const& b, Vector3 const& c) {
  double const la = std::sqrt(Dot(a, a)), lb = std::sqrt(Dot(b, b)), lc = std::sqrt(Dot(c, c));
  double const volume = Dot(a, Cross(b, c));
  // In the plane of the triangle, the mean of both sides: 2 pi and -2 pi if the origin lies in it.
  if (volume == 0.0) return 0.0;
  double const below = la * lb * lc + Dot(a, b) * lc + Dot(b, c) * la + Dot(c, a) * lb;
  return 2.0 * std::atan2(volume, below);
}

Vector3 CentreOf(Vector3 const* corner) {
  Vector3 centre{};
  for (std::size_t k = 0; k < 3; ++k) centre[k] = (corner[0][k] + corner[1][k] + corner[2][k]) / 3.0;
  return centre;
}

Vector3 AreaOf(Vector3 const* corner) {
  Vector3 const n = Cross(Minus(corner[1], corner[0]), Minus(corner[2], corner[0]));
  return {0.5 * n[0], 0.5 * n[1], 0.5 * n[2]};
}

}  // namespace

WindingNumber::WindingNumber(std::vector<Vector3> const& points, std::vector<Triangle> const& triangles) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  low_ = {kInfinity, kInfinity, kInfinity};
  high_ = {-kInfinity, -kInfinity, -kInfinity};
  triangles_.reserve(triangles.size());
  for (Triangle const& t : triangles) {
    Corners corners;
    for (std::size_t i = 0; i < 3; ++i) {
      corners.at[i] = points[static_cast<std::size_t>(t[i])];
      for (std::size_t k = 0; k < 3; ++k) {
        low_[k] = std::min(low_[k], corners.at[i][k]);
        high_[k] = std::max(high_[k], corners.at[i][k]);
      }
    }
    triangles_.push_back(corners);
  }
  if (!triangles_.empty()) AddGroup(0, static_cast<std::int32_t>(triangles_.size()));
}

void WindingNumber::AddGroup(std::int32_t begin, std::int32_t end) {
  auto const first = triangles_.begin() + begin, last = triangles_.begin() + end;
  Group group;
  group.begin = begin;
  group.end = end;
  double sum = 0.0;
  Vector3 low = CentreOf(first->at), high = low, weighted{};
  for (auto t = first; t != last; ++t) {
    Vector3 const centre = CentreOf(t->at), area = AreaOf(t->at);
    double const weight = std::sqrt(Dot(area, area));
    sum += weight;
    for (std::size_t k = 0; k < 3; ++k) {
      low[k] = std::min(low[k], centre[k]);
      high[k] = std::max(high[k], centre[k]);
      weighted[k] += weight * centre[k];
      group.area[k] = (t == first ? 0.0 : group.area[k]) + area[k];
    }
  }
  for (std::size_t k = 0; k < 3; ++k) group.centre[k] = sum > 0.0 ? weighted[k] / sum : low[k];
  double radius2 = 0.0;
  for (auto t = first; t != last; ++t) {
    for (Vector3 const& corner : t->at) {
      Vector3 const d = Minus(corner, group.centre);
      radius2 = std::max(radius2, Dot(d, d));
    }
  }
  group.farFrom2 = kFar * kFar * radius2;
  std::size_t const place = groups_.size();
  groups_.push_back(group);
  if (end - begin <= kLeaf) return;

  // Halves by number along the longest side of the box around the centres, so that the depth is a logarithm even if
  // all triangles are at one place.
  Vector3 const across = Minus(high, low);
  auto const axis = static_cast<std::size_t>(std::max_element(across.begin(), across.end()) - across.begin());
  std::int32_t const middle = begin + (end - begin) / 2;
  std::nth_element(first, triangles_.begin() + middle, last, [axis](Corners const& a, Corners const& b) {
    return CentreOf(a.at)[axis] < CentreOf(b.at)[axis];
  });
  AddGroup(begin, middle);
  groups_[place].second = static_cast<std::int32_t>(groups_.size());
  AddGroup(middle, end);
}

double WindingNumber::At(Vector3 const& place) const {
  if (groups_.empty()) return 0.0;
  double angle = 0.0;
  std::int32_t waiting[64];  // the depth is at most 31
  int nWaiting = 0;
  waiting[nWaiting++] = 0;
  while (nWaiting > 0) {
    std::int32_t const g = waiting[--nWaiting];
    Group const& group = groups_[static_cast<std::size_t>(g)];
    Vector3 const d = Minus(group.centre, place);
    double const r2 = Dot(d, d);
    if (r2 > group.farFrom2) {
      angle += Dot(group.area, d) / (r2 * std::sqrt(r2));
    } else if (group.second == 0) {
      for (std::int32_t t = group.begin; t < group.end; ++t) {
        Vector3 const* corner = triangles_[static_cast<std::size_t>(t)].at;
        angle += SolidAngle(Minus(corner[0], place), Minus(corner[1], place), Minus(corner[2], place));
      }
    } else {
      waiting[nWaiting++] = group.second;
      waiting[nWaiting++] = g + 1;
    }
  }
  return angle / (4.0 * kPi);
}

bool WindingNumber::IsInside(Vector3 const& place) const {
  for (std::size_t k = 0; k < 3; ++k)
    if (!(place[k] >= low_[k] && place[k] <= high_[k])) return false;
  return At(place) > 0.5 + kOnSurface;
}

}  // namespace zyngrad
